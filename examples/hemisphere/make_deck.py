#!/usr/bin/env python3
"""Write the deck of the hemispherical-punch draping benchmark.

A square woven blank (0/90, 250 x 250 mm, HYPERTEXTILE membranes) lies at
z = 0 on a die, a flat plate with a circular opening of radius 55 mm whose
edge is rounded by a 5 mm entry fillet. A blank holder, a flat ring outside
the opening, rests on the blank and is pushed down by a force ramped up and
then held; it is a free rigid body whose rotations and in-plane motion are
held by a constraint that leaves VZ free. Once the holder has closed, the
punch, a hemisphere of radius 50 mm coming from above, moves down at a
prescribed speed (ramped in) and draws the blank into the opening. The
fabric's thickness is not modelled: the die's top and the holder's face
start on the blank's mid-plane.

The three tool surfaces are meshed here as surfaces of revolution and
written as STL files, the blank as a VTU file; tools/import_surface.py turns
them into deck blocks (each tool a contact surface on a rigid body, its
normals turned to face the blank: the die's up, the punch's and the holder's
down) and this script assembles the deck around them: materials, amplitudes,
constraints, the holder's load, CONTROLS with automatic step and mass
scaling, and trackers of the force and position along z of the punch's and
the holder's reference nodes and of the draw-in of the blank's edge.

Units: mm, t, s (forces in N, stresses in MPa). The membranes have T 1, so
the fabric's K coefficients are forces per unit width (N/mm).

  make_deck.py                 # writes hemisphere.txt beside this script
  make_deck.py --coarse        # writes hemisphere_coarse.txt: 20 x 20 cells, 8 mm of stroke
  make_deck.py --cells 80 --tool-size 3 -o /tmp/fine --meshes /tmp/fine/meshes
"""

import argparse
import math
import os
import pathlib
import shlex
import sys
import tempfile

import meshio
import numpy as np

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parents[1] / "tools"))
import import_surface  # noqa: E402  (tools/ is not a package)

PUNCH_RADIUS = 50.0
OPENING_RADIUS = 55.0
FILLET = 5.0
BLANK_SIZE = 250.0
TOOL_RADIUS = 190.0  # die and holder reach past the blank's corners (176.8 mm from the axis)
WALL = 10.0  # depth of the opening's wall below the fillet
PUNCH_GAP = 1.0  # the punch's pole starts this far above the blank


def fmt(value):
    return import_surface.fmt(value)


# --------------------------------------------------------------------------
# Meshes

def profile(pieces, size):
    """Points (r, z) along a profile made of pieces ("line", (r0, z0), (r1, z1)) and
    ("arc", (rc, zc), radius, a0, a1) (angles in degrees), about `size` apart; an
    arc gets at least three segments."""
    out = []
    for piece in pieces:
        if piece[0] == "line":
            (r0, z0), (r1, z1) = piece[1], piece[2]
            n = max(1, math.ceil(math.hypot(r1 - r0, z1 - z0) / size))
            pts = [(r0 + (r1 - r0) * k / n, z0 + (z1 - z0) * k / n) for k in range(n + 1)]
        else:
            (rc, zc), radius, a0, a1 = piece[1], piece[2], math.radians(piece[3]), math.radians(piece[4])
            n = max(3, math.ceil(radius * abs(a1 - a0) / size))
            pts = [(rc + radius * math.cos(a0 + (a1 - a0) * k / n), zc + radius * math.sin(a0 + (a1 - a0) * k / n))
                   for k in range(n + 1)]
        out += pts if not out else pts[1:]
    return out


def flat(r0, r1, z, size):
    """Points (r, z, count) of a flat annulus from r0 out to r1 whose rings all have the count of points
    that gives spacing `size` at r0, the radii growing in proportion: square-ish facets that grow with the
    radius, enough for a plane."""
    count = max(12, math.ceil(2 * math.pi * r0 / size))
    growth = 1 + 2 * math.pi / count
    steps = max(1, math.ceil(math.log(r1 / r0) / math.log(growth)))
    return [(r0 * (r1 / r0) ** (k / steps), z, count) for k in range(steps + 1)]


def revolve(section, size):
    """Surface of revolution about the z axis of a profile [(r, z), ...]: each profile point becomes a ring
    of points about `size` apart (one point where r = 0), and neighbouring rings are zipped into
    triangles. Returns (points, triangles); the normals all point to one side."""
    points, rings = [], []
    for point in section:
        r, z = point[:2]
        count = point[2] if len(point) > 2 else 1 if r < 1e-9 else max(12, math.ceil(2 * math.pi * r / size))
        start = len(points)
        for k in range(count):
            a = 2 * math.pi * k / count
            points.append((r * math.cos(a), r * math.sin(a), z))
        rings.append(list(range(start, start + count)))
    tris = []
    for inner, outer in zip(rings, rings[1:]):
        i = j = 0
        ni, no = len(inner), len(outer)
        while i < ni or j < no:
            # advance along whichever ring is behind in angle
            if j >= no or (i < ni and (i + 1) / ni < (j + 1) / no):
                tris.append((inner[i % ni], outer[j % no], inner[(i + 1) % ni]))
                i += 1
            else:
                tris.append((inner[i % ni], outer[j % no], outer[(j + 1) % no]))
                j += 1
        tris = [t for t in tris if len(set(t)) == 3]
    return np.array(points, dtype=float), np.array(tris, dtype=np.int64)


def punch(size, pole):
    """Hemisphere of the punch radius, pole at z = pole, equator above it."""
    centre = pole + PUNCH_RADIUS
    return revolve(profile([("arc", (0.0, centre), PUNCH_RADIUS, -90.0, 0.0)], size), size)


def die(size):
    """Top face at z = 0 from the fillet outward; the fillet of the opening's edge; the opening's wall."""
    edge = OPENING_RADIUS + FILLET
    rounded = profile([("line", (OPENING_RADIUS, -FILLET - WALL), (OPENING_RADIUS, -FILLET)),
                       ("arc", (edge, -FILLET), FILLET, 180.0, 90.0)], size)
    return revolve(rounded[:-1] + flat(edge, TOOL_RADIUS, 0.0, size), size)


def holder(size):
    """Flat ring at z = 0 over the die's top face."""
    return revolve(flat(OPENING_RADIUS + FILLET, TOOL_RADIUS, 0.0, size), size)


def blank(cells):
    """Square of cells x cells, each cut into two triangles with alternating diagonals, centred on the axis."""
    n, half = cells, BLANK_SIZE / 2
    points = [(-half + BLANK_SIZE * i / n, -half + BLANK_SIZE * j / n, 0.0) for j in range(n + 1) for i in range(n + 1)]
    tris = []
    for j in range(n):
        for i in range(n):
            a = j * (n + 1) + i
            b, c, d = a + 1, a + n + 2, a + n + 1
            tris += [(a, b, c), (a, c, d)] if (i + j) % 2 == 0 else [(a, b, d), (b, c, d)]
    return np.array(points, dtype=float), np.array(tris, dtype=np.int64)


# --------------------------------------------------------------------------
# Deck

def import_blocks(mesh, options):
    args = import_surface.build_parser().parse_args([str(mesh), "-o", os.devnull] + [str(o) for o in options])
    return import_surface.build(args)


def build(opts, mesh_dir):
    size = opts.tool_size
    files = {}
    for name, (points, tris) in (("blank", blank(opts.cells)), ("punch", punch(size, PUNCH_GAP)),
                                 ("die", die(size)), ("holder", holder(size))):
        path = mesh_dir / (name + (".vtu" if name == "blank" else ".stl"))
        meshio.write(path, meshio.Mesh(points, [("triangle", tris)]))
        files[name] = path

    contact = ["--type", "SOLID", "--t", opts.reach, "--penalty", opts.penalty, "--friction", opts.friction]
    pieces = {}
    pieces["blank"] = import_blocks(files["blank"], ["--blank", "MEMBRANE_3", "--material", "FABRIC", "--thickness",
                                                     1, "--facing", 0, 0, 1000])
    following = pieces["blank"]
    ring_inertia = opts.holder_mass * ((OPENING_RADIUS + FILLET) ** 2 + TOOL_RADIUS ** 2) / 2
    tools = (("punch", ["--name", "PUNCH", "--facing", 0, 0, -1000, "--reference", 0, 0, PUNCH_GAP + PUNCH_RADIUS,
                        "--constraint", "PUNCH"]),
             ("die", ["--name", "DIE", "--facing", 0, 0, 1000, "--reference", 0, 0, -FILLET - WALL, "--constraint",
                      "DIE"]),
             ("holder", ["--name", "HOLDER", "--facing", 0, 0, -1000, "--reference", 0, 0, 0, "--constraint",
                         "GUIDE", "--load", "PRESS", "--mass", opts.holder_mass, "--inertia", ring_inertia / 2,
                         ring_inertia / 2, ring_inertia]))
    for name, options in tools:
        pieces[name] = import_blocks(files[name], options + contact + [
            "--first-node", following.last_node + 1, "--first-element", following.last_element + 1])
        following = pieces[name]

    # Times: the holder's force rises over `close`, then the punch's speed over `ramp`; the punch travels
    # the stroke by the end time (a little past the last print: the print due at the end is usually missed).
    close, ramp = opts.close, opts.ramp
    travel_end = close + ramp / 2 + opts.stroke / opts.speed
    prints = opts.prints
    end = travel_end * (1 + 0.2 / prints)
    horizon = 10 * end  # an amplitude is zero outside its table

    n = opts.cells
    centre = (n // 2) * (n + 1) + n // 2 + 1
    edge_middle = (n // 2) * (n + 1) + n + 1
    lines = ["TITLE"]
    lines += ["** " + t for t in opts.title]
    lines.append(" ".join(["** generated by: examples/hemisphere/make_deck.py"] + [shlex.quote(a) for a in opts.argv]))
    lines += ["** blank: nodes %d to %d, elements %d to %d; centre node %d, middle of the edge x = %g: node %d" % (
        pieces["blank"].first_node, pieces["blank"].last_node, pieces["blank"].first_element,
        pieces["blank"].last_element, centre, BLANK_SIZE / 2, edge_middle)]
    for name in ("punch", "die", "holder"):
        p = pieces[name]
        lines.append("** %s: facets %d to %d on nodes %d to %d, reference node %d" % (
            name, p.first_element, p.last_element, p.first_node, p.last_node - 1, p.reference))
    lines += ["CONTROLS", "RUN FROM 0 TO " + fmt(end), "STEP 0", "PRINT EVERY " + fmt(travel_end / prints),
              "MASS SCALING " + fmt(opts.mass_scaling)]
    lines += ["AMPLITUDES TYPE TABULAR",
              "CLOSE VALUES 0 0 %s 1 %s 1" % (fmt(close), fmt(horizon)),
              "STROKE VALUES 0 0 %s 0 %s 1 %s 1" % (fmt(close), fmt(close + ramp), fmt(horizon))]
    lines += ["CONSTRAINTS TYPE BOUNDARY_CONDITION",
              "PUNCH VX 0 VY 0 VZ %s VRX 0 VRY 0 VRZ 0 AMPLITUDE STROKE" % fmt(-opts.speed),
              "DIE VX 0 VY 0 VZ 0 VRX 0 VRY 0 VRZ 0",
              "GUIDE VX 0 VY 0 VRX 0 VRY 0 VRZ 0"]
    lines += ["LOADS", "PRESS FZ %s AMPLITUDE CLOSE" % fmt(-opts.holder_force)]
    lines += ["MATERIALS TYPE HYPERTEXTILE",
              "FABRIC RHO %s KELONGWARP %s KELONGWEFT %s KSHEAR 0.1 0.2 1 WARPORI 1 0 0 WEFTORI 0 1 0 DAMPING %s" % (
                  fmt(opts.rho), fmt(opts.k), fmt(opts.k), fmt(opts.damping))]
    lines.append("NODES")
    for name in ("blank", "punch", "die", "holder"):
        lines += pieces[name].nodes
    lines += ["ELEMENTS TYPE MEMBRANE_3"] + pieces["blank"].elements[0][1]
    lines.append("ELEMENTS TYPE CONTACT_FACET")
    for name in ("punch", "die", "holder"):
        lines += pieces[name].elements[0][1]
    lines.append("CONTACT_SURFACES")
    for name in ("punch", "die", "holder"):
        lines += pieces[name].surfaces
    lines.append("RIGID_BODIES")
    for name in ("punch", "die", "holder"):
        lines += pieces[name].bodies
    lines += ["TRACKERS TYPE NODE",
              "PUNCHFORCE NODES %d DIRECTION Z TYPE FORCE" % pieces["punch"].reference,
              "PUNCHZ NODES %d DIRECTION Z TYPE POSITION" % pieces["punch"].reference,
              "HOLDERFORCE NODES %d DIRECTION Z TYPE CONTACTFORCE" % pieces["holder"].reference,
              "HOLDERZ NODES %d DIRECTION Z TYPE POSITION" % pieces["holder"].reference,
              "CENTREZ NODES %d DIRECTION Z TYPE POSITION" % centre,
              "DRAWIN NODES %d DIRECTION X TYPE POSITION" % edge_middle]
    return "\n".join(lines) + "\n", pieces


def build_parser():
    p = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    p.add_argument("--coarse", action="store_true",
                   help="the test suite's version: 20 x 20 cells, coarse tools, 8 mm of stroke, "
                        "written to hemisphere_coarse.txt (the options below still override)")
    p.add_argument("-o", "--output-dir", type=pathlib.Path, default=HERE, help="folder of the deck (default: here)")
    p.add_argument("--meshes", type=pathlib.Path, help="keep the surface mesh files in this folder")
    p.add_argument("--cells", type=int, help="cells along each side of the blank (default 50; coarse 20)")
    p.add_argument("--tool-size", type=float, help="facet size of the tools in mm (default 4; coarse 12)")
    p.add_argument("--stroke", type=float, help="punch travel in mm (default 45; coarse 8)")
    p.add_argument("--speed", type=float, default=250.0, help="punch speed in mm/s (default 250)")
    p.add_argument("--close", type=float, default=0.01, help="rise time of the holder's force in s (0.01)")
    p.add_argument("--ramp", type=float, default=0.01, help="rise time of the punch's speed in s (0.01)")
    p.add_argument("--holder-force", type=float, default=200.0, help="holder force in N (200)")
    p.add_argument("--holder-mass", type=float, default=0.01, help="holder mass in t (0.01, 10 kg)")
    p.add_argument("--friction", type=float, default=0.2, help="friction of every tool (0.2)")
    p.add_argument("--penalty", type=float, default=0.1, help="PENALTY of every tool (0.1)")
    p.add_argument("--reach", type=float, default=0.2,
                   help="T of every tool surface in mm (0.2: a few times the penetration, well below the fillet)")
    p.add_argument("--rho", type=float, default=6e-10, help="fabric areal density in t/mm^2 (6e-10: 600 g/m^2)")
    p.add_argument("--k", type=float, default=50.0, help="KELONGWARP and KELONGWEFT in N/mm (50)")
    p.add_argument("--damping", type=float, default=50.0, help="DAMPING of the fabric in 1/s (50)")
    p.add_argument("--mass-scaling", type=float, default=1e-5, help="MASS SCALING target step in s (1e-5)")
    p.add_argument("--prints", type=int, help="number of prints over the run (default 20; coarse 4)")
    return p


def main(argv=None):
    opts = build_parser().parse_args(argv)
    opts.argv = sys.argv[1:] if argv is None else list(argv)
    defaults = dict(cells=20, tool_size=12.0, stroke=8.0, prints=4) if opts.coarse else \
        dict(cells=50, tool_size=4.0, stroke=45.0, prints=20)
    for key, value in defaults.items():
        if getattr(opts, key) is None:
            setattr(opts, key, value)
    if opts.cells < 2 or opts.cells % 2:
        sys.exit("make_deck.py: --cells must be even (the blank's centre is a node)")
    if not 0 < opts.stroke < PUNCH_RADIUS + PUNCH_GAP:
        sys.exit("make_deck.py: the stroke must be positive and keep the punch's equator above the blank")
    name = "hemisphere_coarse" if opts.coarse else "hemisphere"
    opts.title = [
        "Hemispherical punch draping: a 250 x 250 mm woven blank (0/90, %d x %d cells of HYPERTEXTILE "
        "membranes) held between a die with a %g mm opening (%g mm entry fillet) and a free blank holder "
        "pressed down with %g N, drawn %g mm deep by a hemispherical punch of radius %g mm moving down at "
        "%g mm/s; friction %g on every tool" % (opts.cells, opts.cells, OPENING_RADIUS, FILLET, opts.holder_force,
                                                opts.stroke - PUNCH_GAP, PUNCH_RADIUS, opts.speed, opts.friction),
        "PUNCHFORCE/PUNCHZ: force and position along z of the punch's reference node; HOLDERFORCE/HOLDERZ: "
        "the contact force of the blank on the holder and its position along z; CENTREZ: the blank's centre; DRAWIN: x of the middle of the edge x = 125"]
    try:
        if opts.meshes:
            opts.meshes.mkdir(parents=True, exist_ok=True)
            text, pieces = build(opts, opts.meshes)
        else:
            with tempfile.TemporaryDirectory(prefix="hemisphere_") as folder:
                text, pieces = build(opts, pathlib.Path(folder))
    except (import_surface.SurfaceError, ValueError) as error:
        sys.exit("make_deck.py: %s" % error)
    opts.output_dir.mkdir(parents=True, exist_ok=True)
    deck = opts.output_dir / (name + ".txt")
    import_surface.write_atomically(str(deck), text)
    nodes = pieces["holder"].last_node
    elements = pieces["holder"].last_element
    print("%s: %d nodes, %d elements (%d membranes, %d contact facets)" % (
        deck, nodes, elements, pieces["blank"].last_element, elements - pieces["blank"].last_element))
    return 0


if __name__ == "__main__":
    sys.exit(main())

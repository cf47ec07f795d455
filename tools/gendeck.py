#!/usr/bin/env python3
"""Write complete Drapex input decks built on structured triangle meshes.

A deck holds one sheet (a rectangle split into right triangles, or a disc of
concentric rings) with its element type, material, node conditions, loads,
amplitudes, trackers and control block, and optionally a second mesh of
CONTACT_TRIANGLE elements (a tool surface offset below the sheet) and a rod
frame around a rectangular sheet. Nodes are numbered 1..N without gaps and the
second mesh continues the numbering of the first.

Examples
  # 100 x 50 textile strip, left edge clamped, right edge pulled at 10 mm/s
  gendeck.py --mesh rect --size 100 50 --div 20 10 --material textile \\
      --clamp left --pull right 10 0 0 --end 0.5 -o strip.txt

  # disc of 6 rings, Ogden law, rim clamped, pressure ramped to 0.01
  gendeck.py --mesh disc --radius 50 --rings 6 --material ogden \\
      --clamp rim --pressure 0.01 --end 0.2 -o bulge.txt

  # square sheet falling under gravity on a fixed tool 2 below it
  gendeck.py --mesh rect --size 10 10 --div 10 10 --contact BASIC \\
      --gravity -9810 --tool rect --tool-offset 2 -o drop.txt

  # dome punch (a 15 high spherical cap) rising into a sheet held in z at its edges
  gendeck.py --mesh rect --size 100 100 --div 20 20 --material textile \\
      --pull left - - 0 --pull right - - 0 --pull bottom - - 0 --pull top - - 0 \\
      --tool disc --tool-radius 30 --tool-cap 15 --tool-offset 16 \\
      --tool-velocity 250 --tool-tracker PUNCH CONTACTFORCE Z -o dome.txt

Node sets (for --clamp, --pull, --node-tracker): left, right, bottom, top,
bl, br, tl, tr (the corners) and all for a rectangle; rim, center and all
for a disc. A node belongs to the first condition that names it: clamps
first, then pulls in the order given, then --fix-z.

Velocities of --pull are VX VY VZ; a component given as "-" stays free. Pulls
and a moving tool follow the amplitude RAMP (0 at time 0, 1 from --ramp on);
pressure follows PRAMP (0 at time 0, 1 at the end time).

Running the script prints one line: the deck path and its node and element
counts.
"""

import argparse
import math
import shlex
import sys

EDGES_RECT = ("left", "right", "bottom", "top", "bl", "br", "tl", "tr", "all")
EDGES_DISC = ("rim", "center", "all")


def fmt(value):
    """Number text for the deck: shortest form that round-trips well enough."""
    text = "%.10g" % value
    return "0" if text == "-0" else text


class Mesh:
    """Nodes (x, y, z), triangles (three 0-based node indices, counter-clockwise
    seen from +z) and named node sets (lists of 0-based indices)."""

    def __init__(self):
        self.points = []
        self.triangles = []
        self.sets = {}
        self.lines = []  # grid lines for rods: pairs of 0-based indices

    def edges(self):
        """Unique edges of the triangulation, in first-met order."""
        seen, out = set(), []
        for tri in self.triangles:
            for a, b in ((tri[0], tri[1]), (tri[1], tri[2]), (tri[2], tri[0])):
                key = (min(a, b), max(a, b))
                if key not in seen:
                    seen.add(key)
                    out.append(key)
        return out


def rectangle(lx, ly, nx, ny, origin=(0.0, 0.0, 0.0), pattern="right"):
    """lx x ly rectangle in the plane z = origin z, nx x ny cells, each split
    into two right triangles. pattern: right (diagonal from the lower-left to
    the upper-right corner of each cell), left (the other diagonal) or
    alternate (the two in a checkerboard)."""
    if nx < 1 or ny < 1:
        raise ValueError("a rectangle needs at least one cell in each direction")
    if lx <= 0 or ly <= 0:
        raise ValueError("rectangle sides must be positive")
    mesh = Mesh()
    x0, y0, z0 = origin
    for j in range(ny + 1):
        for i in range(nx + 1):
            mesh.points.append((x0 + lx * i / nx, y0 + ly * j / ny, z0))

    def node(i, j):
        return j * (nx + 1) + i

    for j in range(ny):
        for i in range(nx):
            a, b, c, d = node(i, j), node(i + 1, j), node(i + 1, j + 1), node(i, j + 1)
            rising = pattern == "right" or (pattern == "alternate" and (i + j) % 2 == 0)
            if rising:
                mesh.triangles += [(a, b, c), (a, c, d)]
            else:
                mesh.triangles += [(a, b, d), (b, c, d)]
    # Grid lines numbered row by row, the lines along x of row j followed by
    # the lines along y from row j to row j + 1, as the cells are: neighbouring
    # rods then share nodes, and a pass over the rods in deck order finds
    # most of their nodes still in cache.
    for j in range(ny + 1):
        for i in range(nx):
            mesh.lines.append((node(i, j), node(i + 1, j)))
        if j < ny:
            for i in range(nx + 1):
                mesh.lines.append((node(i, j), node(i, j + 1)))
    mesh.sets = {
        "left": [node(0, j) for j in range(ny + 1)],
        "right": [node(nx, j) for j in range(ny + 1)],
        "bottom": [node(i, 0) for i in range(nx + 1)],
        "top": [node(i, ny) for i in range(nx + 1)],
        "bl": [node(0, 0)],
        "br": [node(nx, 0)],
        "tl": [node(0, ny)],
        "tr": [node(nx, ny)],
        "all": list(range(len(mesh.points))),
    }
    return mesh


def disc(radius, rings, center=(0.0, 0.0, 0.0)):
    """Disc of the given radius in the plane z = center z: a centre node and
    `rings` concentric rings, ring k holding 6k nodes on the circle of radius
    k R / rings; 6 rings^2 triangles."""
    if rings < 1:
        raise ValueError("a disc needs at least one ring")
    if radius <= 0:
        raise ValueError("the disc radius must be positive")
    mesh = Mesh()
    cx, cy, cz = center
    mesh.points.append((cx, cy, cz))
    first = [0]  # index of the first node of each ring
    for k in range(1, rings + 1):
        first.append(len(mesh.points))
        r = radius * k / rings
        for i in range(6 * k):
            angle = 2.0 * math.pi * i / (6 * k)
            mesh.points.append((cx + r * math.cos(angle), cy + r * math.sin(angle), cz))

    def ring_node(k, i):
        if k == 0:
            return 0
        return first[k] + i % (6 * k)

    for k in range(1, rings + 1):
        for s in range(6):
            for j in range(k):
                outer_a, outer_b = ring_node(k, s * k + j), ring_node(k, s * k + j + 1)
                inner = ring_node(k - 1, s * (k - 1) + j)
                mesh.triangles.append((outer_a, outer_b, inner))
            for j in range(k - 1):
                inner_a = ring_node(k - 1, s * (k - 1) + j)
                inner_b = ring_node(k - 1, s * (k - 1) + j + 1)
                outer = ring_node(k, s * k + j + 1)
                mesh.triangles.append((inner_a, outer, inner_b))
    mesh.triangles = [orient_up(mesh.points, t) for t in mesh.triangles]
    mesh.lines = mesh.edges()
    mesh.sets = {
        "rim": [ring_node(rings, i) for i in range(6 * rings)],
        "center": [0],
        "all": list(range(len(mesh.points))),
    }
    return mesh


def lift_to_cap(mesh, center, radius, height):
    """Moves the nodes of a flat disc up onto the spherical cap of the given
    height whose rim is the disc's rim; the triangles keep their upward order."""
    if height <= 0 or height > radius:
        raise ValueError("the cap height must be positive and at most the disc radius")
    sphere = (radius * radius + height * height) / (2.0 * height)
    cx, cy = center
    for k, (x, y, z) in enumerate(mesh.points):
        r2 = (x - cx) ** 2 + (y - cy) ** 2
        mesh.points[k] = (x, y, z + math.sqrt(max(sphere * sphere - r2, 0.0)) - (sphere - height))


def orient_up(points, tri):
    """The triangle with its node order turned so that its normal points to +z."""
    (x1, y1, _), (x2, y2, _), (x3, y3, _) = (points[i] for i in tri)
    cross = (x2 - x1) * (y3 - y1) - (y2 - y1) * (x3 - x1)
    return tri if cross > 0 else (tri[0], tri[2], tri[1])


def frame(mesh, width):
    """Rod trusses along the four edges of a rectangular sheet: for each edge an
    outer row of nodes `width` outside the sheet, joined to the edge nodes by a
    triangulated strip (edge, outer row, posts and diagonals), so that each
    side is a stiff bar. Adjacent bars share only the corner node of the
    sheet, which makes the corners hinges. Returns (new points, rods) with
    indices numbered after the sheet's nodes."""
    points, rods = [], []
    base = len(mesh.points)
    sides = (
        ("bottom", (0.0, -width)),
        ("right", (width, 0.0)),
        ("top", (0.0, width)),
        ("left", (-width, 0.0)),
    )
    for name, (dx, dy) in sides:
        edge = mesh.sets[name]
        outer = []
        for index in edge:
            x, y, z = mesh.points[index]
            outer.append(base + len(points))
            points.append((x + dx, y + dy, z))
        for k in range(len(edge) - 1):
            rods += [(edge[k], edge[k + 1]), (outer[k], outer[k + 1]), (edge[k], outer[k + 1])]
        for k in range(len(edge)):
            rods.append((edge[k], outer[k]))
    return points, rods


def parse_velocity(values):
    out = []
    for text in values:
        if text == "-":
            out.append(None)
        else:
            out.append(float(text))
    return out


def build_parser():
    p = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    p.add_argument("-o", "--output", required=True, help="deck file to write (.txt)")
    p.add_argument("--title", default="", help="free text for the TITLE block")

    g = p.add_argument_group("sheet mesh")
    g.add_argument("--mesh", choices=("rect", "disc"), default="rect")
    g.add_argument("--size", nargs=2, type=float, default=(1.0, 1.0), metavar=("LX", "LY"))
    g.add_argument("--div", nargs=2, type=int, default=(4, 4), metavar=("NX", "NY"))
    g.add_argument("--pattern", choices=("right", "left", "alternate"), default="right")
    g.add_argument("--radius", type=float, default=1.0)
    g.add_argument("--rings", type=int, default=4)
    g.add_argument("--origin", nargs=3, type=float, default=(0.0, 0.0, 0.0), metavar=("X", "Y", "Z"),
                   help="lower-left corner of a rectangle, centre of a disc")

    g = p.add_argument_group("elements")
    g.add_argument("--element", choices=("MEMBRANE_3", "S3L_C0", "CONTACT_TRIANGLE", "ROD_2"),
                   default="MEMBRANE_3")
    g.add_argument("--thickness", type=float, default=1.0, help="T of membranes, shells and contact triangles")
    g.add_argument("--nip", type=int, default=0, help="S3L_C0 integration points (0: element default)")
    g.add_argument("--contact", choices=("BASIC", "EDGE"), help="CONTACT keyword of membranes and shells")
    g.add_argument("--factor", type=float, help="contact FACTOR")
    g.add_argument("--friction", type=float, help="contact FRICTION")
    g.add_argument("--contact-type", choices=("SOLID", "SHELL"), help="TYPE of CONTACT_TRIANGLE elements")
    g.add_argument("--diameter", type=float, default=1.0, help="D of ROD_2 elements")

    g = p.add_argument_group("material")
    g.add_argument("--material", choices=("elastic", "textile", "ogden", "none"), default="elastic")
    g.add_argument("--rho", type=float, default=1e-9)
    g.add_argument("--damping", type=float, help="mass-proportional damping coefficient")
    g.add_argument("--young", type=float, default=1000.0, help="E of the elastic law")
    g.add_argument("--nu", type=float, default=0.3)
    g.add_argument("--kwarp", nargs="+", type=float, default=[100.0], help="KELONGWARP coefficients")
    g.add_argument("--kweft", nargs="+", type=float, default=[100.0], help="KELONGWEFT coefficients")
    g.add_argument("--kshear", nargs="+", type=float, default=[0.1], help="KSHEAR coefficients")
    g.add_argument("--warp", nargs=3, type=float, default=(1.0, 0.0, 0.0), metavar=("X", "Y", "Z"))
    g.add_argument("--weft", nargs=3, type=float, default=(0.0, 1.0, 0.0), metavar=("X", "Y", "Z"))
    g.add_argument("--mu", nargs="+", type=float, default=[0.4], help="Ogden moduli")
    g.add_argument("--alpha", nargs="+", type=float, default=[2.0], help="Ogden exponents")

    g = p.add_argument_group("conditions and loads")
    g.add_argument("--clamp", action="append", default=[], metavar="SET", help="VX VY VZ 0 on a node set")
    g.add_argument("--pull", action="append", nargs=4, default=[], metavar=("SET", "VX", "VY", "VZ"),
                   help="prescribed velocity on a node set, scaled by RAMP")
    g.add_argument("--fix-z", action="store_true", help="VZ 0 on every node not otherwise constrained")
    g.add_argument("--ramp", type=float, help="rise time of RAMP (default: a tenth of the end time)")
    g.add_argument("--pressure", type=float, help="pressure on every sheet element, ramped by PRAMP")
    g.add_argument("--gravity", type=float, help="AZ of a load on every sheet node")

    g = p.add_argument_group("rod frame (rectangles)")
    g.add_argument("--frame", type=float, help="width of a hinged rod frame around the sheet")
    g.add_argument("--frame-young", type=float, default=1e5)
    g.add_argument("--frame-rho", type=float, default=1e-9)
    g.add_argument("--frame-diameter", type=float, default=2.0)

    g = p.add_argument_group("tool surface (second mesh of CONTACT_TRIANGLE elements)")
    g.add_argument("--tool", choices=("rect", "disc"))
    g.add_argument("--tool-size", nargs=2, type=float, metavar=("LX", "LY"), help="default: the sheet's size")
    g.add_argument("--tool-div", nargs=2, type=int, default=(4, 4), metavar=("NX", "NY"))
    g.add_argument("--tool-radius", type=float, help="default: the sheet's radius")
    g.add_argument("--tool-rings", type=int, default=4)
    g.add_argument("--tool-offset", type=float, default=1.0, help="distance below the sheet")
    g.add_argument("--tool-thickness", type=float, default=1.0)
    g.add_argument("--tool-factor", type=float)
    g.add_argument("--tool-friction", type=float)
    g.add_argument("--tool-type", choices=("SOLID", "SHELL"), default="SOLID")
    g.add_argument("--tool-cap", type=float,
                   help="lift a disc tool onto a spherical cap of this height above its rim (a dome punch)")
    g.add_argument("--tool-velocity", type=float, default=0.0, help="VZ of the tool, scaled by RAMP")

    g = p.add_argument_group("trackers")
    g.add_argument("--node-tracker", action="append", nargs=4, default=[],
                   metavar=("NAME", "SET", "TYPE", "DIR"), help="e.g. PULL right FORCE X")
    g.add_argument("--tool-tracker", action="append", nargs=3, default=[], metavar=("NAME", "TYPE", "DIR"),
                   help="node tracker on every tool node, e.g. TOOLLOAD CONTACTFORCE Z")
    g.add_argument("--element-tracker", action="append", nargs=4, default=[],
                   metavar=("NAME", "ELEMENTS", "COMPONENT", "TYPE"), help="e.g. SHEAR 1,5 C12 STRAIN")

    g = p.add_argument_group("control")
    g.add_argument("--end", type=float, default=1.0, help="end time")
    g.add_argument("--step", type=float, default=0.0, help="time step (0: automatic)")
    g.add_argument("--print", type=float, dest="print_every", help="print interval (default: end / 10)")
    return p


class Deck:
    """Collects the blocks of a deck and writes them in a fixed order."""

    def __init__(self):
        self.title = []
        self.controls = []
        self.amplitudes = []
        self.constraints = []
        self.loads = []
        self.materials = []  # (type, line)
        self.nodes = []
        self.elements = []  # (type, lines)
        self.trackers = []  # (type, line)

    def text(self):
        out = ["TITLE"] + ["** " + t for t in self.title]
        out += ["CONTROLS"] + self.controls
        if self.amplitudes:
            out += ["AMPLITUDES TYPE TABULAR"] + self.amplitudes
        if self.constraints:
            out += ["CONSTRAINTS TYPE BOUNDARY_CONDITION"] + self.constraints
        if self.loads:
            out += ["LOADS"] + self.loads
        for kind, line in self.materials:
            out += ["MATERIALS TYPE " + kind, line]
        out += ["NODES"] + self.nodes
        for kind, lines in self.elements:
            if lines:
                out += ["ELEMENTS TYPE " + kind] + lines
        for kind, line in self.trackers:
            out += ["TRACKERS TYPE " + kind, line]
        return "\n".join(out) + "\n"


def material_line(args):
    if args.material == "elastic":
        kind, words = "ELASTIC", ["E", fmt(args.young), "NU", fmt(args.nu), "RHO", fmt(args.rho)]
    elif args.material == "textile":
        kind = "HYPERTEXTILE"
        words = ["RHO", fmt(args.rho), "KELONGWARP"] + [fmt(v) for v in args.kwarp]
        words += ["KELONGWEFT"] + [fmt(v) for v in args.kweft]
        words += ["KSHEAR"] + [fmt(v) for v in args.kshear]
        words += ["WARPORI"] + [fmt(v) for v in args.warp] + ["WEFTORI"] + [fmt(v) for v in args.weft]
    else:
        if len(args.mu) != len(args.alpha):
            raise ValueError("--mu and --alpha need the same number of terms")
        kind = "HYPERELASTIC"
        words = ["RHO", fmt(args.rho), "TYPE", "OGDEN", "MU"] + [fmt(v) for v in args.mu]
        words += ["ALPHA"] + [fmt(v) for v in args.alpha]
    if args.damping is not None:
        words += ["DAMPING", fmt(args.damping)]
    return kind, "SHEET " + " ".join(words)


def contact_words(args):
    words = []
    if args.contact:
        words += ["CONTACT", args.contact]
    if args.factor is not None:
        words += ["FACTOR", fmt(args.factor)]
    if args.friction is not None:
        words += ["FRICTION", fmt(args.friction)]
    return words


def build(args):
    """The deck text and its node and element counts."""
    sets_known = EDGES_RECT if args.mesh == "rect" else EDGES_DISC
    if args.frame is not None and args.mesh != "rect":
        raise ValueError("--frame needs a rectangular sheet")
    if args.end < 0:
        raise ValueError("the end time must not be negative")
    for name in args.clamp + [p[0] for p in args.pull] + [t[1] for t in args.node_tracker]:
        if name not in sets_known:
            raise ValueError("unknown node set %s for a %s mesh (known: %s)" % (name, args.mesh, ", ".join(sets_known)))
    if args.element == "ROD_2" and args.material in ("textile", "ogden"):
        raise ValueError("rods need the elastic material")
    if args.element != "CONTACT_TRIANGLE" and args.material == "none":
        raise ValueError("%s elements need a material" % args.element)
    if args.pressure is not None and args.element not in ("MEMBRANE_3", "S3L_C0"):
        raise ValueError("--pressure acts on MEMBRANE_3 and S3L_C0 elements only")
    if args.element == "ROD_2" and args.contact == "BASIC":
        raise ValueError("rods take CONTACT EDGE only")

    if args.mesh == "rect":
        sheet = rectangle(args.size[0], args.size[1], args.div[0], args.div[1], tuple(args.origin), args.pattern)
    else:
        sheet = disc(args.radius, args.rings, tuple(args.origin))

    deck = Deck()
    deck.title = [args.title] if args.title else []
    deck.title.append("generated by: tools/gendeck.py " + " ".join(shlex.quote(a) for a in args.command_line))

    print_every = args.print_every if args.print_every is not None else args.end / 10.0
    deck.controls = ["RUN FROM 0 TO " + fmt(args.end), "STEP " + fmt(args.step), "PRINT EVERY " + fmt(print_every)]

    # Amplitudes cover twice the end time: outside its table an amplitude is 0.
    horizon = max(2.0 * args.end, 1.0)
    ramp = args.ramp if args.ramp is not None else args.end / 10.0
    moving_tool = args.tool and args.tool_velocity != 0.0
    if args.pull or moving_tool:
        if ramp > 0:
            deck.amplitudes.append("RAMP VALUES 0 0 %s 1 %s 1" % (fmt(ramp), fmt(max(horizon, 2 * ramp))))
        else:
            deck.amplitudes.append("RAMP VALUES 0 1 %s 1" % fmt(horizon))
    if args.pressure is not None:
        end = args.end if args.end > 0 else 1.0
        deck.amplitudes.append("PRAMP VALUES 0 0 %s 1 %s 1" % (fmt(end), fmt(max(horizon, 2 * end))))

    # One constraint per node: the first condition that names it.
    owner = {}
    for name in args.clamp:
        for index in sheet.sets[name]:
            owner.setdefault(index, "CLAMP")
    if args.clamp:
        deck.constraints.append("CLAMP VX 0 VY 0 VZ 0")
    for k, (name, vx, vy, vz) in enumerate(args.pull):
        label = "PULL%d" % (k + 1)
        velocity = parse_velocity((vx, vy, vz))
        if args.fix_z and velocity[2] is None:
            velocity[2] = 0.0
        words = [label]
        for key, v in zip(("VX", "VY", "VZ"), velocity):
            if v is not None:
                words += [key, fmt(v)]
        deck.constraints.append(" ".join(words + ["AMPLITUDE", "RAMP"]))
        for index in sheet.sets[name]:
            owner.setdefault(index, label)

    frame_points, frame_rods = ([], [])
    if args.frame is not None:
        frame_points, frame_rods = frame(sheet, args.frame)
    if args.fix_z:
        deck.constraints.append("PLANE VZ 0")
        for index in range(len(sheet.points) + len(frame_points)):
            owner.setdefault(index, "PLANE")

    if args.pressure is not None:
        deck.loads.append("PRESSURE P %s AMPLITUDE PRAMP" % fmt(args.pressure))
    if args.gravity is not None:
        deck.loads.append("GRAVITY AZ %s" % fmt(args.gravity))

    if args.element != "CONTACT_TRIANGLE" and args.material != "none":
        deck.materials.append(material_line(args))
    if args.frame is not None:
        deck.materials.append(("ELASTIC", "FRAME E %s NU 0.3 RHO %s" % (fmt(args.frame_young), fmt(args.frame_rho))))

    points = sheet.points + frame_points
    for index, (x, y, z) in enumerate(points):
        words = [str(index + 1), "X", fmt(x), "Y", fmt(y), "Z", fmt(z)]
        if index in owner:
            words += ["CONSTRAINT", owner[index]]
        if args.gravity is not None and index < len(sheet.points):
            words += ["LOAD", "GRAVITY"]
        deck.nodes.append(" ".join(words))

    number = 0
    lines = []
    if args.element == "ROD_2":
        for a, b in sheet.lines:
            number += 1
            words = ["%d NODES %d %d MATERIAL SHEET D %s" % (number, a + 1, b + 1, fmt(args.diameter))]
            if args.contact:
                words.append("CONTACT EDGE")
                if args.factor is not None:
                    words.append("FACTOR " + fmt(args.factor))
            lines.append(" ".join(words))
    else:
        for a, b, c in sheet.triangles:
            number += 1
            words = ["%d NODES %d %d %d" % (number, a + 1, b + 1, c + 1)]
            if args.element == "CONTACT_TRIANGLE":
                words.append("T " + fmt(args.thickness))
                if args.factor is not None:
                    words.append("FACTOR " + fmt(args.factor))
                if args.friction is not None:
                    words.append("FRICTION " + fmt(args.friction))
                if args.contact_type:
                    words.append("TYPE " + args.contact_type)
            else:
                words.append("MATERIAL SHEET T " + fmt(args.thickness))
                if args.element == "S3L_C0" and args.nip:
                    words.append("NIP %d" % args.nip)
                if args.pressure is not None:
                    words.append("LOAD PRESSURE")
                words += contact_words(args)
            lines.append(" ".join(words))
    deck.elements.append((args.element, lines))

    if frame_rods:
        rods = []
        for a, b in frame_rods:
            number += 1
            rods.append("%d NODES %d %d MATERIAL FRAME D %s" % (number, a + 1, b + 1, fmt(args.frame_diameter)))
        deck.elements.append(("ROD_2", rods))

    total_nodes = len(points)
    tool_numbers = []
    if args.tool_tracker and not args.tool:
        raise ValueError("--tool-tracker needs a tool")
    if args.tool_cap is not None and args.tool != "disc":
        raise ValueError("--tool-cap needs a disc tool")
    if args.tool:
        x0, y0, z0 = args.origin
        if args.tool == "rect":
            if args.tool_size:
                tlx, tly = args.tool_size
            elif args.mesh == "rect":
                tlx, tly = args.size
            else:
                tlx, tly = 2 * args.radius, 2 * args.radius
            if args.mesh == "rect":
                cx, cy = x0 + args.size[0] / 2, y0 + args.size[1] / 2
            else:
                cx, cy = x0, y0
            tool = rectangle(tlx, tly, args.tool_div[0], args.tool_div[1],
                             (cx - tlx / 2, cy - tly / 2, z0 - args.tool_offset))
        else:
            radius = args.tool_radius if args.tool_radius else (
                args.radius if args.mesh == "disc" else max(args.size) / 2)
            if args.mesh == "rect":
                cx, cy = x0 + args.size[0] / 2, y0 + args.size[1] / 2
            else:
                cx, cy = x0, y0
            tool = disc(radius, args.tool_rings, (cx, cy, z0 - args.tool_offset))
            if args.tool_cap:
                lift_to_cap(tool, (cx, cy), radius, args.tool_cap)
        words = ["TOOL", "VX", "0", "VY", "0", "VZ", fmt(args.tool_velocity)]
        if moving_tool:
            words += ["AMPLITUDE", "RAMP"]
        deck.constraints.append(" ".join(words))
        tool_numbers = [total_nodes + k + 1 for k in range(len(tool.points))]
        for k, (x, y, z) in enumerate(tool.points):
            deck.nodes.append("%d X %s Y %s Z %s CONSTRAINT TOOL" % (total_nodes + k + 1, fmt(x), fmt(y), fmt(z)))
        tool_lines = []
        for a, b, c in tool.triangles:
            number += 1
            words = ["%d NODES %d %d %d T %s" % (number, total_nodes + a + 1, total_nodes + b + 1,
                                                  total_nodes + c + 1, fmt(args.tool_thickness))]
            if args.tool_factor is not None:
                words.append("FACTOR " + fmt(args.tool_factor))
            if args.tool_friction is not None:
                words.append("FRICTION " + fmt(args.tool_friction))
            words.append("TYPE " + args.tool_type)
            tool_lines.append(" ".join(words))
        deck.elements.append(("CONTACT_TRIANGLE", tool_lines))
        total_nodes += len(tool.points)

    for name, set_name, kind, direction in args.node_tracker:
        numbers = " ".join(str(i + 1) for i in sheet.sets[set_name])
        deck.trackers.append(("NODE", "%s NODES %s DIRECTION %s TYPE %s" % (name, numbers, direction, kind)))
    for name, kind, direction in args.tool_tracker:
        numbers = " ".join(str(n) for n in tool_numbers)
        deck.trackers.append(("NODE", "%s NODES %s DIRECTION %s TYPE %s" % (name, numbers, direction, kind)))
    for name, ids, component, kind in args.element_tracker:
        numbers = " ".join(ids.replace(",", " ").split())
        deck.trackers.append(("ELEMENT", "%s ELEMENTS %s COMPONENT %s TYPE %s" % (name, numbers, component, kind)))

    return deck.text(), total_nodes, number


def main(argv=None):
    parser = build_parser()
    args = parser.parse_args(argv)
    args.command_line = sys.argv[1:] if argv is None else list(argv)
    try:
        text, nodes, elements = build(args)
    except ValueError as error:
        parser.error(str(error))
    with open(args.output, "w") as out:
        out.write(text)
    print("%s: %d nodes, %d elements" % (args.output, nodes, elements))
    return 0


if __name__ == "__main__":
    sys.exit(main())

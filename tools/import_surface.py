#!/usr/bin/env python3
"""Turn a surface mesh (a tool face from CAD, a blank) into Drapex deck blocks.

The mesh is read with meshio (STL, OBJ, Gmsh .msh, VTK/VTU, PLY, OFF, ...):
its triangles are kept, quads are cut into two triangles along their first
diagonal and polygons into a fan; other cells (lines, vertices, volumes) are
left out. Points closer than the merge tolerance are merged (an STL file
repeats every corner on every facet), facets that become degenerate are
dropped, and unused points are left out.

The facets are then checked: two facets that share an edge must run along it
in opposite directions, so that their normals (x2 - x1) x (x3 - x1) point to
the same side. Each connected part is oriented by a flood fill from its first
facet, turning over the facets that disagree with their neighbours; with
--facing X Y Z each part is then turned over as a whole when most of its area
faces away from that point (name a point on the blank's side of a tool). An
edge shared by more than two facets, or a part that cannot be oriented (a
Moebius strip), stops the tool with a message naming the file and the edge.
--flip turns every facet over at the very end.

Geometry is transformed in this order: --scale, --rotate (degrees about the
global x, then y, then z axis, through the origin), --translate. --facing is
given in the transformed (deck) coordinates.

Two modes:

  tool (default): NODES, ELEMENTS TYPE CONTACT_FACET lines with SURFACE
  <name>, the CONTACT_SURFACES line of that surface (TYPE, T, FACTOR or
  PENALTY, FRICTION, ON passed through), and with --reference a RIGID_BODIES
  line whose reference node is added after the surface's nodes at the given
  point (its node line carries --constraint and --load, the body's line
  --mass and --inertia).

  blank (--blank MEMBRANE_3|S3L_C0): NODES and ELEMENTS lines of membranes
  or shells with MATERIAL and T (and NIP, and SURFACE <name> with its
  CONTACT_SURFACES line when --surface is given).

Nodes are numbered from --first-node and elements from --first-element, so
that pieces written one after another (blank first, then each tool) number
the deck's nodes 1..N without gaps. The blocks are written to the output
file through a temporary file that is renamed at the end: a failed run
leaves nothing behind. On success one line is printed: the output, its node
and element ranges and how many facets were turned over.

Examples
  # a punch from an STL in metres: mm, normals towards the blank below it,
  # a rigid body moved by the constraint PUNCH on its reference node
  import_surface.py punch.stl --name PUNCH --scale 1000 --facing 0 0 -1000 \\
      --first-node 2602 --first-element 5001 --type SOLID --t 2 \\
      --penalty 0.1 --friction 0.2 --reference 0 0 51 --constraint PUNCH \\
      -o punch_blocks.txt

  # a free blank holder pushed by the load PRESS, 10 kg, rotations held by
  # the constraint GUIDE that leaves VZ free
  import_surface.py holder.obj --name HOLDER --facing 0 0 -1000 --type SOLID \\
      --friction 0.2 --reference 0 0 0 --constraint GUIDE --load PRESS \\
      --mass 0.01 --inertia 40 40 80 --first-node 3000 --first-element 7000 \\
      -o holder_blocks.txt

  # a woven blank of membranes from a Gmsh mesh, normals up
  import_surface.py blank.msh --blank MEMBRANE_3 --material FABRIC \\
      --thickness 1 --facing 0 0 1000 -o blank_blocks.txt

The blocks are meant to be pasted into a deck (or assembled by a script, as
examples/hemisphere/make_deck.py does through this module's build()); a
keyword may head several blocks, but one NODES block reads best.
"""

import argparse
import contextlib
import io
import math
import os
import sys
import tempfile
import warnings

try:
    import numpy as np
except ImportError:  # reported by main(): the tool needs numpy and meshio
    np = None

PROGRAM = "import_surface"
BLANK_TYPES = ("MEMBRANE_3", "S3L_C0")


class SurfaceError(Exception):
    """Bad input: the message names the file and what is wrong with it."""


def fmt(value):
    """Number text for the deck: up to ten significant digits, no negative zero."""
    text = "%.10g" % value
    return "0" if text == "-0" else text


def point_text(p):
    return "(%s, %s, %s)" % (fmt(p[0]), fmt(p[1]), fmt(p[2]))


def valid_name(name):
    """A deck name begins with a letter and does not read as a number (INF..., NAN...)."""
    upper = name.upper()
    return bool(name) and name[0].isalpha() and not upper.startswith(("INF", "NAN")) and \
        all(c.isalnum() or c in "_-." for c in name)


# --------------------------------------------------------------------------
# Reading

def read_triangles(path):
    """Points (n x 3 floats) and triangles (m x 3 indices) of a surface mesh file."""
    if not os.path.exists(path):
        raise SurfaceError("%s: no such file" % path)
    if os.path.isdir(path):
        raise SurfaceError("%s: is a folder, not a mesh file" % path)
    try:
        import meshio
    except ImportError:
        raise SurfaceError("%s: cannot be read without meshio (Debian's python3-meshio)" % path)
    # meshio prints what its readers say and may end the program itself
    # (SystemExit) when no reader takes the file: keep its words for the one
    # message line.
    said = io.StringIO()
    try:
        with warnings.catch_warnings(), contextlib.redirect_stdout(said), contextlib.redirect_stderr(said):
            warnings.simplefilter("ignore")
            mesh = meshio.read(path)
    except (Exception, SystemExit) as error:
        lines = [] if isinstance(error, SystemExit) else str(error).strip().splitlines()
        lines = lines or [t.strip() for t in said.getvalue().splitlines() if t.strip()]
        reason = lines[0] if lines else type(error).__name__
        if reason.startswith("Error: "):
            reason = reason[len("Error: "):]
        raise SurfaceError("%s: cannot be read as a mesh (%s)" % (path, reason.rstrip(".")))
    points = np.asarray(mesh.points, dtype=float)
    if points.ndim != 2 or points.shape[0] == 0:
        raise SurfaceError("%s: the mesh has no points" % path)
    if points.shape[1] == 2:
        points = np.hstack([points, np.zeros((points.shape[0], 1))])
    points = points[:, :3]
    triangles, others = [], {}
    for block in mesh.cells:
        data = np.asarray(block.data)
        if block.type == "triangle":
            triangles.append(data[:, :3])
        elif block.type == "quad":
            triangles += [data[:, [0, 1, 2]], data[:, [0, 2, 3]]]
        elif block.type == "polygon" or block.type.startswith("polygon"):
            for k in range(1, data.shape[1] - 1):
                triangles.append(data[:, [0, k, k + 1]])
        else:
            others[block.type] = others.get(block.type, 0) + len(data)
    if not triangles:
        held = ", ".join("%d %s cells" % (n, kind) for kind, n in sorted(others.items())) or "no cells"
        raise SurfaceError("%s: the mesh has no triangles or quads (it holds %s)" % (path, held))
    tris = np.vstack(triangles).astype(np.int64)
    if tris.min() < 0 or tris.max() >= len(points):
        raise SurfaceError("%s: a facet names a point the file does not have" % path)
    if not np.all(np.isfinite(points[np.unique(tris)])):
        raise SurfaceError("%s: a point of a facet has a coordinate that is not a number" % path)
    return points, tris


# --------------------------------------------------------------------------
# Cleaning: merged points, degenerate facets, unused points

def merge_points(points, tris, tolerance):
    """Merges points closer than `tolerance` in every coordinate (chains
    merge too), drops facets left with a repeated corner or without area,
    and numbers the used points in their first use by the facets. Returns
    (points, triangles, number of dropped facets)."""
    # Exact repeats first (every STL corner), then near ones on a grid of
    # cells `tolerance` wide, looking into the 27 cells around each point.
    unique, inverse = np.unique(points, axis=0, return_inverse=True)
    inverse = inverse.reshape(-1)
    parent = list(range(len(unique)))

    def root(i):
        while parent[i] != i:
            parent[i] = parent[parent[i]]
            i = parent[i]
        return i

    if tolerance > 0 and len(unique) > 1:
        cells = {}
        keys = np.floor(unique / tolerance).astype(np.int64)
        for i, key in enumerate(map(tuple, keys)):
            for dx in (-1, 0, 1):
                for dy in (-1, 0, 1):
                    for dz in (-1, 0, 1):
                        for j in cells.get((key[0] + dx, key[1] + dy, key[2] + dz), ()):
                            if np.all(np.abs(unique[i] - unique[j]) <= tolerance):
                                a, b = root(i), root(j)
                                if a != b:
                                    parent[max(a, b)] = min(a, b)
            cells.setdefault(key, []).append(i)
    merged = np.array([root(i) for i in range(len(unique))], dtype=np.int64)
    tris = merged[inverse[tris]]
    keep = (tris[:, 0] != tris[:, 1]) & (tris[:, 1] != tris[:, 2]) & (tris[:, 2] != tris[:, 0])
    tris = tris[keep]
    dropped = int((~keep).sum())
    if len(tris):
        area2 = np.linalg.norm(facet_normals(unique, tris), axis=1)
        scale = np.ptp(unique[np.unique(tris)], axis=0).max()
        flat = area2 <= 1e-12 * scale * scale
        dropped += int(flat.sum())
        tris = tris[~flat]
    used, first_use = np.unique(tris.reshape(-1), return_index=True)
    order = used[np.argsort(first_use)]
    renumber = np.zeros(len(unique), dtype=np.int64)
    renumber[order] = np.arange(len(order))
    return unique[order], renumber[tris], dropped


def facet_normals(points, tris):
    """(x2 - x1) x (x3 - x1) of every facet: twice its area along its normal."""
    a, b, c = points[tris[:, 0]], points[tris[:, 1]], points[tris[:, 2]]
    return np.cross(b - a, c - a)


# --------------------------------------------------------------------------
# Orientation

def edge_map(tris, label, points):
    """{(i, j) with i < j: [(facet, +1 if the facet runs i -> j else -1), ...]};
    an edge with more than two facets stops the tool."""
    edges = {}
    for f, tri in enumerate(tris.tolist()):
        for a, b in ((tri[0], tri[1]), (tri[1], tri[2]), (tri[2], tri[0])):
            key, sense = ((a, b), 1) if a < b else ((b, a), -1)
            edges.setdefault(key, []).append((f, sense))
    for (a, b), uses in edges.items():
        if len(uses) > 2:
            raise SurfaceError(
                "%s: the edge from %s to %s is shared by %d facets: a non-manifold edge has no consistent "
                "orientation (split the surface there or remove the extra facets)"
                % (label, point_text(points[a]), point_text(points[b]), len(uses)))
    return edges


def orient_consistently(points, tris, label):
    """Turns facets over so that neighbours run along their shared edge in
    opposite directions, part by part, keeping the first facet of each part
    as it is. Returns (triangles, part index of each facet, facets turned)."""
    edges = edge_map(tris, label, points)
    neighbours = [[] for _ in range(len(tris))]
    for key, uses in edges.items():
        if len(uses) == 2:
            (f, sf), (g, sg) = uses
            # Consistent when the two facets run the edge in opposite senses:
            # g must keep its order (same = False) when sf != sg.
            same = sf == sg
            neighbours[f].append((g, same, key))
            neighbours[g].append((f, same, key))
    turn = np.full(len(tris), -1, dtype=np.int64)  # -1 unseen, 0 kept, 1 turned
    part = np.full(len(tris), -1, dtype=np.int64)
    parts = 0
    for start in range(len(tris)):
        if turn[start] >= 0:
            continue
        turn[start], part[start] = 0, parts
        stack = [start]
        while stack:
            f = stack.pop()
            for g, same, key in neighbours[f]:
                want = turn[f] ^ int(same)
                if turn[g] < 0:
                    turn[g], part[g] = want, parts
                    stack.append(g)
                elif turn[g] != want:
                    a, b = key
                    raise SurfaceError(
                        "%s: the surface cannot be oriented (it is one-sided, like a Moebius strip): going "
                        "round it turns the facets at the edge from %s to %s the wrong way"
                        % (label, point_text(points[a]), point_text(points[b])))
        parts += 1
    out = tris.copy()
    turned = turn == 1
    out[turned] = out[turned][:, [0, 2, 1]]
    return out, part, int(turned.sum())


def face_point(points, tris, part, target, label):
    """Turns over every part whose area mostly faces away from `target`.
    Returns (triangles, facets turned)."""
    out = tris.copy()
    normals = facet_normals(points, tris)
    centres = points[tris].mean(axis=1)
    toward = np.einsum("ij,ij->i", normals, np.asarray(target, dtype=float) - centres)
    area = 0.5 * np.linalg.norm(normals, axis=1)
    turned = 0
    for p in range(int(part.max()) + 1 if len(part) else 0):
        mine = part == p
        vote = np.sum(area[mine] * np.sign(toward[mine]))
        if vote == 0.0:
            raise SurfaceError("%s: cannot tell which side of a part faces the point %s (the point lies in "
                               "its plane): give another --facing point" % (label, point_text(target)))
        if vote < 0:
            out[mine] = out[mine][:, [0, 2, 1]]
            turned += int(mine.sum())
    return out, turned


# --------------------------------------------------------------------------
# Geometry

def rotation(degrees):
    """Rotation about x, then y, then z (global axes), angles in degrees."""
    ax, ay, az = (math.radians(a) for a in degrees)
    rx = np.array([[1, 0, 0], [0, math.cos(ax), -math.sin(ax)], [0, math.sin(ax), math.cos(ax)]])
    ry = np.array([[math.cos(ay), 0, math.sin(ay)], [0, 1, 0], [-math.sin(ay), 0, math.cos(ay)]])
    rz = np.array([[math.cos(az), -math.sin(az), 0], [math.sin(az), math.cos(az), 0], [0, 0, 1]])
    return rz @ ry @ rx


def transform(points, scale=1.0, rotate=(0.0, 0.0, 0.0), translate=(0.0, 0.0, 0.0)):
    out = points * scale
    if any(rotate):
        out = out @ rotation(rotate).T
    return out + np.asarray(translate, dtype=float)


# --------------------------------------------------------------------------
# Deck blocks

class Blocks:
    """The deck lines one import writes, by block, and its numbering."""

    def __init__(self):
        self.comments = []
        self.nodes = []
        self.elements = []  # (type, lines)
        self.surfaces = []
        self.bodies = []
        self.first_node = self.last_node = 0
        self.first_element = self.last_element = 0
        self.reference = None
        self.turned = 0  # facets turned to match their neighbours
        self.faced = 0  # facets turned with their part to face --facing
        self.dropped = 0
        self.points = None  # deck coordinates of the surface's nodes
        self.triangles = None  # 0-based, in deck order

    def text(self):
        out = list(self.comments)
        out += ["NODES"] + self.nodes
        for kind, lines in self.elements:
            out += ["ELEMENTS TYPE " + kind] + lines
        if self.surfaces:
            out += ["CONTACT_SURFACES"] + self.surfaces
        if self.bodies:
            out += ["RIGID_BODIES"] + self.bodies
        return "\n".join(out) + "\n"


def surface_line(name, args):
    words = [name]
    if args.type:
        words += ["TYPE", args.type]
    if args.t is not None:
        words += ["T", fmt(args.t)]
    if args.factor is not None:
        words += ["FACTOR", fmt(args.factor)]
    if args.penalty is not None:
        words += ["PENALTY", fmt(args.penalty)]
    if args.friction is not None:
        words += ["FRICTION", fmt(args.friction)]
    if args.on_nodes:
        words += ["ON", "NODES"] + args.on_nodes
    if args.on_elements:
        words += ["ON", "ELEMENTS"] + args.on_elements
    return " ".join(words)


def check_options(args):
    """Option combinations that make no deck; raises ValueError."""
    label = args.mesh
    if args.scale <= 0:
        raise ValueError("--scale must be positive (a mirror would turn the normals inside out)")
    if args.first_node < 1 or args.first_element < 1:
        raise ValueError("--first-node and --first-element start at 1 or above")
    if args.factor is not None and args.penalty is not None:
        raise ValueError("give --factor or --penalty, not both")
    if args.on_nodes and args.on_elements:
        raise ValueError("give --on-nodes or --on-elements, not both")
    for words, option in ((args.on_nodes, "--on-nodes"), (args.on_elements, "--on-elements")):
        for w in words or []:
            if w.upper() != "TO" and not w.isdigit():
                raise ValueError("%s takes numbers and ranges 'A TO B', not %r" % (option, w))
    if args.blank:
        if args.material is None or args.thickness is None:
            raise ValueError("--blank needs --material and --thickness")
        if not valid_name(args.material):
            raise ValueError("--material %r is not a deck name (a letter first, then letters, digits or _)"
                             % args.material)
        for option in ("reference", "constraint", "load", "mass", "inertia", "name", "body"):
            if getattr(args, option) is not None:
                raise ValueError("--%s belongs to a tool surface, not to a --blank" % option)
        if args.surface is not None and not valid_name(args.surface):
            raise ValueError("--surface %r is not a deck name" % args.surface)
        if args.nip is not None and args.blank != "S3L_C0":
            raise ValueError("--nip is for S3L_C0 shells")
    else:
        for option in ("material", "thickness", "surface", "nip"):
            if getattr(args, option) is not None:
                raise ValueError("--%s needs --blank" % option)
        if args.name is None:
            stem = os.path.splitext(os.path.basename(label))[0]
            if not valid_name(stem):
                raise ValueError("the file name %r is not a deck name: give the surface a --name" % stem)
            args.name = stem
        elif not valid_name(args.name):
            raise ValueError("--name %r is not a deck name (a letter first, then letters, digits or _)" % args.name)
        if args.reference is None:
            for option in ("constraint", "load", "mass", "inertia", "body"):
                if getattr(args, option) is not None:
                    raise ValueError("--%s needs a rigid body: give its --reference point" % option)
        for option in ("constraint", "load", "body"):
            value = getattr(args, option)
            if value is not None and not valid_name(value):
                raise ValueError("--%s %r is not a deck name" % (option, value))
        if args.mass is not None and args.mass < 0:
            raise ValueError("--mass must not be negative")
        if args.inertia is not None and min(args.inertia) < 0:
            raise ValueError("--inertia must not be negative")


def build(args):
    """The blocks of one import (SurfaceError for bad input, ValueError for
    options that do not fit together)."""
    check_options(args)
    points, tris = read_triangles(args.mesh)
    span = np.ptp(points[np.unique(tris)], axis=0)
    tolerance = args.merge_tolerance if args.merge_tolerance is not None else 1e-6 * float(np.linalg.norm(span))
    points, tris, dropped = merge_points(points, tris, tolerance)
    if len(tris) == 0:
        raise SurfaceError("%s: every facet is degenerate (no area once close points are merged)" % args.mesh)
    tris, part, turned = orient_consistently(points, tris, args.mesh)
    points = transform(points, args.scale, args.rotate, args.translate)
    faced = 0
    if args.facing is not None:
        tris, faced = face_point(points, tris, part, args.facing, args.mesh)
    if args.flip:
        tris = tris[:, [0, 2, 1]]

    blocks = Blocks()
    blocks.turned, blocks.faced, blocks.dropped = turned, faced, dropped
    blocks.points, blocks.triangles = points, tris
    first = args.first_node
    blocks.first_node = first
    blocks.last_node = first + len(points) - 1
    blocks.comments.append("** %s: %s, %d facets in %d part%s, nodes %d to %d" % (
        PROGRAM, os.path.basename(args.mesh), len(tris), int(part.max()) + 1, "" if part.max() == 0 else "s",
        first, blocks.last_node))
    for k, (x, y, z) in enumerate(points):
        blocks.nodes.append("%d X %s Y %s Z %s" % (first + k, fmt(x), fmt(y), fmt(z)))

    number = args.first_element
    blocks.first_element = number
    lines = []
    if args.blank:
        tail = ["MATERIAL", args.material.upper(), "T", fmt(args.thickness)]
        if args.nip is not None:
            tail += ["NIP", str(args.nip)]
        if args.surface:
            tail += ["SURFACE", args.surface.upper()]
        tail = " ".join(tail)
        for a, b, c in tris.tolist():
            lines.append("%d NODES %d %d %d %s" % (number, first + a, first + b, first + c, tail))
            number += 1
        blocks.elements.append((args.blank, lines))
        if args.surface:
            blocks.surfaces.append(surface_line(args.surface.upper(), args))
    else:
        name = args.name.upper()
        for a, b, c in tris.tolist():
            lines.append("%d NODES %d %d %d SURFACE %s" % (number, first + a, first + b, first + c, name))
            number += 1
        blocks.elements.append(("CONTACT_FACET", lines))
        blocks.surfaces.append(surface_line(name, args))
        if args.reference is not None:
            ref = blocks.last_node + 1
            blocks.reference = ref
            words = ["%d X %s Y %s Z %s" % (ref, fmt(args.reference[0]), fmt(args.reference[1]),
                                            fmt(args.reference[2]))]
            if args.constraint:
                words.append("CONSTRAINT " + args.constraint.upper())
            if args.load:
                words.append("LOAD " + args.load.upper())
            blocks.nodes.append(" ".join(words))
            blocks.last_node = ref
            body = [(args.body or name).upper(), "REFERENCE", str(ref), "NODES", str(first), "TO", str(ref - 1)]
            if args.mass is not None:
                body += ["MASS", fmt(args.mass)]
            if args.inertia is not None:
                body += ["INERTIA"] + [fmt(v) for v in args.inertia]
            blocks.bodies.append(" ".join(body))
    blocks.last_element = number - 1
    return blocks


def write_atomically(path, text):
    """Writes through a temporary file in the same folder, renamed at the end."""
    folder = os.path.dirname(os.path.abspath(path))
    handle, temporary = tempfile.mkstemp(prefix=".import_surface_", suffix=".tmp", dir=folder)
    try:
        with os.fdopen(handle, "w") as out:
            out.write(text)
        # mkstemp makes the file private; give it the permissions a plain open() would
        umask = os.umask(0)
        os.umask(umask)
        os.chmod(temporary, 0o666 & ~umask)
        os.replace(temporary, path)
    except BaseException:
        if os.path.exists(temporary):
            os.unlink(temporary)
        raise


# --------------------------------------------------------------------------
# Command line

def build_parser():
    p = argparse.ArgumentParser(prog="import_surface.py", description=__doc__,
                                formatter_class=argparse.RawDescriptionHelpFormatter)
    p.add_argument("mesh", help="surface mesh file (any format meshio reads: .stl, .obj, .msh, .vtk, .vtu, ...)")
    p.add_argument("-o", "--output", required=True, help="file to write the deck blocks to")

    g = p.add_argument_group("geometry (applied in this order)")
    g.add_argument("--scale", type=float, default=1.0, help="uniform factor, e.g. 1000 from m to mm")
    g.add_argument("--rotate", nargs=3, type=float, default=(0.0, 0.0, 0.0), metavar=("AX", "AY", "AZ"),
                   help="degrees about the global x, then y, then z axis")
    g.add_argument("--translate", nargs=3, type=float, default=(0.0, 0.0, 0.0), metavar=("X", "Y", "Z"))
    g.add_argument("--merge-tolerance", type=float,
                   help="points closer than this in every coordinate (file units) are one node "
                        "(default: 1e-6 of the mesh's diagonal)")

    g = p.add_argument_group("orientation")
    g.add_argument("--facing", nargs=3, type=float, metavar=("X", "Y", "Z"),
                   help="point (deck coordinates) that most of each part's area must face, e.g. one on the "
                        "blank's side of a tool")
    g.add_argument("--flip", action="store_true", help="turn every facet over at the end")

    g = p.add_argument_group("numbering")
    g.add_argument("--first-node", type=int, default=1, metavar="N", help="number of the first node (default 1)")
    g.add_argument("--first-element", type=int, default=1, metavar="E", help="number of the first element (default 1)")

    g = p.add_argument_group("contact surface (the CONTACT_SURFACES line)")
    g.add_argument("--name", help="surface name for a tool (default: the file's stem)")
    g.add_argument("--type", choices=("SOLID", "SHELL"), type=str.upper, help="TYPE of the surface")
    g.add_argument("--t", type=float, help="T: reach of a SOLID surface, slab thickness of a SHELL one")
    g.add_argument("--factor", type=float, help="FACTOR: penalty stiffness as for CONTACT_TRIANGLE")
    g.add_argument("--penalty", type=float, help="PENALTY: stiffness as a share of m / dt^2 (Drapex's default 0.1)")
    g.add_argument("--friction", type=float, help="FRICTION: Coulomb coefficient")
    g.add_argument("--on-nodes", nargs="+", metavar="N", help="ON NODES: numbers and ranges, e.g. 1 TO 2601")
    g.add_argument("--on-elements", nargs="+", metavar="E", help="ON ELEMENTS: numbers and ranges")

    g = p.add_argument_group("rigid body (a tool; the RIGID_BODIES line)")
    g.add_argument("--reference", nargs=3, type=float, metavar=("X", "Y", "Z"),
                   help="add a reference node here, numbered after the surface's nodes, and make the surface "
                        "a rigid body with it")
    g.add_argument("--body", help="name of the rigid body (default: the surface's name)")
    g.add_argument("--constraint", help="CONSTRAINT on the reference node (prescribed motion)")
    g.add_argument("--load", help="LOAD on the reference node (a free body driven by a force)")
    g.add_argument("--mass", type=float, help="MASS of the body")
    g.add_argument("--inertia", nargs=3, type=float, metavar=("IXX", "IYY", "IZZ"),
                   help="INERTIA about global axes through the reference node")

    g = p.add_argument_group("blank (membranes or shells instead of contact facets)")
    g.add_argument("--blank", choices=BLANK_TYPES, type=str.upper, help="element type of the blank")
    g.add_argument("--material", help="MATERIAL of the blank's elements")
    g.add_argument("--thickness", type=float, help="T of the blank's elements")
    g.add_argument("--nip", type=int, choices=range(1, 6), metavar="N", help="NIP of S3L_C0 shells (1 to 5)")
    g.add_argument("--surface", help="SURFACE name on each element (a ply that slides on another), "
                                     "with its CONTACT_SURFACES line")
    return p


def main(argv=None):
    parser = build_parser()
    args = parser.parse_args(argv)
    if np is None:
        print("%s: %s: cannot be read without numpy and meshio (Debian's python3-meshio)" % (PROGRAM, args.mesh),
              file=sys.stderr)
        return 1
    try:
        blocks = build(args)
    except ValueError as error:
        parser.error(str(error))
    except SurfaceError as error:
        print("%s: %s" % (PROGRAM, error), file=sys.stderr)
        return 1
    try:
        write_atomically(args.output, blocks.text())
    except OSError as error:
        print("%s: %s: cannot be written (%s)" % (PROGRAM, args.output, error.strerror or error), file=sys.stderr)
        return 1
    notes = []
    if blocks.reference is not None:
        notes.append("reference node %d" % blocks.reference)
    notes.append("%d facet%s turned to match %s neighbours" % (
        blocks.turned, "" if blocks.turned == 1 else "s", "its" if blocks.turned == 1 else "their"))
    if args.facing is not None:
        notes.append("%d turned to face %s" % (blocks.faced, point_text(args.facing)))
    if blocks.dropped:
        notes.append("%d degenerate facet%s dropped" % (blocks.dropped, "" if blocks.dropped == 1 else "s"))
    print("%s: nodes %d to %d, elements %d to %d (%s)" % (args.output, blocks.first_node, blocks.last_node,
                                                          blocks.first_element, blocks.last_element,
                                                          ", ".join(notes)))
    return 0


if __name__ == "__main__":
    sys.exit(main())

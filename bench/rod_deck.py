#!/usr/bin/env python3
"""Write a rod-net deck: a square net of ROD_2 elements along x and y.

The net lies in the plane z = 0, nx by ny cells of side --cell; every grid
line between two neighbouring nodes is one rod. With --load gravity
(the default) the four corner nodes are held, every other node carries a
gravity load along -z and the material has mass-proportional damping, so the
net sags and swings like a hammock. With --load pull the left edge is held and
the right edge pulled along x and z by a ramped velocity, so that the nodes
carry no load of their own. The time step is automatic.

    rod_deck.py --cells 100 50 --end 0.01 -o net.txt

The deck has (nx + 1)(ny + 1) nodes and nx (ny + 1) + ny (nx + 1) rods.
tests/decks/rod_net.txt, a regression deck, was written by
    rod_deck.py --cells 8 6 --end 0.05 --print 0.005 --trackers
Running the script prints the deck path and the node and element counts.
Optional trackers (--trackers) record the centre node's position, velocity,
acceleration and force and the first rod's strain and stress.
"""

import argparse
import sys


def build(nx, ny, cell, end, print_every, trackers, load="gravity"):
    what = "corners held, gravity" if load == "gravity" else "left edge held, right edge pulled"
    lines = ["TITLE", "** Rod net %d x %d, %s, damping" % (nx, ny, what)]
    lines += ["CONTROLS", "RUN FROM 0.0 TO %.10g" % end, "STEP 0", "PRINT EVERY %.10g" % print_every]
    lines += ["AMPLITUDES TYPE TABULAR", "GRAMP VALUES = [0.0, 0.0, %.10g, 1.0, 1e30, 1.0]" % (end * 0.2)]
    if load == "gravity":
        lines += ["LOADS", "GRAVITY AZ -9.81 AMPLITUDE GRAMP"]
    lines += ["CONSTRAINTS TYPE BOUNDARY_CONDITION", "HELD VX 0 VY 0 VZ 0"]
    if load == "pull":
        lines.append("PULL VX 0.5 VY 0 VZ -0.5 AMPLITUDE GRAMP")
    lines += ["MATERIALS TYPE ELASTIC", "CORD E 2.0E9 NU 0.3 RHO 1200 DAMPING 5"]
    lines.append("NODES")

    def node(i, j):
        return j * (nx + 1) + i + 1

    corners = {node(0, 0), node(nx, 0), node(0, ny), node(nx, ny)}
    for j in range(ny + 1):
        for i in range(nx + 1):
            n = node(i, j)
            if load == "gravity":
                tail = "CONSTRAINT HELD" if n in corners else "LOAD GRAVITY"
            else:
                tail = "CONSTRAINT HELD" if i == 0 else "CONSTRAINT PULL" if i == nx else ""
            lines.append(("%d X %.10g Y %.10g Z 0 %s" % (n, i * cell, j * cell, tail)).rstrip())
    lines.append("ELEMENTS TYPE ROD_2")
    e = 0
    for j in range(ny + 1):
        for i in range(nx):
            e += 1
            lines.append("%d NODES %d %d MATERIAL CORD D 0.002" % (e, node(i, j), node(i + 1, j)))
    for i in range(nx + 1):
        for j in range(ny):
            e += 1
            lines.append("%d NODES %d %d MATERIAL CORD D 0.002" % (e, node(i, j), node(i, j + 1)))
    if trackers:
        centre = node(nx // 2, ny // 2)
        lines.append("TRACKERS TYPE NODE")
        for name, kind, axis in (("CPOS", "POSITION", "Z"), ("CVEL", "VELOCITY", "Z"),
                                 ("CACC", "ACCELERATION", "Z"), ("CFORCE", "FORCE", "X")):
            lines.append("%s NODES %d %d DIRECTION %s TYPE %s" % (name, centre, centre + 1, axis, kind))
        lines.append("TRACKERS TYPE ELEMENT")
        lines.append("RSTRAIN ELEMENTS 1 2 COMPONENT C11 TYPE STRAIN")
        lines.append("RSTRESS ELEMENTS 1 2 COMPONENT C11 TYPE STRESS")
    nodes = (nx + 1) * (ny + 1)
    return "\n".join(lines) + "\n", nodes, e


def main(argv=None):
    p = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    p.add_argument("-o", "--output", required=True)
    p.add_argument("--cells", nargs=2, type=int, default=(10, 10), metavar=("NX", "NY"))
    p.add_argument("--cell", type=float, default=0.01, help="cell side")
    p.add_argument("--end", type=float, default=0.01, help="end time")
    p.add_argument("--print", dest="print_every", type=float, help="print interval (default: the end time)")
    p.add_argument("--load", choices=("gravity", "pull"), default="gravity")
    p.add_argument("--trackers", action="store_true")
    args = p.parse_args(argv)
    if args.cells[0] < 1 or args.cells[1] < 1:
        p.error("the net needs at least one cell in each direction")
    text, nodes, elements = build(args.cells[0], args.cells[1], args.cell, args.end,
                                  args.print_every if args.print_every is not None else args.end, args.trackers,
                                  args.load)
    with open(args.output, "w") as f:
        f.write(text)
    print("%s %d nodes %d elements" % (args.output, nodes, elements))
    return 0


if __name__ == "__main__":
    sys.exit(main())

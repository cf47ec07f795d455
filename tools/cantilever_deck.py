#!/usr/bin/env python3
"""Writes the deck of a cantilever strip of three-node shells.

A flat strip of length L along x and width B along y is meshed with NX x NY
rectangles, each cut into two triangles (diagonals alternating like a
chequerboard). The nodes at x = 0 are clamped in all six degrees of freedom;
the nodes at x = L carry a total force P in -z, shared along the edge
(half shares at the two corners), ramped in from zero and then held. The
material's mass-proportional damping lets the strip settle on its static
deflection, which beam theory puts at P L^3 / (3 E I), I = B t^3 / 12.
Trackers write TIP.csv (z of the free-edge nodes) and ROOT.csv (S11 of
element 1, at the clamp) beside the deck.

Units: mm, N, tonne, s (stress in MPa). The shell takes its density per unit
area, so RHO is the steel density times the thickness.

Usage: cantilever_deck.py OUTPUT.txt [--nx 20] [--ny 2] [--end 0.015] ...
"""

import argparse
import math


def build_deck(nx, ny, length, width, thickness, force, young, nu, density, ramp, end, damping, prints):
    area_density = density * thickness
    inertia = width * thickness ** 3 / 12.0
    beam = force * length ** 3 / (3.0 * young * inertia)
    lines = []
    add = lines.append
    add("TITLE")
    add("** Cantilever strip of S3L_C0 shells: %g mm long, %g mm wide, %g mm thick," % (length, width, thickness))
    add("** %d x %d rectangles cut into %d triangles. The edge x = 0 is clamped in all" % (nx, ny, 2 * nx * ny))
    add("** six degrees of freedom; the free edge x = %g carries %g N in -z in total," % (length, force))
    add("** ramped in over %g s and then held; mass-proportional damping lets the" % ramp)
    add("** strip settle. Beam theory P L^3 / (3 E I) gives a tip deflection of %.4f mm." % beam)
    add("** TIP.csv tracks z of the free-edge nodes, ROOT.csv the S11 of element 1 at the clamp.")
    add("** Written by tools/cantilever_deck.py.")
    add("CONTROLS")
    add("RUN FROM 0.0 TO %g" % end)
    add("STEP 0")
    add("PRINT EVERY %g" % (end / prints))
    add("AMPLITUDES TYPE TABULAR")
    # The table runs past the end time: outside its table an amplitude is zero.
    add("RAMP VALUES = [0.0, 0.0, %g, 1.0, %g, 1.0]" % (ramp, 10.0 * end))
    add("CONSTRAINTS TYPE BOUNDARY_CONDITION")
    add("CLAMP VX 0 VY 0 VZ 0 VRX 0 VRY 0 VRZ 0")
    add("LOADS")
    add("TIP FZ %.10g AMPLITUDE RAMP" % (-force / ny))
    add("TIPCORNER FZ %.10g AMPLITUDE RAMP" % (-force / ny / 2.0))
    add("MATERIALS TYPE ELASTIC")
    add("STEEL E %g NU %g RHO %.6g DAMPING %g" % (young, nu, area_density, damping))
    add("NODES")

    def node_id(i, j):
        return i * (ny + 1) + j + 1

    for i in range(nx + 1):
        for j in range(ny + 1):
            x = length * i / nx
            y = width * j / ny
            extra = ""
            if i == 0:
                extra = " CONSTRAINT CLAMP"
            elif i == nx:
                extra = " LOAD TIPCORNER" if j in (0, ny) else " LOAD TIP"
            add("%d X %.10g Y %.10g Z 0.0%s" % (node_id(i, j), x, y, extra))
    add("ELEMENTS TYPE S3L_C0")
    number = 0
    for i in range(nx):
        for j in range(ny):
            a, b = node_id(i, j), node_id(i + 1, j)
            c, d = node_id(i + 1, j + 1), node_id(i, j + 1)
            if (i + j) % 2 == 0:
                triangles = ((a, b, c), (a, c, d))
            else:
                triangles = ((a, b, d), (b, c, d))
            for n1, n2, n3 in triangles:
                number += 1
                add("%d NODES %d %d %d MATERIAL STEEL T %g" % (number, n1, n2, n3, thickness))
    # Histories: the free edge's deflection and the bending stress of element 1
    # (at the clamp, first edge along x) at its first integration point.
    add("TRACKERS TYPE NODE")
    add("TIP NODES %s DIRECTION Z TYPE POSITION" % " ".join(str(node_id(nx, j)) for j in range(ny + 1)))
    add("TRACKERS TYPE ELEMENT")
    add("ROOT ELEMENTS 1 COMPONENT C11 TYPE STRESS")
    return "\n".join(lines) + "\n", beam


def main():
    p = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    p.add_argument("output")
    p.add_argument("--nx", type=int, default=20)
    p.add_argument("--ny", type=int, default=2)
    p.add_argument("--length", type=float, default=100.0)
    p.add_argument("--width", type=float, default=10.0)
    p.add_argument("--thickness", type=float, default=4.0)
    p.add_argument("--force", type=float, default=30.0, help="total tip force in N")
    p.add_argument("--young", type=float, default=210000.0)
    p.add_argument("--nu", type=float, default=0.3)
    p.add_argument("--density", type=float, default=7.85e-9, help="tonne/mm^3")
    p.add_argument("--ramp", type=float, default=0.006)
    p.add_argument("--end", type=float, default=0.015)
    p.add_argument("--damping", type=float, default=None,
                   help="mass-proportional damping, 1/s (default: 70%% of critical for the first mode)")
    p.add_argument("--prints", type=int, default=15)
    a = p.parse_args()
    if a.damping is None:
        # First bending mode of the clamped strip: omega = 1.875^2 sqrt(E I / (mu L^4)).
        mu = a.density * a.thickness * a.width
        inertia = a.width * a.thickness ** 3 / 12.0
        omega = 1.875104 ** 2 * math.sqrt(a.young * inertia / (mu * a.length ** 4))
        a.damping = round(2.0 * 0.7 * omega, 0)
    text, beam = build_deck(a.nx, a.ny, a.length, a.width, a.thickness, a.force, a.young, a.nu, a.density,
                            a.ramp, a.end, a.damping, a.prints)
    with open(a.output, "w") as out:
        out.write(text)
    print("%s: %d elements, beam-theory tip deflection %.5f mm" % (a.output, 2 * a.nx * a.ny, beam))


if __name__ == "__main__":
    main()

#!/usr/bin/python3
"""Wrinkling of a fabric sheet: the deck, and the wavelength measured from a run.

A sheet L x W (warp along x) is clamped at x = 0 and x = L (translations
and rotations), stretched along the warp by pulling the end x = L (amplitude
STRETCH, up to t1), then squeezed across by moving the long edges y = 0 and
y = W inward (amplitude SQUEEZE, t1 to t2; the edges are held in z), and held
with damping. The interior nodes start with random out-of-plane offsets of
+-amp so that the sheet can leave its plane.

Theory (linear buckling of a plate under tension T along x between clamped
ends and compression across): a mode w = sin(k y) f(x), f = 1 - cos(2 pi x / L),
buckles at N(k) = D k^2 + T q^2 / k^2 with q^2 = <f'^2> / <f^2> = 4 pi^2 / (3 L^2)
(the terms in D / L^2 dropped, as they are small for wavelengths well below
L); the lowest N is at
    lambda = 2 pi / k = 2 pi (3 D L^2 / (4 pi^2 T))^(1/4),
so lambda grows as D^(1/4): sixteen times the bending stiffness doubles it.
The long edges hold w = 0, so only lambda = 2 W / n fit across the sheet.

    fabric_wrinkle_deck.py deck.txt [D=0.02] [elem=FABRIC_3|MEMBRANE_3] [L=30] [W=30] [h=1] ...
    fabric_wrinkle_deck.py --measure MID.csv [W]

The MID tracker of the deck follows z along the line x = L/2; --measure
reads its last row and prints the amplitude and the wavelength from the zero
crossings.
"""

import csv
import math
import random
import sys


def deck(D=0.02, elem="FABRIC_3", L=30.0, W=30.0, h=1.0, rho=2e-10, K=10.0, pull=1.5, squeeze=0.3, t1=0.004, t2=0.008, end=0.014, damp=3000.0, seed=1, amp=0.01, compression=1.0):
    nx, ny = int(round(L/h)), int(round(W/h))
    rnd = random.Random(seed)
    out=[]; a=out.append
    a("TITLE"); a("** Fabric sheet stretched along the warp between clamps, then squeezed across: wrinkles")
    a("** %s, D = %g N mm, L = %g, W = %g, h = %g" % (elem, D, L, W, h))
    a("CONTROLS"); a("RUN FROM 0 TO %g" % end); a("STEP 0"); a("PRINT EVERY %g" % (end/7))
    a("AMPLITUDES TYPE TABULAR")
    a("STRETCH VALUES 0 1 %g 1 %g 0 1 0" % (t1, t1*1.0001))
    a("SQUEEZE VALUES 0 0 %g 0 %g 1 %g 1 %g 0 1 0" % (t1, t1*1.0001, t2, t2*1.0001))
    a("CONSTRAINTS TYPE BOUNDARY_CONDITION")
    a("HOLD VX 0 VZ 0 VRX 0 VRY 0 VRZ 0")
    a("PULL VX %g VZ 0 VRX 0 VRY 0 VRZ 0 AMPLITUDE STRETCH" % (pull/t1))
    v = squeeze/(t2-t1)
    a("SIDE0 VY %g VZ 0 AMPLITUDE SQUEEZE" % v)
    a("SIDE1 VY %g VZ 0 AMPLITUDE SQUEEZE" % -v)
    a("CORNER00 VX 0 VY %g VZ 0 VRX 0 VRY 0 VRZ 0 AMPLITUDE SQUEEZE" % v)
    a("CORNER01 VX 0 VY %g VZ 0 VRX 0 VRY 0 VRZ 0 AMPLITUDE SQUEEZE" % -v)
    a("CORNER10 VY %g VZ 0 VRX 0 VRY 0 VRZ 0 AMPLITUDE SQUEEZE" % v)
    a("CORNER11 VY %g VZ 0 VRX 0 VRY 0 VRZ 0 AMPLITUDE SQUEEZE" % -v)
    a("MATERIALS TYPE HYPERTEXTILE")
    a("CLOTH RHO %g KELONGWARP %g KELONGWEFT %g KSHEAR %g WARPORI 1 0 0 WEFTORI 0 1 0 BENDING %g %g COMPRESSION %g DAMPING %g" % (rho, K, K, K/100, D, D, compression, damp))
    a("NODES")
    nid = lambda i, j: i*(ny+1)+j+1
    for i in range(nx+1):
        for j in range(ny+1):
            c = ""
            ends = i == 0 or i == nx; sides = j == 0 or j == ny
            if ends and sides: c = "CORNER%d%d" % (i == nx, j == ny)
            elif i == 0: c = "HOLD"
            elif i == nx: c = "PULL"
            elif sides: c = "SIDE%d" % (j == ny)
            z = 0.0 if (ends or sides) else amp*(2*rnd.random()-1)
            a("%d X %.10g Y %.10g Z %.6g%s" % (nid(i,j), L*i/nx, W*j/ny, z, " CONSTRAINT "+c if c else ""))
    a("ELEMENTS TYPE %s" % elem)
    e = 1
    for i in range(nx):
        for j in range(ny):
            n1,n2,n3,n4 = nid(i,j),nid(i+1,j),nid(i+1,j+1),nid(i,j+1)
            tris = ((n1,n2,n3),(n1,n3,n4)) if (i+j)%2 == 0 else ((n1,n2,n4),(n2,n3,n4))
            for t in tris:
                a("%d NODES %d %d %d MATERIAL CLOTH T 1" % ((e,)+t)); e += 1
    a("TRACKERS TYPE NODE")
    a("MID NODES %s DIRECTION Z TYPE POSITION" % " ".join(str(nid(nx//2, j)) for j in range(ny+1)))
    return "\n".join(out)+"\n"

def measure(path, W=30.0):
    rows = list(csv.reader(open(path)))
    z = [float(v) for v in rows[-1][1:-1]]
    n = len(z) - 1
    ys = [W * j / n for j in range(n + 1)]
    cross = []
    for j in range(n):
        if (z[j] == 0 or z[j] * z[j + 1] < 0) and z[j + 1] != z[j]:
            cross.append(ys[j] + (ys[j + 1] - ys[j]) * z[j] / (z[j] - z[j + 1]))
    cross = [c for c in cross if 0.5 < c < W - 0.5]
    wavelength = 2 * (cross[-1] - cross[0]) / (len(cross) - 1) if len(cross) > 1 else float("nan")
    return float(rows[-1][0]), max(abs(v) for v in z), wavelength


def predicted(D, T, L):
    return 2 * math.pi * (3 * D * L * L / (4 * math.pi ** 2 * T)) ** 0.25


if __name__ == "__main__":
    if len(sys.argv) > 2 and sys.argv[1] == "--measure":
        t, amplitude, wavelength = measure(sys.argv[2], float(sys.argv[3]) if len(sys.argv) > 3 else 30.0)
        print("time %g: amplitude %.4f, wavelength %.2f" % (t, amplitude, wavelength))
        sys.exit(0)
    if len(sys.argv) < 2:
        print(__doc__)
        sys.exit(1)
    kw = {}
    for s in sys.argv[2:]:
        k, v = s.split("=")
        kw[k] = v if k == "elem" else float(v)
    with open(sys.argv[1], "w") as f:
        f.write(deck(**kw))

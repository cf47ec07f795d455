#!/usr/bin/python3
"""Fit the coefficients of the HYPERTEXTILE law to measured fabric curves.

Shear, from a picture-frame test: a CSV of the shear angle gamma (degrees)
against the normalised shear force Fn = F / (2 L cos phi) in N/mm, F the
force along the frame's diagonal, L the frame's side and phi = 45 deg - gamma/2
half the frame's angle. The law's shear energy per unit area is
W = sum_k Kshear_k sin(gamma)^(2k) (cos theta = sin gamma for yarns that close
from 90 deg to 90 deg - gamma), and the work of the frame force gives
    Fn = W'(gamma) / cos(gamma) = T sum_k 2k Kshear_k sin(gamma)^(2k-1)
for a fabric of thickness T in the deck (T 1: K in N/mm).

Tension, from a strip pulled along a yarn: a CSV of the engineering strain
(lambda - 1) against the force per unit width N in N/mm; with e = ln lambda
    N = T / lambda sum_k 2k Kelong_k e^(2k-1).

Both are linear in the coefficients: they are fitted by least squares
(numpy). The tool prints the material line for the deck and, with --png,
plots data against fit (matplotlib, drawn off screen).

    /usr/bin/python3 tools/fit_fabric.py --frame frame.csv --warp warp.csv \\
        [--weft weft.csv] [--shear-terms 3] [--tension-terms 2] [--thickness 1] \\
        [--name FABRIC] [--rho 1e-7] [--png fit.png]

Without --weft the weft takes the warp's coefficients (a balanced fabric).

A CSV has two numeric columns; a first line that is not numeric is a header.
Drapex runs give the curves with

    fit_fabric.py --frame-from-run RUN_DIR --side 100 -o frame.csv
    fit_fabric.py --tension-from-run RUN_DIR --length 100 --width 20 --speed 5 -o warp.csv

from the trackers PULLX.csv, PULLY.csv (force at the pulled corner) and
SHEAR.csv (shear angle of the central elements) of a picture-frame run, and
PULL.csv (force on the pulled edge) of a tensile run (see
examples/fabric_calibration).
"""

import argparse
import csv
import math
import os
import sys


class FitError(Exception):
    pass


def read_curve(path):
    """Two numeric columns; a non-numeric first row is a header."""
    xs, ys = [], []
    try:
        with open(path, newline="") as f:
            rows = list(csv.reader(f))
    except OSError as e:
        raise FitError("cannot read %s: %s" % (path, e.strerror))
    for number, row in enumerate(rows, 1):
        cells = [c.strip() for c in row if c.strip()]
        if not cells:
            continue
        try:
            x, y = float(cells[0]), float(cells[1])
        except (ValueError, IndexError):
            if number == 1:
                continue
            raise FitError("%s, line %d: expected two numbers, found %r" % (path, number, ",".join(row)))
        if not (math.isfinite(x) and math.isfinite(y)):
            raise FitError("%s, line %d: a value is not finite" % (path, number))
        xs.append(x)
        ys.append(y)
    if len(xs) < 2:
        raise FitError("%s: fewer than two data points" % path)
    return xs, ys


def shear_basis(gamma_degrees, terms, thickness):
    s = [math.sin(math.radians(g)) for g in gamma_degrees]
    return [[thickness * 2 * k * v ** (2 * k - 1) for k in range(1, terms + 1)] for v in s]


def tension_basis(strains, terms, thickness):
    rows = []
    for strain in strains:
        stretch = 1.0 + strain
        if stretch <= 0.0:
            raise FitError("a strain of %g leaves no yarn" % strain)
        e = math.log(stretch)
        rows.append([thickness / stretch * 2 * k * e ** (2 * k - 1) for k in range(1, terms + 1)])
    return rows


def least_squares(basis, values, terms, what):
    import numpy as np

    a = np.array(basis)
    if len(values) < terms:
        raise FitError("%s: %d points cannot fix %d coefficients" % (what, len(values), terms))
    k, _, rank, _ = np.linalg.lstsq(a, np.array(values), rcond=None)
    if rank < terms:
        raise FitError("%s: the data do not fix %d coefficients (too few distinct points)" % (what, terms))
    return [float(v) for v in k]


def fit_shear(gamma, force, terms=3, thickness=1.0):
    return least_squares(shear_basis(gamma, terms, thickness), force, terms, "shear")


def fit_tension(strain, force, terms=2, thickness=1.0):
    return least_squares(tension_basis(strain, terms, thickness), force, terms, "tension")


def evaluate(basis, k):
    return [sum(b * c for b, c in zip(row, k)) for row in basis]


def deck_line(name, rho, warp, weft, shear):
    numbers = lambda ks: " ".join("%.6g" % v for v in ks)
    return "%s RHO %s KELONGWARP %s KELONGWEFT %s KSHEAR %s WARPORI 1 0 0 WEFTORI 0 1 0" % (
        name, rho, numbers(warp), numbers(weft), numbers(shear))


def plot(path, panels):
    import matplotlib

    matplotlib.use("Agg")
    import matplotlib.pyplot as plt

    fig, axes = plt.subplots(1, len(panels), figsize=(5.5 * len(panels), 4.2), squeeze=False)
    for ax, (title, xlabel, ylabel, x, y, fx, fy) in zip(axes[0], panels):
        ax.plot(x, y, "o", ms=3, label="data")
        ax.plot(fx, fy, "-", label="fit")
        ax.set_title(title)
        ax.set_xlabel(xlabel)
        ax.set_ylabel(ylabel)
        ax.grid(True, alpha=0.3)
        ax.legend()
    fig.tight_layout()
    fig.savefig(path, dpi=110)


def dense(xs, n=200):
    lo, hi = min(xs), max(xs)
    return [lo + (hi - lo) * i / (n - 1) for i in range(n)]


def tracker(run, name, column="Total"):
    path = os.path.join(run, name)
    try:
        with open(path, newline="") as f:
            rows = [[c.strip() for c in r] for r in csv.reader(f)]
    except OSError as e:
        raise FitError("cannot read %s: %s" % (path, e.strerror))
    header = rows[0]
    if column not in header:
        raise FitError("%s has no column %r" % (path, column))
    index = header.index(column)
    return [float(r[0]) for r in rows[1:] if r], [float(r[index]) for r in rows[1:] if r]


def frame_from_run(run, side):
    """Shear angle (mean of the SHEAR elements, degrees) and Fn from a picture-frame run."""
    t, fx = tracker(run, "PULLX.csv")
    _, fy = tracker(run, "PULLY.csv")
    _, total = tracker(run, "SHEAR.csv")
    with open(os.path.join(run, "SHEAR.csv")) as f:
        count = len([c for c in f.readline().split(",") if c.strip()]) - 2  # less Time and Total
    if count < 1:
        raise FitError("SHEAR.csv tracks no element")
    rows = []
    for time, x, y, angle in zip(t, fx, fy, total):
        # The law writes degrees converted with 3.1416 for pi.
        gamma = angle / count * 3.1416 / math.pi
        phi = math.radians(45.0 - gamma / 2.0)
        diagonal = abs(x + y) / math.sqrt(2.0)
        if time > 0.0 and gamma > 0.0:
            rows.append((gamma, diagonal / (2.0 * side * math.cos(phi))))
    return rows


def tension_from_run(run, length, width, speed):
    """Engineering strain (speed x time / length) and force per unit width from PULL.csv."""
    t, force = tracker(run, "PULL.csv")
    return [(speed * time / length, abs(f) / width) for time, f in zip(t, force) if time > 0.0]


def write_rows(path, header, rows):
    with open(path, "w", newline="") as f:
        f.write(header + "\n")
        for a, b in rows:
            f.write("%.8g,%.8g\n" % (a, b))


def main(argv=None):
    p = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    p.add_argument("--frame", help="picture-frame curve: shear angle (deg), normalised force (N/mm)")
    p.add_argument("--warp", help="tensile curve along the warp: strain, force per width (N/mm)")
    p.add_argument("--weft", help="tensile curve along the weft (default: the warp's coefficients)")
    p.add_argument("--shear-terms", type=int, default=3)
    p.add_argument("--tension-terms", type=int, default=2)
    p.add_argument("--thickness", type=float, default=1.0, help="T of the elements in the deck")
    p.add_argument("--name", default="FABRIC")
    p.add_argument("--rho", default="<density>")
    p.add_argument("--png", help="plot of data against fit")
    p.add_argument("--frame-from-run", metavar="RUN_DIR")
    p.add_argument("--side", type=float, help="frame side L (mm) for --frame-from-run")
    p.add_argument("--tension-from-run", metavar="RUN_DIR")
    p.add_argument("--length", type=float)
    p.add_argument("--width", type=float)
    p.add_argument("--speed", type=float)
    p.add_argument("-o", "--output", help="CSV written by --frame-from-run or --tension-from-run")
    a = p.parse_args(argv)
    try:
        if a.frame_from_run or a.tension_from_run:
            if not a.output:
                raise FitError("-o is needed with --frame-from-run and --tension-from-run")
            if a.frame_from_run:
                if not a.side:
                    raise FitError("--frame-from-run needs --side")
                write_rows(a.output, "shear_angle_deg,normalised_force_N_per_mm", frame_from_run(a.frame_from_run, a.side))
            else:
                if not (a.length and a.width and a.speed):
                    raise FitError("--tension-from-run needs --length, --width and --speed")
                write_rows(a.output, "strain,force_per_width_N_per_mm",
                           tension_from_run(a.tension_from_run, a.length, a.width, a.speed))
            return 0
        if not (a.frame and a.warp):
            raise FitError("give both --frame and --warp")
        if a.shear_terms < 1 or a.tension_terms < 1:
            raise FitError("the number of terms must be at least 1")
        g, fn = read_curve(a.frame)
        shear = fit_shear(g, fn, a.shear_terms, a.thickness)
        ew, nw = read_curve(a.warp)
        warp = fit_tension(ew, nw, a.tension_terms, a.thickness)
        weft, curves = warp, [("warp", ew, nw, warp)]
        if a.weft:
            ef, nf = read_curve(a.weft)
            weft = fit_tension(ef, nf, a.tension_terms, a.thickness)
            curves.append(("weft", ef, nf, weft))
        print(deck_line(a.name, a.rho, warp, weft, shear))
        if a.png:
            gd = dense(g)
            panels = [("picture frame: KSHEAR " + " ".join("%.4g" % v for v in shear), "shear angle (deg)",
                       "normalised shear force (N/mm)", g, fn, gd, evaluate(shear_basis(gd, len(shear), a.thickness), shear))]
            for label, e, n, k in curves:
                ed = dense(e)
                panels.append(("tension, %s: K %s" % (label, " ".join("%.4g" % v for v in k)), "strain",
                               "force per unit width (N/mm)", e, n, ed, evaluate(tension_basis(ed, len(k), a.thickness), k)))
            plot(a.png, panels)
    except FitError as e:
        print("fit_fabric.py: " + str(e), file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())

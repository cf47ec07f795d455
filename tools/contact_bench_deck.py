#!/usr/bin/env python3
"""Writes a deck of a flat sheet of nodes lying on a flat tool of contact
triangles, for timing the contact search.

The tool is a K x K grid of nodes (spacing 1) split into 2 (K-1)^2 SHELL
contact triangles; the sheet has about as many nodes as the tool has
triangles, on a finer grid shifted off the tool's edges, 0.1 above the tool
(inside half the contact thickness, so every sheet node is in contact).
Every node is held by a zero-velocity condition, so the model stays as it
is and each step costs the same.

    contact_bench_deck.py K out.txt [steps]
"""
import math
import sys


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    k = int(sys.argv[1])
    out = sys.argv[2]
    steps = int(sys.argv[3]) if len(sys.argv) > 3 else 10
    side = k - 1
    s = max(2, round(math.sqrt(2.0) * side))
    h = side / s
    lines = [
        "TITLE",
        "** sheet of %d nodes on a tool of %d contact triangles" % (s * s, 2 * side * side),
        "CONTROLS",
        "RUN FROM 0.0 TO %g" % ((steps - 0.5) * 1e-3),
        "STEP 1.0E-3",
        "PRINT EVERY 1.0E9",
        "CONSTRAINTS TYPE BOUNDARY_CONDITION",
        "FIX VX 0 VY 0 VZ 0",
        "NODES",
    ]
    number = 0
    for j in range(k):
        for i in range(k):
            number += 1
            lines.append("%d X %.6f Y %.6f Z 0.0 CONSTRAINT FIX" % (number, i, j))
    for j in range(s):
        for i in range(s):
            number += 1
            lines.append("%d X %.6f Y %.6f Z 0.1 CONSTRAINT FIX" % (number, (i + 0.37) * h, (j + 0.41) * h))
    lines.append("ELEMENTS TYPE CONTACT_TRIANGLE")
    element = 0
    for j in range(side):
        for i in range(side):
            a = j * k + i + 1
            b, c, d = a + 1, a + k + 1, a + k
            for tri in ((a, b, c), (a, c, d)):
                element += 1
                lines.append("%d NODES %d %d %d T 0.5 FACTOR 100" % ((element,) + tri))
    with open(out, "w") as f:
        f.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()

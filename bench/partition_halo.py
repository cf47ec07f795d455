#!/usr/bin/env python3
"""How much would cross the network if a deck ran on K machines?

Partitions the elements of a deck (or of a benchmark sheet built on the spot)
with METIS into K parts, K = 2, 4, ..., 256, and prints for each K the halo
(nodes that elements of more than one part touch), what crosses per
increment, the time that takes on a given network and the time the part's
own elements take, and the largest K at which the exchange stays under a
tenth of the element time.

    bench/partition_halo.py --case textile --elements 200000
    bench/partition_halo.py --deck examples/hemisphere/hemisphere.txt --parts 2 4 8
    bench/partition_halo.py --case shell --elements 1000000 --cost 0.43

Exchange model (docs/design-distributed.md explains it):

  - Each part owns the elements METIS gives it. A node belongs to the lowest
    numbered part among those whose elements touch it; the other parts that
    touch it hold a ghost copy.
  - Phase 1: every ghost copy sends its partial force (6 doubles, 48 bytes)
    to the owner, which sums them in a fixed order and updates the node.
  - Phase 2: the owner sends the new position (6 doubles, 48 bytes) back to
    every ghost copy.
  - One message per neighbour part and phase; plus one allreduce of the
    stable step (ceil(log2 K) message rounds, latency only).
  - Time of a part = (bytes it sends + bytes it receives) / bandwidth
    + messages * latency: send and receive share the link and the messages
    to different neighbours do not overlap, so this is an upper bound.
  - The column "redundant" gives the ratio of the alternative in which every
    part sends its partial force of a shared node to every other part
    touching it and all of them update the node alike (one phase, no
    positions sent back).
  - Element time of a part = its elements * the per-element cost of one
    core (bench/README.md, nodes included). The ratio is the largest exchange
    time over the largest element time: the slowest part sets the pace.

Contact elements (CONTACT_TRIANGLE, CONTACT_LINE, CONTACT_FACET) are tools
that every part would hold whole: they are left out of the partition.

With --reach R the table adds, for the contact search of a sheet that may
touch itself, the nodes of other parts within R of a node the part touches
(initial positions) and the ratio when their positions come in and the
contact forces on them go back with the halo, in the same messages.
--metis passes options to gpmetis (-minconn, -objtype=vol, -ufactor=N).

With --case the connectivity is built directly by the generators' own mesh
function (tools/gendeck.py `rectangle`, the sheet of the benchmark decks of
bench/run_benchmarks.py: 100 x 100, d x d cells, two triangles each, d
chosen for the element count; shells with alternating diagonals as
tools/cantilever_deck.py cuts them; rods on the grid lines), which is the
deck's mesh without writing and reading a deck of 10^6 lines.

Needs METIS's command-line programs (Debian package `metis`: m2gmetis and
gpmetis); without them it says so and stops.
"""

import argparse
import math
import os
import shutil
import subprocess
import sys
import tempfile

import numpy as np

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tools"))

FORCE_BYTES = 6 * 8  # six force and moment components per node
POSITION_BYTES = 6 * 8  # three translations and three rotations per node
BLOCKS = {"TITLE", "CONTROLS", "ELEMENTS", "NODES", "LOADS", "CONSTRAINTS", "MATERIALS", "TRACKERS", "AMPLITUDES",
          "CONTACT_SURFACES", "RIGID_BODIES"}
TOOL_TYPES = {"CONTACT_TRIANGLE", "CONTACT_LINE", "CONTACT_FACET"}
# Microseconds per element and increment on one core, bench/README.md: the
# 2x10^5-element column (the lower shell figure, 0.43 of 0.43-0.57, is the
# harder case for the ratio).
COSTS = {"textile": 0.21, "shell": 0.43, "rod": 0.13}


def metis_missing():
    return [p for p in ("m2gmetis", "gpmetis") if shutil.which(p) is None]


def read_deck(path):
    """Element connectivity of a deck as a list of 0-based node-index tuples
    (in deck order, tools left out) and the nodes' initial positions. One
    pass, no search: node numbers go through a dictionary."""
    index, points, elements, block, kind = {}, [], [], "", ""
    with open(path) as deck:
        for line in deck:
            words = line.split()
            if not words or words[0].startswith("**"):
                continue
            if words[0] in BLOCKS:
                block, kind = words[0], (words[2] if len(words) > 2 else "")
                continue
            if block == "NODES":
                if index.setdefault(int(words[0]), len(index)) == len(points):
                    x = dict(zip(words[1::2], words[2::2]))
                    points.append(tuple(float(x.get(c, 0.0)) for c in "XYZ"))
            elif block == "ELEMENTS" and kind not in TOOL_TYPES and "NODES" in words:
                ids = []
                for word in words[words.index("NODES") + 1:]:
                    if not word.isdigit():
                        break
                    ids.append(int(word))
                elements.append(ids)
    return [tuple(index[n] for n in ids) for ids in elements], np.array(points).reshape(-1, 3)


def benchmark_mesh(case, elements):
    """Connectivity of the benchmark sheet nearest to the element count."""
    import gendeck
    if case == "rod":
        # A net of c x c cells has 2 c (c + 1) rods.
        div = max(1, round((-1 + math.sqrt(1 + 2 * elements)) / 2))
        mesh = gendeck.rectangle(100.0, 100.0, div, div)
        return mesh.lines, np.array(mesh.points), div
    div = max(1, round(math.sqrt(elements / 2.0)))
    mesh = gendeck.rectangle(100.0, 100.0, div, div, pattern="alternate" if case == "shell" else "right")
    return mesh.triangles, np.array(mesh.points), div


def metis_parts(elements, counts, workdir, options=()):
    """{K: part of each element} from gpmetis on the dual graph of the mesh
    (elements joined when they share an edge; rods, which share only nodes,
    when they share a node)."""
    mesh = os.path.join(workdir, "mesh")
    with open(mesh, "w") as out:
        out.write("%d\n" % len(elements))
        out.write("\n".join(" ".join(str(n + 1) for n in e) for e in elements))
        out.write("\n")
    common = 1 if any(len(e) < 3 for e in elements) else 2
    graph = os.path.join(workdir, "graph")
    subprocess.run(["m2gmetis", "-gtype=dual", "-ncommon=%d" % common, mesh, graph], check=True,
                   capture_output=True)
    parts = {}
    for k in counts:
        if k > len(elements):
            continue
        subprocess.run(["gpmetis", *options, graph, str(k)], check=True, capture_output=True)
        parts[k] = np.loadtxt("%s.part.%d" % (graph, k), dtype=np.int64, ndmin=1)
    return parts


def halo_stats(elements, part, k, near=None):
    """What crosses per increment for the parts of one partition; arrays
    indexed by part. `near`: pairs of nodes (i, j) within the contact reach
    of each other, for the nodes each part's contact search must also see."""
    sizes = np.array([len(e) for e in elements])
    flat = np.fromiter((n for e in elements for n in e), dtype=np.int64, count=int(sizes.sum()))
    # (node, part) pairs, each once, sorted by node then part.
    pairs = np.unique(flat * k + np.repeat(part, sizes))
    node, owner_part = pairs // k, pairs % k
    touching = np.bincount(node)[node]  # parts touching the pair's node
    shared = touching > 1
    first = np.ones(len(pairs), dtype=bool)
    first[1:] = node[1:] != node[:-1]
    owner = owner_part[first][np.cumsum(first) - 1]  # lowest part touching the node
    ghost = owner_part != owner

    halo = np.bincount(owner_part[shared], minlength=k)
    ghosts = np.bincount(owner_part[ghost], minlength=k)
    served = np.bincount(owner[ghost], minlength=k)
    # Owner scheme: a ghost copy sends a force and receives a position, its
    # owner receives the force and sends the position.
    owner_bytes = (FORCE_BYTES + POSITION_BYTES) * (ghosts + served)
    links = np.unique(np.minimum(owner[ghost], owner_part[ghost]) * k + np.maximum(owner[ghost], owner_part[ghost]))
    owner_neighbours = np.bincount(np.concatenate([links // k, links % k]), minlength=k)

    # Redundant update: every part touching a shared node of t parts sends
    # its force to the t - 1 others and receives theirs.
    redundant_bytes = 2 * FORCE_BYTES * np.bincount(owner_part[shared], weights=touching[shared] - 1, minlength=k)
    every = []
    for t in np.unique(touching[shared & first]):
        rows = owner_part[shared & (touching == t)].reshape(-1, t)
        for a in range(t):
            for b in range(a + 1, t):
                every.append(rows[:, a] * k + rows[:, b])
    links = np.unique(np.concatenate(every)) if every else np.zeros(0, dtype=np.int64)
    all_neighbours = np.bincount(np.concatenate([links // k, links % k]), minlength=k)
    reach = np.zeros(k, dtype=np.int64)
    if near is not None and len(near):
        # Nodes of another part within reach of a node the part touches and
        # not touched by it: their positions come in, the contact forces
        # the part puts on them go back to their owners.
        count = int(max(near.max(), node.max())) + 1
        touched = np.bincount(node, minlength=count)
        first_of = np.cumsum(np.concatenate([[0], touched]))
        node_owner = np.full(count, -1)
        node_owner[node[first]] = owner_part[first]
        both = np.concatenate([near, near[:, ::-1]])
        # A pair inside one part's own nodes brings nothing new; nodes of no
        # element (tools) are on every part.
        both = both[((touched[both[:, 0]] > 1) | (node_owner[both[:, 0]] != node_owner[both[:, 1]]))
                    & (touched[both[:, 1]] > 0)]
        # Every part touching the near node i looks at j.
        reps = touched[both[:, 0]]
        starts = np.repeat(first_of[both[:, 0]], reps)
        offsets = np.arange(len(starts)) - np.repeat(np.cumsum(reps) - reps, reps)
        seer = owner_part[starts + offsets]
        seen = np.unique(seer * count + np.repeat(both[:, 1], reps))
        seen_part, seen_node = seen // count, seen % count
        already = np.isin(seen_node * k + seen_part, pairs, assume_unique=False)
        reach = np.bincount(seen_part[~already], minlength=k)
    return {
        "reach": reach,
        "elements": np.bincount(part, minlength=k),
        "halo": halo,
        "owner_bytes": owner_bytes,
        "owner_neighbours": owner_neighbours,
        "redundant_bytes": redundant_bytes,
        "all_neighbours": all_neighbours,
    }


def exchange_us(data_bytes, messages, k, bandwidth, latency):
    reduce_rounds = math.ceil(math.log2(k)) if k > 1 else 0
    return data_bytes / bandwidth * 1e6 + (messages + reduce_rounds) * latency * 1e6


def table(elements, parts, cost, bandwidth, latency, near=None, out=sys.stdout):
    """Prints the table; returns the largest K under a tenth and the rows."""
    extra = " contact ghosts max / mean | ratio with contact |" if near is not None else ""
    out.write("| parts | elements/part | halo nodes max / mean | neighbours max | KB/part max | exchange us | "
              "element us | ratio | redundant |%s\n|---|---|---|---|---|---|---|---|---|%s\n" % (
                  extra, "---|---|" if extra else ""))
    best, rows = None, []
    for k, part in sorted(parts.items()):
        s = halo_stats(elements, part, k, near)
        element_us = s["elements"].max() * cost
        owner_us = exchange_us(s["owner_bytes"], 2 * s["owner_neighbours"], k, bandwidth, latency).max()
        redundant_us = exchange_us(s["redundant_bytes"], s["all_neighbours"], k, bandwidth, latency).max()
        ratio = owner_us / element_us
        rows.append(dict(parts=k, halo_max=int(s["halo"].max()), halo_mean=float(s["halo"].mean()),
                         neighbours=int(s["owner_neighbours"].max()), bytes_max=int(s["owner_bytes"].max()),
                         exchange_us=owner_us, element_us=element_us, ratio=ratio,
                         redundant_ratio=redundant_us / element_us))
        line = "| %d | %d | %d / %.0f | %d | %.1f | %.1f | %.1f | %.3f | %.3f |" % (
            k, s["elements"].max(), s["halo"].max(), s["halo"].mean(), s["owner_neighbours"].max(),
            s["owner_bytes"].max() / 1000.0, owner_us, element_us, ratio, redundant_us / element_us)
        if near is not None:
            # Positions in and contact forces out, in the same two messages
            # per neighbour as the halo (a part within reach is nearly
            # always a neighbour already).
            with_contact = exchange_us(s["owner_bytes"] + (FORCE_BYTES + POSITION_BYTES) * s["reach"],
                                       2 * s["owner_neighbours"], k, bandwidth, latency).max()
            rows[-1].update(reach_max=int(s["reach"].max()), contact_ratio=with_contact / element_us)
            line += " %d / %.0f | %.3f |" % (s["reach"].max(), s["reach"].mean(), with_contact / element_us)
        out.write(line + "\n")
        if ratio < 0.1:
            best = k
    return best, rows


def main(argv=None):
    p = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    source = p.add_mutually_exclusive_group(required=True)
    source.add_argument("--deck", help="deck to partition")
    source.add_argument("--case", choices=sorted(COSTS), help="benchmark sheet built on the spot")
    p.add_argument("--elements", type=int, default=200000, help="element count of --case (nearest square sheet)")
    p.add_argument("--parts", type=int, nargs="+", default=[2 ** i for i in range(1, 9)])
    p.add_argument("--cost", type=float, help="us per element and increment (default: the case's, else textile's)")
    p.add_argument("--bandwidth", type=float, default=10.0, help="GB/s (default 10)")
    p.add_argument("--latency", type=float, default=2.0, help="us per message (default 2)")
    p.add_argument("--reach", type=float,
                   help="contact reach (mm): also count the nodes of other parts within it of a part's nodes")
    p.add_argument("--metis", nargs="+", default=[], metavar="OPTION",
                   help="options for gpmetis, e.g. -minconn or -objtype=vol (write them as --metis=-minconn)")
    args = p.parse_args(argv)

    missing = metis_missing()
    if missing:
        print("METIS is not installed (%s not found): install the Debian package metis "
              "(apt-get install metis, or bash tools/build.sh) and run again." % ", ".join(missing))
        return 0
    if args.deck:
        elements, points = read_deck(args.deck)
        what = "%s: %d elements, %d nodes" % (args.deck, len(elements), len(points))
    else:
        elements, points, div = benchmark_mesh(args.case, args.elements)
        what = "%s sheet, %d x %d cells: %d elements, %d nodes" % (args.case, div, div, len(elements), len(points))
    if not elements:
        print("No elements to partition in %s (contact elements are left out)." % args.deck)
        return 0
    cost = args.cost if args.cost is not None else COSTS.get(args.case or "textile")
    print("%s; %.3g us per element and increment; network %g GB/s, %g us per message" % (
        what, cost, args.bandwidth, args.latency))
    near = None
    if args.reach is not None:
        from scipy.spatial import cKDTree
        near = cKDTree(points).query_pairs(args.reach, output_type="ndarray")
        print("Contact reach %g: nodes of other parts within it of a part's nodes, initial positions" % args.reach)
    with tempfile.TemporaryDirectory() as work:
        parts = metis_parts(elements, args.parts, work, args.metis)
    best, _ = table(elements, parts, cost, args.bandwidth * 1e9, args.latency * 1e-6, near)
    if best is None:
        print("Exchange is above a tenth of the element time at every part count tried.")
    else:
        print("Largest part count with exchange under a tenth of the element time: %d" % best)
    return 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Whole-model benchmarks: generate decks, time the explicit loop, print a table.

    python3 bench/run_benchmarks.py            # quick set (about 10^4 elements)
    python3 bench/run_benchmarks.py --full     # 10^4 to 2x10^5 elements
    python3 bench/run_benchmarks.py --only rod # cases whose name contains "rod"
    python3 bench/run_benchmarks.py --smoke    # tiny cases, one short run each
    python3 bench/run_benchmarks.py --against OLD/drapex_bench
                                               # two builds side by side
    python3 bench/run_benchmarks.py --threads 1,2
                                               # the same build on 1 and 2 threads
    python3 bench/run_benchmarks.py --interleave 10
                                               # 1 and all threads in turn, in one run

With --against, every case runs the same increments with both builds in
turn (A B A B ...), so that the drift of a shared machine hits both alike,
and the table gives both figures and their ratio.

With --threads, every case runs once per thread count (OMP_NUM_THREADS), in
turn, and the runs are ranked by their wall-clock time per increment (the
processor time of several threads adds up); the table adds the speed-up of
each count over the first.

With --interleave R, every case runs once and then R rounds of the same
increments on one thread and on all threads in turn, within one process
(drapex_bench --alternate R); the speed-up line compares the fastest round
of each. On a shared machine this is the steadier figure: the two counts
are timed seconds apart, not minutes.

The smoke mode takes a few seconds and is run by the test command: it checks
that every case still builds, runs and reports its figures. It never fails
on a time.

Each case is a deck made by tools/gendeck.py (shells by
tools/cantilever_deck.py), run by build/bench/drapex_bench,
which builds the model as the program does and then times increments of the
loop with no output written. Columns:

  us/el-step   processor time of one increment divided by the number of
               elements (nodes included, and with contact the rebinning
               and the contact search); the fastest of --repeat runs
               of the same increments
  us/step      processor time of one increment
  wall us/step wall-clock time of one increment
  allocs/inc   heap allocations per increment (counting operator new)
  KB/el peak   most heap held at once, from reading the deck to the end of
               the timed increments, per element
  KB/el model  heap held by the assembled model, per element

Cases whose deck generator is missing are listed as skipped.
"""

import argparse
import os
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
GENDECK = os.path.join(ROOT, "tools", "gendeck.py")
CANTILEVER = os.path.join(ROOT, "tools", "cantilever_deck.py")


# Each command writes the deck to the path that replaces "{deck}".


def rod_case(div):
    # A square net of rods along the grid lines of a div x div sheet.
    return sheet_case("rod", "ROD_2 / ELASTIC", div, ["--element", "ROD_2", "--material", "elastic"])


def sheet_case(name, label, div, extra):
    # A square sheet, left edge clamped and right edge pulled in its plane
    # and out of it, so that every element strains and every node moves.
    return (name, label, [sys.executable, GENDECK, "--mesh", "rect", "--size", "100", "100", "--div", str(div),
                          str(div), "--clamp", "left", "--pull", "right", "100", "0", "-50", "--end", "1.0",
                          "-o", "{deck}"] + extra)


def shell_case(div):
    # A square plate of shells clamped along one edge and loaded at the other
    # (the cantilever generator with as many cells across as along).
    return ("shell-3ip", "S3L_C0 NIP 3 / ELASTIC",
            [sys.executable, CANTILEVER, "--nx", str(div), "--ny", str(div), "--length", "100", "--width", "100",
             "{deck}"])


def contact_case(div):
    # A textile sheet lying on a fixed tool of the same mesh density, pressed
    # onto it by gravity; both are meshed with div x div cells.
    return ("contact", "MEMBRANE_3 / HYPERTEXTILE on CONTACT_TRIANGLE",
            [sys.executable, GENDECK, "--mesh", "rect", "--size", "100", "100", "--div", str(div), str(div),
             "--element", "MEMBRANE_3", "--material", "textile", "--thickness", "0.5", "--gravity", "-9810",
             "--tool", "rect", "--tool-div", str(div), str(div), "--tool-offset", "0.05", "--tool-thickness",
             "0.5", "--tool-type", "SOLID", "--end", "1.0", "-o", "{deck}"])


def cases(full, smoke=False):
    # Sizes: a net of c x c cells has 2c(c+1) rods; a sheet of d x d cells
    # has 2d^2 triangles.
    rod_div = [70, 158, 316] if full else [70]
    sheet_div = [71, 158, 316] if full else [71]
    if smoke:
        rod_div, sheet_div = [10], [10]
    out = []
    for c in rod_div:
        out.append(rod_case(c))
    for d in sheet_div:
        out.append(sheet_case("membrane-textile", "MEMBRANE_3 / HYPERTEXTILE", d,
                              ["--element", "MEMBRANE_3", "--material", "textile"]))
    for d in sheet_div:
        out.append(sheet_case("membrane-ogden", "MEMBRANE_3 / HYPERELASTIC (Ogden)", d,
                              ["--element", "MEMBRANE_3", "--material", "ogden"]))
    for d in sheet_div:
        out.append(shell_case(d))
    # N and 4N nodes in the sheet (and in the tool). Both sizes of each pair
    # are beyond the processor's caches, so that their ratio shows how the
    # work grows rather than where the model stops fitting in cache.
    contact_div = [71, 142] if not full else [112, 224]
    if smoke:
        contact_div = [10]
    for d in contact_div:
        out.append(contact_case(d))
    return out


def make_deck(command, workdir):
    deck = os.path.join(workdir, "case.txt")
    generator = command[1]
    if not os.path.exists(generator):
        return None, "skipped: %s not found" % os.path.relpath(generator, ROOT)
    made = subprocess.run([deck if word == "{deck}" else word for word in command], capture_output=True,
                          text=True)
    if made.returncode != 0:
        return None, "deck generation failed: " + made.stderr.strip().splitlines()[-1]
    return deck, ""


def run_case(deck, benches, workdir, seconds, repeat, extra=()):
    """The fastest of `repeat` runs of each build, the builds taking turns.

    benches is a list of (drapex_bench, thread count or None)."""
    # Other work on the machine only ever adds time: of several runs of the
    # same increments, the fastest is the best estimate of the cost.
    best = [None] * len(benches)
    increments = None
    extra = list(extra)
    for _ in range(repeat):
        for k, (bench, count) in enumerate(benches):
            limit = ["--increments", increments] if increments else ["--seconds", str(seconds)]
            env = dict(os.environ)
            if count:
                env["OMP_NUM_THREADS"] = str(count)
            ran = subprocess.run([bench, deck] + limit + extra, capture_output=True, text=True, cwd=workdir,
                                 env=env)
            result = None
            for line in ran.stdout.splitlines():
                if line.startswith("RESULT "):
                    result = dict(item.split("=", 1) for item in line.split()[1:])
                if line.startswith("ALTERNATE ") and result is not None:
                    result.update(("alternate_" + k, v) for k, v in
                                  (item.split("=", 1) for item in line.split()[1:]))
            if result is None:
                return None, "failed: " + (ran.stderr.strip() or ran.stdout.strip()[-300:])
            increments = result["increments"]
            key = "wall_us_per_increment" if count else "us_per_element_step"
            if best[k] is None or float(result[key]) < float(best[k][key]):
                best[k] = result
    return best, ""


def main(argv=None):
    p = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    p.add_argument("--full", action="store_true", help="run the full size range")
    p.add_argument("--only", help="run the cases whose name contains this text")
    p.add_argument("--seconds", type=float, default=None, help="timed seconds per case (default 1, full 2)")
    p.add_argument("--repeat", type=int, default=3,
                   help="runs per case, the same increments each time; the fastest is reported (default 3)")
    p.add_argument("--smoke", action="store_true", help="tiny cases, one short run each (a few seconds)")
    p.add_argument("--bench", default=os.path.join(ROOT, "build", "bench", "drapex_bench"))
    p.add_argument("--against", help="a second drapex_bench (another build) to run side by side")
    p.add_argument("--threads", help="thread counts to run the build with, side by side (e.g. 1,2)")
    p.add_argument("--interleave", type=int, metavar="R",
                   help="R rounds of one thread and all threads in turn, in one process")
    args = p.parse_args(argv)
    paths = [os.path.abspath(b) for b in [args.bench, args.against] if b]
    counts = [int(c) for c in args.threads.split(",")] if args.threads else [None]
    benches = [(b, c) for b in paths for c in counts]
    for b in paths:
        if not os.path.exists(b):
            sys.exit("%s not found: build with -DDRAPEX_BENCH=ON (bash tools/build.sh)" % b)
    seconds = args.seconds if args.seconds is not None else (2.0 if args.full else 1.0)
    if args.smoke:
        seconds, args.repeat = 0.1, 1

    header = ("%-18s %-44s %8s %8s %6s %10s %10s %12s %10s %10s %11s" %
              ("case", "element / material", "elements", "nodes", "incs", "us/el-step", "us/step", "wall us/step",
               "allocs/inc", "KB/el peak", "KB/el model"))
    print(header)
    print("-" * len(header))
    contact_steps = []
    failures = 0
    with tempfile.TemporaryDirectory(prefix="drapex_bench_") as workdir:
        for name, label, command in cases(args.full, args.smoke):
            if args.only and args.only not in name:
                continue
            deck, note = make_deck(command, workdir)
            extra = ["--alternate", str(args.interleave)] if args.interleave else []
            results, note = (run_case(deck, benches, workdir, seconds, args.repeat, extra) if deck else
                             (None, note))
            if results is None:
                print("%-18s %-44s %s" % (name, label, note))
                failures += note.startswith("failed") or note.startswith("deck generation")
                continue
            for k, result in enumerate(results):
                elements = int(result["elements"])
                if benches[k][1]:
                    tag = " %dt" % benches[k][1] + ("" if len(paths) == 1 else " " + "AB"[k // len(counts)])
                else:
                    tag = "" if len(results) == 1 else (" (A)" if k == 0 else " (B)")
                print("%-18s %-44s %8d %8s %6s %10.4f %10.1f %12.1f %10.2f %10.2f %11.2f" %
                      ((name + tag)[:18], label, elements, result["nodes"], result["increments"],
                       float(result["us_per_element_step"]), float(result["us_per_increment"]),
                       float(result["wall_us_per_increment"]), float(result["allocations_per_increment"]),
                       int(result["peak_bytes"]) / 1024.0 / elements, int(result["model_bytes"]) / 1024.0 / elements))
            if args.interleave:
                for result in results:
                    if "alternate_speedup" in result:
                        print("%-18s 1 and %s threads in turn: %.3f / %.3f ms, speed-up %.2f" %
                              ("", result["alternate_threads"], float(result["alternate_one_thread_us"]) / 1e3,
                               float(result["alternate_all_threads_us"]) / 1e3,
                               float(result["alternate_speedup"])))
            if args.threads:
                for k in range(1, len(results)):
                    if k % len(counts):
                        first = results[k - k % len(counts)]
                        print("%-18s %d threads: speed-up %.2f (wall)" %
                              ("", benches[k][1],
                               float(first["wall_us_per_increment"]) / float(results[k]["wall_us_per_increment"])))
            elif len(results) == 2:
                ratio = float(results[0]["us_per_element_step"]) / float(results[1]["us_per_element_step"])
                print("%-18s A/B = %.3f" % ("", ratio))
            sys.stdout.flush()
            if name == "contact":
                contact_steps.append((int(results[0]["nodes"]), float(results[0]["us_per_increment"])))
    if failures:
        print("\n%d case(s) failed to run" % failures)
        return 1
    if len(contact_steps) == 2:
        (n1, t1), (n2, t2) = contact_steps
        print("\ncontact: %d -> %d nodes (x%.1f): time per step x%.2f" % (n1, n2, n2 / n1, t2 / t1))
    return 0


if __name__ == "__main__":
    sys.exit(main())

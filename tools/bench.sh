#!/usr/bin/env bash
# Builds Drapex with its benchmarks, runs the micro-benchmarks of the hot
# operations and then the whole-model table (pass --full for 10^4 to 2x10^5
# elements, --smoke for a check of a few seconds; other options go to
# bench/run_benchmarks.py).
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/build.sh
min_time=0.2
for a in "$@"; do [ "$a" = "--smoke" ] && min_time=0.01; done
echo
echo "== Micro-benchmarks (time_per_item: per element, node or search)"
build/bench/drapex_micro --benchmark_min_time=$min_time
echo
echo "== Whole-model increments"
/usr/bin/python3 bench/run_benchmarks.py "$@"

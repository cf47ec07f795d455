#!/usr/bin/env bash
# Runs every example deck and every deck under tests/decks with two builds of
# drapex and compares what they write, byte for byte: the console, the job
# log, the VTK result files and the tracker histories. Wall-clock figures
# (elapsed and solving times, the log's date) are masked before comparing.
#
#   bash tools/compare_runs.sh OLD_DRAPEX NEW_DRAPEX [deck...]
#
# Without deck arguments every example and test deck is run. Prints one line
# per deck that differs and exits 1 if any does.
set -uo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
old="$(realpath "$1")"
new="$(realpath "$2")"
shift 2
if [ $# -gt 0 ]; then
    decks=("$@")
else
    mapfile -t decks < <(cd "$root" && ls examples/*/*.txt tests/decks/*.txt tests/decks/*/*.txt)
fi
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

mask() {
    # Elapsed and solving times and the date of the log header change from run to run.
    sed -E -e 's/(Elapsed time|Solving took) *: *[0-9.e+-]+/\1: T/' -e 's/^date: .*/date: D/' \
        -e 's/(took|Elapsed)[^0-9]*[0-9]+\.[0-9]+/\1 T/g'
}

run() { # binary, deck, directory
    mkdir -p "$3"
    cp "$root/$2" "$3/"
    (cd "$3" && timeout 600 "$1" "$(basename "$2")" </dev/null 2>&1 | mask >console.out)
    for f in "$3"/*.md; do [ -f "$f" ] && mask <"$f" >"$f.masked" && mv "$f.masked" "$f"; done
}

status=0
for deck in "${decks[@]}"; do
    name="$(echo "$deck" | tr '/' '_')"
    run "$old" "$deck" "$work/old/$name"
    run "$new" "$deck" "$work/new/$name"
    if ! diff -rq "$work/old/$name" "$work/new/$name" >/dev/null; then
        echo "DIFFERS: $deck"
        diff -rq "$work/old/$name" "$work/new/$name" | head -5
        status=1
    fi
done
[ $status -eq 0 ] && echo "All ${#decks[@]} decks give identical outputs"
exit $status

#!/usr/bin/env bash
# Builds the deck fuzzer with clang (libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) in build-fuzz/ and runs it.
#   tools/fuzz.sh [seconds]     fuzz for that long (default 600) from the seeds
#   tools/fuzz.sh --replay      run every seed and regression deck once
# The seeds are the examples and the test decks; the growing corpus is kept in
# build-fuzz/corpus and findings in build-fuzz/findings.
set -euo pipefail
cd "$(dirname "$0")/.."

need=()
for p in clang-14 libclang-rt-14-dev; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || need+=("$p")
done
if [ ${#need[@]} -gt 0 ]; then
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${need[@]}" </dev/null ||
        { $sudo apt-get update </dev/null &&
              DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${need[@]}" </dev/null; }
fi

cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++-14 \
    -DDRAPEX_FUZZ=ON -DDRAPEX_TESTS=OFF >/dev/null
cmake --build build-fuzz --target deck_fuzzer -j"$(nproc)"

seeds=build-fuzz/seeds
rm -rf "$seeds"
mkdir -p "$seeds" build-fuzz/corpus build-fuzz/findings
i=0
while IFS= read -r -d '' deck; do
    cp "$deck" "$seeds/$(printf '%04d' $i)_$(basename "$deck")"
    i=$((i + 1))
done < <(find examples tests/decks fuzz/seeds -name '*.txt' -print0 2>/dev/null)

# Each run gets its own scratch directory from the target itself.
common=(-dict=fuzz/deck.dict -timeout=20 -rss_limit_mb=4096 -max_len=4096
        -artifact_prefix=build-fuzz/findings/)
if [ "${1:-}" = "--replay" ]; then
    ./build-fuzz/fuzz/deck_fuzzer "${common[@]}" -runs=0 "$seeds" tests/decks/regress
else
    ./build-fuzz/fuzz/deck_fuzzer "${common[@]}" -max_total_time="${1:-600}" -print_final_stats=1 \
        build-fuzz/corpus "$seeds"
fi

#!/usr/bin/env bash
# Builds Drapex (installing what is missing) and runs the whole test suite,
# then builds it again in build-asan/ with AddressSanitizer and
# UndefinedBehaviorSanitizer (leak checks included) and runs the suite there
# too. DRAPEX_SKIP_SANITIZE=1 leaves the second pass out.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/build.sh
(cd build && ctest --output-on-failure -j"$(nproc)")

if [ "${DRAPEX_SKIP_SANITIZE:-0}" != "1" ]; then
    cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Release -DDRAPEX_SANITIZE=ON -DDRAPEX_BENCH=OFF
    cmake --build build-asan -j"$(nproc)"
    # Every run of the program under test reports leaks and stops at the first
    # undefined behaviour; a report fails the test that started it.
    export ASAN_OPTIONS="detect_leaks=1:abort_on_error=0:strict_string_checks=1"
    export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
    (cd build-asan && ctest --output-on-failure -j"$(nproc)")
fi

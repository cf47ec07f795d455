#!/usr/bin/env bash
# Builds Drapex (installing what is missing) and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/build.sh
cd build
ctest --output-on-failure -j"$(nproc)"

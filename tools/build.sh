#!/usr/bin/env bash
# Installs the Debian packages Drapex needs (only those missing), then
# configures and builds the program, its tests and benchmarks in build/.
set -euo pipefail
cd "$(dirname "$0")/.."

required=(g++ cmake make libtnt-dev libjama-dev libgtest-dev libbenchmark-dev zlib1g-dev)
# Independent readers and plotting used by a few tests and tools, and METIS's
# partitioning programs for bench/partition_halo.py; the tests that need them
# skip with a message where they cannot be installed.
optional=(python3 python3-vtk9 python3-meshio python3-matplotlib xvfb xauth metis)

missing() {
    for p in "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || echo "$p"
    done
}

apt_install() {
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    export DEBIAN_FRONTEND=noninteractive
    $sudo apt-get install -y --no-install-recommends "$@" </dev/null ||
        { $sudo apt-get update </dev/null && $sudo apt-get install -y --no-install-recommends "$@" </dev/null; }
}

mapfile -t need < <(missing "${required[@]}")
if [ ${#need[@]} -gt 0 ]; then
    echo "Installing ${need[*]}"
    apt_install "${need[@]}"
fi
mapfile -t want < <(missing "${optional[@]}")
if [ ${#want[@]} -gt 0 ]; then
    echo "Installing ${want[*]}"
    apt_install "${want[@]}" || echo "Could not install ${want[*]}: the tests that need them will be skipped"
fi

cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DDRAPEX_BENCH=ON
cmake --build build -j"$(nproc)"

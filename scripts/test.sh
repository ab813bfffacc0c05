#!/bin/sh
# Installs what is missing, builds Tarvik and runs the whole test suite.
#   scripts/test.sh [build-dir] [extra cmake arguments...]
set -eu
cd "$(dirname "$0")/.."
scripts/install-deps.sh
BUILD=${1:-build}
[ $# -gt 0 ] && shift
cmake -S . -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build "$BUILD" -j2
ctest --test-dir "$BUILD" --output-on-failure -j2

#!/bin/sh
# Builds the multi-threaded stress test with ThreadSanitizer and runs it:
#   scripts/stress.sh [build-dir]
set -eu
cd "$(dirname "$0")/.."
scripts/install-deps.sh
BUILD=${1:-build-tsan}
cmake -S . -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVIK_TSAN=ON \
  -DTARVIK_BUILD_BENCH=OFF -DTARVIK_BUILD_TOOLS=OFF >/dev/null
cmake --build "$BUILD" -j2 --target tarvik_stress_tests
TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$(pwd)/tests/tsan.supp" \
  "$BUILD"/tests/tarvik_stress_tests

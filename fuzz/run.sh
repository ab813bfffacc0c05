#!/bin/sh
# Builds the fuzz targets with clang and runs one for a while:
#   fuzz/run.sh parse_seal_image_fuzzer 300
set -eu
cd "$(dirname "$0")/.."
TARGET=${1:-parse_seal_image_fuzzer}
SECONDS_TO_RUN=${2:-120}
CORPUS=fuzz/corpus/${TARGET%_fuzzer}
CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTARVIK_BUILD_FUZZ=ON -DTARVIK_BUILD_TESTS=OFF -DTARVIK_BUILD_BENCH=OFF \
  -DTARVIK_BUILD_TOOLS=OFF >/dev/null
cmake --build build-fuzz -j2 --target "$TARGET"
mkdir -p "$CORPUS" build-fuzz/corpus/"$TARGET"
ASAN_OPTIONS=detect_leaks=1 LSAN_OPTIONS=suppressions=$(pwd)/tests/lsan.supp \
  build-fuzz/fuzz/"$TARGET" -max_total_time="$SECONDS_TO_RUN" -rss_limit_mb=2048 \
  -max_len=65536 -print_final_stats=1 build-fuzz/corpus/"$TARGET" "$CORPUS"

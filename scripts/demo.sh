#!/bin/sh
# Installs what is missing, builds the tarvik program and decodes the bundled
# seal picture into seal.png.
set -eu
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j2 --target tarvik_cli
build/tools/tarvik seal testdata/sample_seal.png -o seal.png
echo "wrote $(pwd)/seal.png"

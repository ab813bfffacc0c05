#!/bin/sh
# Installs what is missing, builds the tarvik program and renders the bundled
# signed document, seal included, into signed.png.
set -eu
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j2 --target tarvik_cli
build/tools/tarvik render testdata/signed_v4_png.ofd --page 1 -o signed.png --quiet
echo "wrote $(pwd)/signed.png"

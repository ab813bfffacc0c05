#!/bin/sh
# Installs the build into a temporary prefix, then builds the example there
# with find_package and with pkg-config, runs both on the bundled signed
# sample and checks the PNGs they write; also compiles every installed header,
# and the C example and the Python module (when installed) against the install.
#   install_test.sh BUILD_DIR SOURCE_DIR GENERATOR
set -eu
BUILD=$1
SOURCE=$2
GENERATOR=$3
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
PREFIX=$WORK/prefix

cmake --install "$BUILD" --prefix "$PREFIX" >/dev/null

# Every public header compiles on its own include paths.
find "$PREFIX/include" -name '*.h' | sed "s|^$PREFIX/include/||; s|^tarvik/host/|host/|" |
  sed 's|.*|#include "&"|' >"$WORK/all_headers.cpp"
c++ -std=c++20 -fsyntax-only -I"$PREFIX/include" -I"$PREFIX/include/tarvik" "$WORK/all_headers.cpp"

# PNG width and height from the IHDR chunk.
png_size() {
  od -An -tu1 -j16 -N8 "$1" | awk '{ printf "%dx%d\n", $1*16777216+$2*65536+$3*256+$4, $5*16777216+$6*65536+$7*256+$8 }'
}
check_png() {
  [ "$(od -An -tx1 -N8 "$1" | tr -d ' \n')" = "89504e470d0a1a0a" ] || { echo "$1 is not a PNG"; exit 1; }
  size=$(png_size "$1")
  [ "$size" = "413x584" ] || { echo "$1 is $size, not 413x584"; exit 1; }
}

cmake -S "$SOURCE/examples" -B "$WORK/cmake-build" -G "$GENERATOR" \
  -DCMAKE_PREFIX_PATH="$PREFIX" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$WORK/cmake-build" >/dev/null
"$WORK/cmake-build/render_page" "$SOURCE/testdata/signed_v4_png.ofd" "$WORK/cmake.png" 1 50 >"$WORK/out.txt"
grep -q "seal 30: drawn" "$WORK/out.txt" || { cat "$WORK/out.txt"; exit 1; }
check_png "$WORK/cmake.png"

export PKG_CONFIG_PATH="$PREFIX/lib/pkgconfig:$PREFIX/$(ls "$PREFIX" | grep '^lib' | head -1)/pkgconfig"
LIBDIR=$(pkg-config --variable=libdir tarvik-viewer)
# shellcheck disable=SC2046
c++ -o "$WORK/render_page_pc" "$SOURCE/examples/render_page.cpp" \
  $(pkg-config --cflags --libs tarvik-viewer) -Wl,-rpath,"$LIBDIR"
"$WORK/render_page_pc" "$SOURCE/testdata/signed_v4_png.ofd" "$WORK/pc.png" 1 50 >/dev/null
check_png "$WORK/pc.png"
cmp -s "$WORK/cmake.png" "$WORK/pc.png" || { echo "the two builds render differently"; exit 1; }
# The C interface: the CMake build's C example, and the same built with
# pkg-config by a C compiler alone, render what the C++ example does.
"$WORK/cmake-build/render_page_c" "$SOURCE/testdata/signed_v4_png.ofd" "$WORK/c.png" 1 50 >/dev/null
cmp -s "$WORK/cmake.png" "$WORK/c.png" || { echo "the C example renders differently"; exit 1; }
# shellcheck disable=SC2046
cc -std=c99 -Wall -Werror -o "$WORK/render_page_c_pc" "$SOURCE/examples/render_page.c" \
  $(pkg-config --cflags --libs tarvik-c) -Wl,-rpath,"$LIBDIR"
"$WORK/render_page_c_pc" "$SOURCE/testdata/signed_v4_png.ofd" "$WORK/c_pc.png" 1 50 >/dev/null
cmp -s "$WORK/cmake.png" "$WORK/c_pc.png" || { echo "the C example (pkg-config) renders differently"; exit 1; }

# The Python module, when it was built: imported from the install alone.
MODULE=$(find "$PREFIX" -path '*-packages/tarvik/__init__.py' | head -1)
if [ -n "$MODULE" ]; then
  PYTHONPATH=$(dirname "$(dirname "$MODULE")") ${PYTHON:-python3} -c "
import sys, tarvik
img = tarvik.open(sys.argv[1]).render(0, dpi=50)
assert (img.width, img.height) == (413, 584), img
assert img.to_png() == open(sys.argv[2], 'rb').read()
" "$SOURCE/testdata/signed_v4_png.ofd" "$WORK/cmake.png"
fi

echo "installed, built with CMake and pkg-config, rendered $(png_size "$WORK/pc.png")"

#!/bin/sh
# Installs the Debian packages Tarvik needs to build and test, skipping
# those already present. Run as root (or through sudo) on Debian 12.
set -eu

PACKAGES="
  build-essential cmake ninja-build pkg-config clang libclang-rt-14-dev
  libcairo2-dev libfreetype-dev libfontconfig-dev libpng-dev
  libjpeg62-turbo-dev libgif-dev libtiff-dev libjbig2dec0-dev
  libzip-dev libpugixml-dev libssl-dev libgtest-dev libgmock-dev
  libbenchmark-dev fonts-wqy-zenhei fonts-noto-cjk fonts-arphic-ukai
  fonts-arphic-uming fonts-lohit-taml fonts-tlwg-loma-otf python3 python3-pytest
  python3-numpy
"
# OpenCV's box filter is an optional reference in the benchmarks.
if [ "${TARVIK_WITH_OPENCV:-0}" = 1 ]; then
  PACKAGES="$PACKAGES libopencv-imgproc-dev"
fi

missing=""
for pkg in $PACKAGES; do
  if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
    missing="$missing $pkg"
  fi
done

if [ -z "$missing" ]; then
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  SUDO="sudo"
fi

echo "Installing:$missing"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
# shellcheck disable=SC2086
$SUDO apt-get install -y -qq --no-install-recommends $missing >/dev/null

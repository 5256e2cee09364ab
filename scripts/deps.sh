#!/bin/sh
# Installs every Debian package the build, the tests and the benchmarks need.
# Quiet and quick when all are present; refreshes the package index only when
# something is missing.
set -e
PACKAGES="build-essential cmake pkg-config ccache bison make clang-format clang libclang-rt-14-dev
qt6-base-dev libgl-dev
libfftw3-dev libopenblas-dev liblapacke-dev
libdcmtk-dev libnifti2-dev libmatio-dev
libavformat-dev libavcodec-dev libswscale-dev libgif-dev
libgtest-dev libgmock-dev libbenchmark-dev xvfb xauth
python3 python3-numpy python3-scipy python3-skimage python3-nibabel python3-pydicom python3-pil
python3-pypdf"

missing=""
for p in $PACKAGES; do
  if ! dpkg-query -W -f='${db:Status-Abbrev}' "$p" 2>/dev/null | grep -q '^ii'; then
    missing="$missing $p"
  fi
done
[ -z "$missing" ] && exit 0

echo "installing:$missing"
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends $missing >/dev/null

#!/usr/bin/env bash
# Builds the Python package against a freshly installed library, tests it, and tries the way over pip.
# help:   python          the Python package: built and tested in build/python *
# step
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh

python=${PYTHON:-/usr/bin/python3}
root=$PWD/build/python
prefix=$root/prefix
need "${build_packages[@]}" python3-dev python3-cffi python3-numpy python3-setuptools python3-wheel python3-pip python3-venv \
    python3-scipy python3-skimage python3-dask python3-distributed python3-pytest python3-matplotlib

configure_and_build release
cmake --install build/release --prefix "$prefix" >/dev/null
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig:$prefix/lib/x86_64-linux-gnu/pkgconfig
(cd python && "$python" setup.py -q build --build-base "$root/base" --build-lib "$root/site")
PYTHONPATH=$root/site "$python" -m pytest -q -p no:cacheprovider --doctest-modules --pyargs rvxcv python/tests

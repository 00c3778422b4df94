#!/usr/bin/env bash
# Installs the Python package into an environment of its own with pip, against a freshly installed library, and tests it there.
# help:   python [ARG...] the Python package: built and tested in build/python; ARGs go to pytest *
# step
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/common.sh
source scripts/common.sh

if [[ ${1:-} == --step ]]; then
    shift
fi
# Debian's packages are for Debian's interpreter, whatever stands first in PATH.
python=${PYTHON:-/usr/bin/python3}
root=$PWD/build/python
need "${build_packages[@]}" python3-dev python3-venv python3-pip python3-setuptools python3-wheel python3-cffi python3-numpy \
    python3-scipy python3-skimage python3-dask python3-distributed python3-pytest python3-matplotlib

mkdir -p "$root"
configure_and_build release
cmake --install build/release --prefix "$root/prefix" >"$root/install.log"
pkg_config_folders=$(find "$root/prefix" -name pkgconfig -printf '%p:')
export PKG_CONFIG_PATH=$pkg_config_folders

# Debian's interpreter installs nothing beside its own packages, but an environment sees them and may add to them.
"$python" -m venv --system-site-packages "$root/venv"
if command -v ccache >/dev/null; then
    export CC='ccache gcc'
fi
"$root/venv/bin/python" -m pip install --quiet --no-index --no-build-isolation --no-deps --force-reinstall ./python

(($# > 0)) || set -- --doctest-modules --pyargs rvxcv python/tests
"$root/venv/bin/python" -m pytest -q -p no:cacheprovider "$@"

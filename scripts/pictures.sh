#!/usr/bin/env bash
# Makes docs/pictures again.
#
# help:   pictures        the README's pictures, from the demo, and the plot of docs/performance.md
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# shellcheck source=scripts/common.sh
source scripts/common.sh

need "${build_packages[@]}" python3-matplotlib python3-pil
configure_and_build release rvxcv
tools/demo.sh build/release/bin build/pictures
/usr/bin/python3 scripts/pictures.py build/pictures docs/performance.md docs/pictures

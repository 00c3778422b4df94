#!/usr/bin/env bash
# Deliberate faults: see mutate.py. Not a step of the tests: a hundred faults take hours.
# help:   mutate [N]      N small faults (default 100) put into the sources one after the other, each built and tested:
# help:                   which ones no test notices, in out/mutate/report.txt; --help tells more
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/common.sh
source scripts/common.sh

need "${build_packages[@]}"
exec python3 scripts/mutate.py "$@"

#!/usr/bin/env bash
# help:   docs            HTML pages in out/docs/html: a page a family, with pictures, members, costs, examples *
# step
# With --check it only reads the headers and the table of families: ./dev lint does that, since all that is exported has
# to have a text.
set -euo pipefail
# shellcheck source=scripts/common.sh
source scripts/common.sh

out=out/docs

# run_doxygen FOLDER: of the Doxyfile, and of what stands on standard input.
run_doxygen() {
    mkdir -p "$1"
    cat docs/doxygen/Doxyfile - <<<"OUTPUT_DIRECTORY = $1" >"$1/Doxyfile"
    cat >>"$1/Doxyfile"
    doxygen "$1/Doxyfile"
}

# What doxygen finds in the headers, in out/docs/headers/xml; it complains about what has no text, and so does docs.py.
read_headers() {
    rm -rf "$out/headers"
    run_doxygen "$out/headers" <<<"GENERATE_HTML = NO"
    scripts/docs.py check "$out/headers/xml"
}

need doxygen python3
read_headers
if [[ ${1:-} == --check ]]; then
    exit
fi

need "${build_packages[@]}"
mkdir -p build
configure_and_build release rvxcv >/dev/null
rm -rf "$out/html" "$out/pictures" "$out/pages"
scripts/docs.py pictures build/release/bin/rvxcv "$out/pictures"
scripts/docs.py pages "$out/headers/xml" "$out/pages"
pictures=("$out/pictures")
if [[ -d docs/pictures ]]; then
    pictures+=(docs/pictures)
fi
cat docs/doxygen/pages.conf - <<CONF | run_doxygen "$out"
INPUT = README.md CONTRIBUTING.md CHANGELOG.md docs $out/pages/before include $out/pages/after
IMAGE_PATH = ${pictures[*]}
EXAMPLE_PATH += $out/pictures
CONF
echo "The pages begin at $out/html/index.html"

#!/usr/bin/env bash
# The library's test programs under valgrind's memcheck: nothing is read that was not written, nothing is lost. Nothing
# that valgrind reports about the library is suppressed. Not a step of the tests: it takes too long.
# help:   valgrind [FILTER]
# help:                   the library's tests whose name matches FILTER (as --gtest_filter; default: all) under valgrind
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/common.sh
source scripts/common.sh

filter=${1:-*}
build=build/valgrind

# The release build with line numbers, except for one instruction. Of the encodings of a register's vmovq the assembler
# takes the shortest; if only the source is one of xmm8 to xmm15 that is the one of a store, which valgrind 3.19 does not
# know. The assembler is told to take the other one, and the code stays what users get.
mkdir -p "$build/assembler"
cat >"$build/assembler/as" <<AS
#!/bin/sh
for source; do :; done
sed -i 's/^\tvmovq\t%xmm/\t{load} vmovq\t%xmm/' "\$source"
exec "$(command -v as)" "\$@"
AS
chmod +x "$build/assembler/as"
need "${build_packages[@]}" valgrind
cmake --preset release -B "$build" -DCMAKE_CXX_FLAGS="-g1 -B$PWD/$build/assembler" -DRVXCV_BUILD_TOOLS=OFF \
    -DRVXCV_BUILD_BENCH=OFF >"build/valgrind.configure.log"
cmake --build "$build" -j "$jobs"

run() {
    local log=$1.log
    if valgrind --error-exitcode=9 --leak-check=full --num-callers=20 "bin/$1" --gtest_brief=1 \
        --gtest_filter="$2" >"$log" 2>&1; then
        echo "ok      $1: $(grep -E '^\[=+\].* ran' "$log")"
    else
        sed 's/^/    /' "$log"
        echo "FAILED  $1"
        return 1
    fi
}
export -f run
cd "$build"
rm -f ./*_test.log
for program in bin/*_test; do
    printf '%s\0' "${program#bin/}" "$filter"
done | xargs -0 -n 2 -P "$jobs" bash -c 'run "$@"' _
if ! grep -Eq '^\[=+\] [1-9].* ran' ./*_test.log; then
    echo "valgrind: no test is called $filter"
    exit 2
fi
echo "valgrind: ok"

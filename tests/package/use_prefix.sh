#!/usr/bin/env bash
# Uses an installed tree as a stranger would: compiles and runs the C99 example with pkg-config and with CMake's
# find_package, both against the tree alone, and runs the installed program. use_prefix.sh PREFIX
set -euo pipefail

example=$(cd "$(dirname "$0")/../../examples" && pwd)/hello.c
prefix=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

pc=$(find "$prefix" -name rvxcv.pc)
libdir=$(dirname "$(dirname "$pc")")
export PKG_CONFIG_PATH=${pc%/*} LD_LIBRARY_PATH=$libdir
cd "$work"
cp "$example" app.c

expect_output() {
    local output
    output=$("$@")
    if [[ $output != "rvxCV AVX2 (l9) 8.2.1 (r44077): status 0, differences 1 2 0 4 8 0 16 32" ]]; then
        echo "$*: unexpected output: $output" >&2
        exit 1
    fi
}

# shellcheck disable=SC2046 # the flags are words
cc -std=c99 -Wall -Wextra -Wpedantic -Werror app.c $(pkg-config --cflags --libs rvxcv) -o by_pkg_config
expect_output ./by_pkg_config

cat >core.c <<'C'
#include <rvxcore.h>
int main(void) { return rvxGetEnabledCpuFeatures() & RVX_CPU_SSE2 ? 0 : 1; }
C
cat >CMakeLists.txt <<'CMAKE'
cmake_minimum_required(VERSION 3.16)
project(app C)
set(CMAKE_C_STANDARD 99)
find_package(rvxcv 8.2 REQUIRED)
add_executable(by_cmake app.c)
target_link_libraries(by_cmake rvxcv::rvxcvl9)
add_executable(core core.c)
target_link_libraries(core rvxcv::rvxcore)
CMAKE
cmake -S . -B build -DCMAKE_PREFIX_PATH="$prefix" >configure.log || {
    cat configure.log
    exit 1
}
cmake --build build
expect_output build/by_cmake
build/core

env -u LD_LIBRARY_PATH "$prefix/bin/rvxcv" info
echo "$prefix: pkg-config, find_package and the program work"

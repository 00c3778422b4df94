#!/usr/bin/env bash
# help:   contract [--accept]
# help:                   every exported function on fixed arguments: the same bits from every build *
# step
# Builds the contract program (tests/contract), runs it in every way below and compares what it prints: all runs with
# each other and with tests/contract/hashes.txt; values that have a bound, in tests/contract/values.txt, within it.
#
#   release     gcc -O3                              threads   the same, eight threads at once
#   clang       clang -O3                            emulated  the same on an emulated processor
#   sanitize    clang -O0, address and undefined-behaviour sanitizers
#
# The program knows the library by its interface alone: one build of it runs with each. --accept writes both files from
# the release build; --step is how ./dev test calls it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# shellcheck source=scripts/common.sh
source scripts/common.sh

hashes=tests/contract/hashes.txt
values=tests/contract/values.txt
out=build/contract-runs
status=0

# A value and a bound a field: prints the lines in which a value is further from the accepted one than its bound.
beyond_bounds() {
    paste -d ' ' "$1" "$2" | awk '{
        n = NF / 2
        bad = NF % 2 != 0 || $1 != $(n + 1)
        for (i = 3; i <= n && !bad; ++i) {
            distance = $i - $(n + i)
            bad = $i + 0 != $i && $i != $(n + i) || distance > $2 || -distance > $2
        }
        if (bad) print
    }'
}

# The folder of a preset's libraries; fails unless the program takes them from there.
libraries() {
    local folder=$PWD/build/$1/lib
    LD_LIBRARY_PATH=$folder ldd "$program" | grep -qF "$folder/librvxcvl9.so" || {
        echo "contract: the program does not take its library from $folder" >&2
        return 1
    }
    echo "$folder"
}

# print_as NAME COMMAND...: what the program prints, into the files NAME.hashes and NAME.values.
print_as() {
    local name=$1
    shift
    if ! "$@" --values "$out/$name.values" >"$out/$name.hashes" 2>"$out/$name.errors"; then
        echo "contract: $name: FAILED"
        head -n 20 "$out/$name.errors"
        status=1
        return 1
    fi
}

# compare NAME SECONDS: those files with what is accepted.
compare() {
    local name=$1 differing beyond
    differing=$( (diff "$hashes" "$out/$name.hashes" || true) | sed -n 's/^[<>] \([^ ]*\) .*/\1/p' | sort -u)
    beyond=$(beyond_bounds "$out/$name.values" "$values")
    if [[ -n $differing || -n $beyond ]]; then
        echo "contract: $name: differs from $hashes or $values"
        printf '%s\n' "$differing" "$beyond" | sed '/^$/d; s/^/  /' | head -n 40
        status=1
    else
        printf 'contract: %-9s %d members alike, %d s\n' "$name" "$(wc -l <"$out/$name.hashes")" "$2"
    fi
}

run() {
    local begin=$SECONDS
    if print_as "$@"; then
        compare "$1" $((SECONDS - begin))
    fi
}

# Whether the object that defines a member gathers by vector register 4, in both builds.
gathers_by_4() {
    local preset object
    for preset in release clang; do
        object=$(grep -rlF "l9_$1" --include='*.o' "build/$preset/src/CMakeFiles/rvxcv_families.dir" | head -n 1)
        # Counted, since a pipe that ends early is a failure.
        [[ $(objdump -d --no-show-raw-insn "$object" | grep -c 'gather.*,%[xy]mm4,') != 0 ]] || return 1
    done
}

# The emulated processor. -cpu max: every feature that the emulator has, AVX2 and FMA among them; named models ask for
# some that it has not, and warn. No guard pages: the emulator (7.2) reads whole vectors where masked loads and scalar
# fused multiply-adds read a part. It also takes a gather's index in vector register 4 for none at all. Which members
# that hits is up to the compiler, so both compilers' builds run, and a member counts as alike when one of them is right.
# A member that neither gets right is named, and passes only if both builds have that instruction in its source's code.
run_emulated() {
    local begin=$SECONDS accepted of_gcc of_clang name other both=0
    print_as emulated-clang qemu-x86_64 -cpu max -E "LD_LIBRARY_PATH=$clang" "$program" --guards no &
    other=$!
    print_as emulated qemu-x86_64 -cpu max "$program" --guards no || both=1
    wait "$other" || both=1
    if ((both != 0)); then
        status=1
        return
    fi
    while read -r name accepted _ of_gcc _ of_clang; do
        if [[ $of_gcc != "$accepted" && $of_clang == "$accepted" ]]; then
            echo "contract: emulated: right in clang's build only: $name" >&2
            of_gcc=$of_clang
        elif [[ $of_gcc != "$accepted" ]] && gathers_by_4 "$name"; then
            echo "contract: emulated: not comparable, gathers by vector register 4: $name" >&2
            of_gcc=$accepted
        fi
        echo "$name $of_gcc"
    done < <(paste -d ' ' "$hashes" "$out/emulated.hashes" "$out/emulated-clang.hashes") >"$out/emulated.merged"
    mv "$out/emulated.merged" "$out/emulated.hashes"
    compare emulated $((SECONDS - begin))
}

need "${build_packages[@]}" "${test_packages[@]}"
mkdir -p "$out"
configure_and_build release rvxcv_contract >"$out/build.log" || {
    cat "$out/build.log"
    exit 1
}
program=build/release/bin/rvxcv_contract
if [[ ${1:-} == --accept ]]; then
    "$program" --values "$values" >"$hashes"
    git --no-pager diff --stat -- "$hashes" "$values"
    exit
fi
for preset in clang sanitize; do
    configure_and_build "$preset" rvxcvl9 >"$out/build.log" || {
        cat "$out/build.log"
        exit 1
    }
done
clang=$(libraries clang)
sanitized=$(libraries sanitize)
runtime=$(clang++ -print-file-name=libclang_rt.asan-x86_64.so)

run release "$program"
run threads "$program" --threads 8
run clang env "LD_LIBRARY_PATH=$clang" "$program"
run sanitize env "LD_LIBRARY_PATH=$sanitized" "LD_PRELOAD=$runtime" "$program"
run_emulated
exit "$status"

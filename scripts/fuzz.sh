#!/usr/bin/env bash
# help:   fuzz [SECONDS]  fuzz every target of tests/fuzz for so many seconds (default: 60), as many at a time as there are
# help:                   processors; findings go to out/fuzz, with the command that repeats each *
# step
#
# `fuzz.sh --step` runs all targets for half a minute altogether, from the seeds, as a step of the tests. `fuzz.sh --seeds`
# writes the seeds of the library's targets anew: after a change of what the bytes of an input mean.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# shellcheck source=scripts/common.sh
source scripts/common.sh

binaries=build/sanitize/bin/fuzz
seeds=tests/fuzz/seeds
found=out/fuzz
learned=build/fuzz/corpus
export UBSAN_OPTIONS=print_stacktrace=1

# Each name of exports.def must have succeeded in a call of the seeds.
check_reached() {
    local names=$found/reached target
    rm -f "$names"
    for target in "$binaries"/*_fuzz; do
        RVXCV_FUZZ_REACHED=$names "$target" -runs=0 "$seeds/${target##*/}" >"$names.log" 2>&1 || {
            cat "$names.log"
            return 1
        }
    done
    sort -u -o "$names" "$names"
    if sed -n 's/^EXPORT(\(.*\))$/\1/p' src/frame/exports.def | sort | comm -23 - "$names" | grep .; then
        echo "fuzz: these functions succeed in no seed: add them to a table in tests/fuzz, then scripts/fuzz.sh --seeds"
        return 1
    fi
    echo "fuzz: the seeds reach all $(wc -l <"$names") functions"
}

# run_target NAME SECONDS: one target; what it learns stays in the build folder.
run_target() {
    local name=$1 seconds=$2 corpus=$learned/$1 length=4096 dictionary=tests/fuzz/dictionaries/$1 options=()
    if [[ $name == *_fuzz ]]; then
        length=960 # thirty calls
    fi
    if [[ -f $dictionary ]]; then
        options=(-dict="$dictionary")
    fi
    mkdir -p "$corpus"
    "$binaries/$name" -seed="$seed" -max_total_time="$seconds" -max_len="$length" -timeout=25 -rss_limit_mb=3000 \
        -print_final_stats=1 -artifact_prefix="$found/$name-" "${options[@]}" "$corpus" "$seeds/$name" \
        >"$found/$name.log" 2>&1 || true
}

# The line of a target: how long, how many executions, what was found. Fails if something was.
report() {
    local name=$1 executions seconds finding status=0
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$found/$name.log")
    seconds=$(sed -n 's/^Done [0-9]* runs in \([0-9]*\) second.*/\1/p' "$found/$name.log")
    printf '%-16s %6s s %10s executions' "$name" "${seconds:--}" "${executions:--}"
    if [[ -z $seconds ]]; then
        status=1
        printf '  FAILED\n'
        grep -E -m 3 'ERROR:|SUMMARY|runtime error|: status ' "$found/$name.log" || tail -n 5 "$found/$name.log"
        for finding in "$found/$name"-{crash,leak,timeout,oom,slow-unit}-*; do
            if [[ -e $finding ]]; then
                echo "    repeat: RVXCV_FUZZ_TRACE=1 $binaries/$name $finding"
            fi
        done
    else
        printf '\n'
    fi
    return "$status"
}

need "${build_packages[@]}" clang libclang-rt-dev
mkdir -p build "$found"
configure_and_build sanitize rvxcv_fuzz
mapfile -t targets < <(cd "$binaries" && printf '%s\n' *)

seed=0 # another one each time
case ${1:-} in
--seeds)
    for target in "${targets[@]}"; do
        if [[ $target == *_fuzz ]]; then
            rm -rf "${seeds:?}/$target"
            mkdir -p "$seeds/$target"
            RVXCV_FUZZ_SEEDS=$seeds/$target "$binaries/$target"
        fi
    done
    exit
    ;;
--step)
    learned=build/fuzz/corpus.step # from the seeds alone: what longer runs learned takes time to read
    rm -rf "$learned"
    seed=1 # a step of the tests tries the same inputs each time, as far as it gets
    seconds=$(((30 * jobs + ${#targets[@]} - 1) / ${#targets[@]}))
    ;;
*) seconds=${1:-60} ;;
esac

rm -f "$found"/*
check_reached
export -f run_target
export binaries seeds found seed learned
printf '%s\n' "${targets[@]}" | xargs -P "$jobs" -I NAME bash -c "run_target NAME $seconds"
failed=0
for target in "${targets[@]}"; do
    report "$target" || failed=$((failed + 1))
done
echo "fuzz: ${#targets[@]} targets, $failed with findings"
((failed == 0))

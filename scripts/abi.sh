#!/usr/bin/env bash
# Compares the interface of both libraries with the one under version control, tests/abi/*.abi (libabigail's format).
# Additions pass, anything else fails. abi.sh [--accept | --step]
#
# help:   abi [--accept]  compare the interface with its baseline: additions pass, nothing else *; --accept takes
# help:                   additions into the baseline, or everything once the soname is a new one
# step
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# shellcheck source=scripts/common.sh
source scripts/common.sh

libraries=(rvxcvl9 rvxcore)
declare -A header=([rvxcvl9]=rvxcv.h [rvxcore]=rvxcore.h)
work=build/abi

# The exported entries of the library are assembly and know nothing of types. What is compared is a stand-in: the public
# headers compiled with debug information, every declaration made a definition. Enumerations have no name and some
# records stand behind pointers to void, so each gets a variable, which keeps it in the picture; macros become
# enumerators.
# stand_in LIBRARY INCLUDE_DIR SONAME OUTPUT
stand_in() {
    local source=$work/$1.c macros
    macros=$(cc -E -dM -I"$2" "$2/${header[$1]}" | sed -n 's/^#define \(RVX[A-Z0-9_]*\) ..*/macro_\1 = \1,/p' | sort)
    printf '#include "%s"\n' "${header[$1]}" >"$work/all.c"
    [[ -z $macros ]] || printf 'enum macros { %s } macros;\n' "$macros" >>"$work/all.c"
    cc -E -P -I"$2" "$work/all.c" |
        perl -0pe 's/\);$/) { __builtin_trap(); }/mg;
                   s/^\} (\w+);/} $1;\n$1 record_$1;/mg;
                   s/^enum (\{\s*(\w+)[^}]*\});/enum values_from_$2 $1 values_from_$2;/mg' >"$source"
    cc -w -g -shared -fPIC "-Wl,-soname,$3" "$source" -o "$4"
}

soname() {
    objdump -p "$1" | sed -n 's/^ *SONAME *//p'
}

# Names (and versions, if there are any) of the functions that a library exports, in order.
exported_functions() {
    nm -D --defined-only --with-symbol-versions "$1" | sed -n 's/^[^ ]* T //p' | sort
}

# The finished library exports exactly what the stand-in defines.
same_names() {
    diff <(exported_functions "$1") <(exported_functions "$2") ||
        {
            echo "abi: $1 (<) exports other names than the headers declare (>)" >&2
            return 1
        }
}

# The static assertions of tests/abi/layout.c leave no record out.
every_record_is_pinned() {
    diff <(sed -n 's/.* record_\(.*\);/\1/p' "$work/rvxcvl9.c" | sort) \
        <(sed -n 's/^RECORD(\(.*\), .*/\1/p' tests/abi/layout.c | sort) ||
        {
            echo "abi: the headers have other records (<) than tests/abi/layout.c (>)" >&2
            return 1
        }
}

# Nothing but additions? Prints what else there is. compatible BASELINE STAND_IN
compatible() {
    abidiff --no-added-syms "$1" "$2"
}

# What abidiff does not need is left out: places, paths, names of parameters, what is the same on every line.
write_baseline() {
    abidw --no-show-locs --no-comp-dir-path --no-corpus-path --no-elf-needed --no-parameter-names \
        --no-write-default-sizes --exported-interfaces-only --type-id-style hash "$1" |
        sed -E "s/^ +//
                s| path='[^']*'||
                /<elf-symbol name/s/ (visibility='default-visibility'|binding='global-binding')//g
                /<function-decl/s/ (mangled-name='[^']*'|visibility='default')//g" >"$2"
    # Nothing that counts was left out.
    abidiff --harmless --ignore-soname "$1" "$2"
}

compare() {
    local name status=0
    for name in "${libraries[@]}"; do
        local library=build/release/lib/lib$name.so baseline=tests/abi/$name.abi now=$work/lib$name.so
        stand_in "$name" include "$(soname "$library")" "$now" || return 1
        same_names "$library" "$now" || status=1
        if ! compatible "$baseline" "$now"; then
            echo "abi: $name: this breaks programs that are built; see \"Changing the interface\" in CONTRIBUTING.md" >&2
            status=1
        elif ! abidiff --harmless "$baseline" "$now"; then
            echo "abi: $name: additions, or what no built program notices: ./dev abi --accept takes it into the baseline"
        else
            echo "abi: $name: as in $baseline"
        fi
    done
    every_record_is_pinned || status=1
    return "$status"
}

accept() {
    local name
    for name in "${libraries[@]}"; do
        local library=build/release/lib/lib$name.so baseline=tests/abi/$name.abi now=$work/lib$name.so
        stand_in "$name" include "$(soname "$library")" "$now"
        same_names "$library" "$now"
        if [[ -e $baseline ]] && grep -q "soname='$(soname "$library")'" "$baseline" && ! compatible "$baseline" "$now"; then
            echo "abi: $name: refused: a change that is not an addition needs a new soname" >&2
            return 1
        fi
        write_baseline "$now" "$baseline"
    done
}

# Whether the comparison sees what it is there for: each line makes a change to a copy of the headers.
# EXPECTED LIBRARY HEADER PERL-EXPRESSION
changes() {
    cat <<'CHANGES'
breaks rvxcvl9 rvxcv/arith.h s/(rvxiAdd_8u32f_C1IR\(const )uint8_t/$1int8_t/
breaks rvxcvl9 rvxcv/arith.h s/(rvxiAdd_8u32f_C1IR\(const uint8_t \*\w+, )int32_t/$1int64_t/
breaks rvxcvl9 rvxcv/arith.h s/StatusCode (rvxiAdd_8u32f_C1IR)\(/void $1(/
breaks rvxcvl9 rvxcv/arith.h s/StatusCode rvxiAdd_8u32f_C1IR\([^;]*;//
breaks rvxcvl9 rvxcv/types.h s/(int32_t width;[^\n]*\n)( *int32_t height;[^\n]*\n)/$2$1/
breaks rvxcvl9 rvxcv/types.h s/(float theta;[^\n]*\n\} HoughLine;)/float weight;\n$1/
breaks rvxcvl9 rvxcv/morph.h s/(typedef struct GrayMorphEntry \{)/$1 int32_t inserted;/
breaks rvxcvl9 rvxcv/types.h s/BorderInMemory = 6/BorderInMemory = 7/
breaks rvxcvl9 rvxcv/types.h s/StatusBadSize = -6, .*//
breaks rvxcore rvxcore.h     s/(RVX_CPU_AVX2 UINT64_C\()0x10/${1}0x11/
breaks rvxcore rvxcore.h     s/int64_t bytes\);/int32_t bytes);/
passes rvxcvl9 rvxcv/arith.h s/(StatusCode rvxiAdd_8u32f_C1IR\()/StatusCode rvxiNew(void);\n$1/
passes rvxcvl9 rvxcv/types.h s/(NormL2 = 2)/$1, NormL3 = 3/
breaks rvxcvl9 rvxcv/types.h s/typedef int32_t NormKind;/typedef uint32_t NormKind;/
passes rvxcvl9 rvxcv/arith.h s/(rvxiAdd_8u32f_C1IR\()const /$1/
same   rvxcvl9 rvxcv/arith.h s/(rvxiAdd_8u32f_C1IR\(const uint8_t \*)\w+/$1other/
CHANGES
}

outcome() {
    if ! compatible "$1" "$2" >/dev/null; then
        echo breaks
    elif ! abidiff --harmless "$1" "$2" >/dev/null; then
        echo passes
    else
        echo same
    fi
}

changes_are_seen() {
    local expected name file expression found count=0 status=0
    while read -r expected name file expression; do
        rm -rf "$work/include"
        cp -r include "$work/include"
        perl -0pi -e "$expression" "$work/include/$file"
        if cmp -s "include/$file" "$work/include/$file"; then
            echo "abi: changes nothing in $file: $expression" >&2
            status=1
        fi
        stand_in "$name" "$work/include" "$(soname "build/release/lib/lib$name.so")" "$work/changed.so" || return 1
        found=$(outcome "tests/abi/$name.abi" "$work/changed.so")
        if [[ $found != "$expected" ]]; then
            echo "abi: $file: $expression: $found, expected $expected" >&2
            status=1
        fi
        count=$((count + 1))
    done < <(changes)
    stand_in rvxcvl9 include librvxcvl9.so.999 "$work/changed.so"
    [[ $(outcome tests/abi/rvxcvl9.abi "$work/changed.so") == breaks ]] || {
        echo "abi: a new soname is not noticed" >&2
        status=1
    }
    ((status == 0)) && echo "abi: $((count + 1)) deliberate changes, each seen for what it is"
    return "$status"
}

need "${build_packages[@]}" abigail-tools binutils perl
mkdir -p "$work"
configure_and_build release rvxcvl9 rvxcore
case ${1:-} in
--accept) accept ;;
--step) compare && changes_are_seen ;;
'') compare ;;
*)
    echo "usage: ./dev abi [--accept]" >&2
    exit 2
    ;;
esac

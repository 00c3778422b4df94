#!/usr/bin/env bash
# Debian packages from the finished release build: package.sh [--step]
#
# help:   package         Debian packages in out/: library, development files, program, Python *
# step
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# shellcheck source=scripts/common.sh
source scripts/common.sh

work=build/package
program=build/release/bin/rvxcv
version=$(sed -n 's/^project(rvxcv VERSION \([^ ]*\).*/\1/p' CMakeLists.txt)

# When the newest commit was made: two packages of one commit are the same.
commit_time() {
    git log -1 --format=%ct 2>/dev/null || stat -c %Y CHANGELOG.md
}

# The newest section of CHANGELOG.md in Debian's form.
debian_changelog() {
    printf 'rvxcv (%s) unstable; urgency=medium\n\n' "$version"
    awk '/^## / { ++section; next } section == 1 && NF { sub(/^- /, "* "); print "  " $0 }' CHANGELOG.md |
        fmt --tagged-paragraph --width=78
    printf '\n -- %s  %s\n' "$(sed -n 's/^Maintainer: //p' packaging/debian/control)" \
        "$(date --utc --rfc-email --date="@$SOURCE_DATE_EPOCH")"
}

commands() {
    "$program" --help | sed '1,/^Subcommands:/d' | awk '{ print $1 }'
}

manual_of() {
    help2man --no-info --version-string="$version" "$@" "$program"
}

# The manual page: what the program tells with --help, and then each of its commands.
manual() {
    local command
    manual_of --include packaging/manual.h2m
    echo '.SH COMMANDS'
    for command in $(commands); do
        printf '.SS "%s"\n' "$("$program" "$command" --help | sed -n 's/^Usage: //p')"
        manual_of --help-option="$command --help" |
            sed '1,/^\.SH DESCRIPTION/d; /^\.S[SH]/d' | sed -z 's/\.TP\n[^\n]*\\-\\-help\n[^\n]*\n//'
    done
}

# The Python package joins what is installed; objects that ./dev python has compiled are taken as they are.
install_python() {
    [[ -d python ]] || return 0
    (
        PKG_CONFIG_PATH=$(dirname "$(find "$PWD/$work/installed" -name rvxcv.pc)")
        export PKG_CONFIG_PATH RVXCV_NO_RPATH=1
        cd python
        /usr/bin/python3 setup.py -q egg_info --egg-base "$OLDPWD/$work" build --build-base "$OLDPWD/build/python/base" \
            install --root "$OLDPWD/$work/installed" --install-layout=deb
    ) >"$work/python.log" 2>&1 || {
        cat "$work/python.log"
        return 1
    }
}

make_packages() {
    configure_and_build release || return 1
    rm -rf "$work"
    rm -f out/*.deb
    mkdir -p "$work" out
    cp -r packaging/debian "$work/debian"
    SOURCE_DATE_EPOCH=$(commit_time)
    export SOURCE_DATE_EPOCH
    debian_changelog >"$work/debian/changelog"
    manual >"$work/debian/rvxcv.1"
    # Debian's folder of libraries has the processor in its name; the preset sets it back.
    cmake build/release -DCMAKE_INSTALL_LIBDIR="lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)" >"$work/configure.log"
    # The program is linked anew where its path to the library has to make room for the longer one.
    cmake --build build/release --target rvxcv >>"$work/configure.log"
    DESTDIR=$PWD/$work/installed cmake --install build/release --prefix /usr >"$work/install.log"
    cmake --preset release >>"$work/configure.log"
    install_python
    (cd "$work" && DEB_RULES_REQUIRES_ROOT=no debian/rules binary) >"$work/log" 2>&1 || {
        cat "$work/log"
        return 1
    }
    mv build/*_"$version"_*.deb out/
    ls -l out/*.deb
}

# They hold what Debian asks of packages, can be installed here, and work together wherever they are unpacked.
use_packages() {
    local package command
    lintian --fail-on error,warning out/*.deb
    apt-get install --simulate --quiet=2 ./out/*.deb >/dev/null
    rm -rf build/unpacked
    for package in out/*.deb; do
        dpkg-deb -x "$package" build/unpacked
    done
    tests/package/use_prefix.sh "$PWD/build/unpacked/usr"
    if [[ -d python ]]; then
        LD_LIBRARY_PATH=$(dirname "$(find "$PWD/build/unpacked" -name librvxcvl9.so.8)") \
            PYTHONPATH=$PWD/build/unpacked/usr/lib/python3/dist-packages PYTHONDONTWRITEBYTECODE=1 \
            /usr/bin/python3 -c '
import numpy, rvxcv
assert rvxcv.absdiff(numpy.uint8([[10, 20]]), numpy.uint8([[11, 18]])).tolist() == [[1, 2]]
print(rvxcv.__file__, "works")'
    fi
    for command in $(commands); do
        zgrep -q "^\.SS \"rvxcv $command " build/unpacked/usr/share/man/man1/rvxcv.1.gz || {
            echo "package: the manual page does not tell of $command" >&2
            return 1
        }
    done
}

need "${build_packages[@]}" debhelper help2man
[[ ! -d python ]] || need dh-python python3-dev python3-cffi python3-numpy python3-setuptools
make_packages
if [[ ${1:-} == --step ]]; then
    need lintian
    use_packages
fi

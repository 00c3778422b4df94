# shellcheck shell=bash
# shellcheck disable=SC2034 # used by those who source this
# What ./dev and its commands share: the packages they need and how a preset is built. Sourced with the project's folder as
# the working directory.

build_packages=(cmake ninja-build g++ pkg-config libcli11-dev libpng-dev libjpeg62-turbo-dev
    nlohmann-json3-dev libpugixml-dev libgtest-dev libbenchmark-dev)
test_packages=(clang libclang-rt-dev qemu-user)
lint_packages=(clang clang-format clang-tidy shellcheck pycodestyle)
jobs=$(nproc)

# Installs the packages that are missing, saying so.
need() {
    local package missing=()
    for package in "$@"; do
        if [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true) != installed ]]; then
            missing+=("$package")
        fi
    done
    if ((${#missing[@]} == 0)); then
        return
    fi
    local as_root=()
    if ((EUID != 0)); then
        as_root=(sudo)
    fi
    echo "Installing with apt-get: ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# configure_and_build PRESET [TARGET...]
configure_and_build() {
    local preset=$1
    shift
    cmake --preset "$preset" >"build/$preset.configure.log" || {
        cat "build/$preset.configure.log"
        return 1
    }
    cmake --build "build/$preset" -j "$jobs" ${1:+--target "$@"}
}

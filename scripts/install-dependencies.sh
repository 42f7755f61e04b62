#!/usr/bin/env bash
# Installs the Debian packages that are missing, and does nothing when none is.
#
# usage: install-dependencies.sh GROUP...     GROUP: build, test, checks, bench, fuzz
set -euo pipefail
# shellcheck source=scripts/steps.sh
source "$(dirname "${BASH_SOURCE[0]}")/steps.sh"

packages_of() {
    case $1 in
        build) echo g++ cmake ninja-build libtbb-dev libboost-dev libjsoncpp-dev ;;
        test) echo libgmock-dev libgtest-dev ;;
        checks) echo clang-14 clang-format-14 clang-tidy-14 doxygen dpkg-dev libclang-rt-14-dev pkgconf python3 ;;
        bench) echo libbenchmark-dev rapidjson-dev libabsl-dev libeigen3-dev re2c libprotobuf-dev libmsgpack-cxx-dev libcapnp-dev libflatbuffers-dev ;;
        fuzz) echo clang-14 libclang-rt-14-dev llvm-14 ;;
        *) fail "unknown group '$1'; there are build, test, checks, bench and fuzz" ;;
    esac
}

[ $# -gt 0 ] || fail "name at least one group: build, test, checks, bench, fuzz"
missing=()
for group in "$@"; do
    packages=$(packages_of "$group")
    for package in $packages; do
        if ! command -v dpkg-query >/dev/null; then
            echo "Not a Debian system: taking the packages of '$group' as installed ($packages)"
            break
        fi
        # What is asked twice (clang-14 stands in two groups) does no harm to apt-get.
        status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
        [ "$status" = installed ] || missing+=("$package")
    done
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null || fail "not root and no sudo; please install: ${missing[*]}"
    as_root=(sudo)
    # Without a terminal nobody could type a password, so rather fail than wait for one.
    [ -t 0 ] || as_root+=(-n)
    "${as_root[@]}" true || fail "sudo was refused; please install: ${missing[*]}"
fi
# apt-get waits for another apt-get that happens to run, and asks nothing.
apt_get() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -y -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3 "$@"
}
run_step apt-update "Reading the list of Debian packages" apt_get update
run_step apt-install "Installing ${missing[*]}" apt_get install --no-install-recommends "${missing[@]}"

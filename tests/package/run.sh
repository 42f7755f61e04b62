#!/usr/bin/env bash
# Installs the library into a prefix, moves the prefix, and lets a program outside the project use
# it: as archive and as shared library, each through find_package and through pkg-config.
#
# usage: run.sh
# The archive is that of build/release. The shared library is built without optimisation, since
# nothing is inlined then and a symbol that is not exported cannot hide.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# try_package KIND BUILD_FOLDER
try_package() {
    local kind=$1 build=$2 prefix=$work/$1/moved libraries config output
    cmake --build "$build" --target lumcore --parallel "$(nproc)"
    cmake --install "$build" --prefix "$work/$kind/first"
    mv "$work/$kind/first" "$prefix"

    cmake -G Ninja -S tests/package -B "$work/$kind/consumer" -DCMAKE_PREFIX_PATH="$prefix"
    cmake --build "$work/$kind/consumer"
    "$work/$kind/consumer/consumer"

    config=$(find "$prefix" -name lumcore.pc)
    libraries=$(dirname "$(dirname "$config")")
    # shellcheck disable=SC2046  # One option a word.
    g++ -std=c++20 tests/package/main.cpp -o "$work/$kind/by-pkg-config" \
        $(PKG_CONFIG_PATH=$(dirname "$config") pkg-config --cflags --libs lumcore)
    output=$(LD_LIBRARY_PATH=$libraries "$work/$kind/by-pkg-config")
    echo "$output"

    # What was built against must be what stands in the prefix, and no path of the build.
    if grep -rlF -e "$PWD" -e "$work/$kind/first" "$prefix" --include='*.cmake' --include='*.pc'; then
        echo "the files above name a folder of the build" >&2
        return 1
    fi
}

cmake --preset release
try_package static build/release

cmake --preset release -B build/package-shared -DCMAKE_BUILD_TYPE=Debug -DBUILD_SHARED_LIBS=ON \
    -DLUM_BUILD_TESTS=OFF -DLUM_BUILD_EXAMPLES=OFF
try_package shared build/package-shared
soname=$(readelf -d "$(find "$work/shared/moved" -name liblumcore.so)" | grep SONAME)
case $soname in
    *'[liblumcore.so.0]') ;;
    *) echo "the shared library's SONAME does not carry the major version: $soname" >&2; exit 1 ;;
esac
echo "The package works as archive and as shared library"

#!/usr/bin/env bash
# Installs the library into a prefix, moves the prefix, and lets a program outside the project use
# it: as archive and as shared library, each through find_package and through pkg-config.
#
# The programs of the pages in docs/ and of README.md are built against it, too, and have to print
# what the pages say.
#
# usage: run.sh
# The archive is that of build/release. The shared library is built without optimisation, since
# nothing is inlined then and a symbol that is not exported cannot hide.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# blocks_of PAGE LANGUAGES: what stands in the page's blocks of these languages.
blocks_of() {
    awk -v "languages=^($2)$" \
        '/^```/ { fenced = !fenced; inside = fenced && substr($0, 4) ~ languages; next } inside' "$1"
}

# compile SOURCE PROGRAM LIBRARIES: with the flags of pkg-config alone.
compile() {
    # shellcheck disable=SC2046  # One option a word.
    g++ -std=c++20 "$1" -o "$2" \
        $(PKG_CONFIG_PATH=$3/pkgconfig pkg-config --cflags --libs lumcore)
}

# try_page PAGE LIBRARIES
try_page() {
    local program=$work/page
    blocks_of "$1" cpp >"$program.cpp"
    blocks_of "$1" 'json|text' >"$program.expected"
    compile "$program.cpp" "$program" "$2"
    LD_LIBRARY_PATH=$2 "$program" >"$program.output"
    diff -u "$program.expected" "$program.output" ||
        { echo "the program of $1 prints something else than the page says" >&2; return 1; }
}

# try_package KIND BUILD_FOLDER
try_package() {
    local kind=$1 build=$2 prefix=$work/$1/moved libraries
    cmake --build "$build" --target lumcore --parallel "$(nproc)"
    cmake --install "$build" --prefix "$work/$kind/first"
    mv "$work/$kind/first" "$prefix"

    cmake -G Ninja -S tests/package -B "$work/$kind/consumer" -DCMAKE_PREFIX_PATH="$prefix"
    cmake --build "$work/$kind/consumer"
    "$work/$kind/consumer/consumer"

    libraries=$(dirname "$(find "$prefix" -name pkgconfig)")
    compile tests/package/main.cpp "$work/$kind/by-pkg-config" "$libraries"
    LD_LIBRARY_PATH=$libraries "$work/$kind/by-pkg-config"
    try_page README.md "$libraries"
    try_page docs/guide.md "$libraries"

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

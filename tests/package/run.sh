#!/usr/bin/env bash
# Installs the library into a prefix, moves the prefix, and lets a program outside the project use
# it: as archive and as shared library, each through find_package and through pkg-config. The same
# again with the Debian packages, installed in a root of their own.
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

# use_prefix KIND PREFIX: by a program of CMake's, and by one of pkg-config's. Sets `libraries`, the folder of
# the library.
use_prefix() {
    local kind=$1 prefix=$2
    cmake -G Ninja -S tests/package -B "$work/$kind/consumer" -DCMAKE_PREFIX_PATH="$prefix"
    cmake --build "$work/$kind/consumer"
    "$work/$kind/consumer/consumer"

    libraries=$(dirname "$(find "$prefix" -name pkgconfig)")
    compile tests/package/main.cpp "$work/$kind/by-pkg-config" "$libraries"
    LD_LIBRARY_PATH=$libraries "$work/$kind/by-pkg-config"
}

# try_package KIND BUILD_FOLDER
try_package() {
    local kind=$1 build=$2 prefix=$work/$1/moved libraries
    cmake --build "$build" --target lumcore --parallel "$(nproc)"
    cmake --install "$build" --prefix "$work/$kind/first"
    mv "$work/$kind/first" "$prefix"

    use_prefix "$kind" "$prefix"
    try_page README.md "$libraries"
    try_page docs/guide.md "$libraries"

    # What was built against must be what stands in the prefix, and no path of the build.
    if grep -rlF -e "$PWD" -e "$work/$kind/first" "$prefix" --include='*.cmake' --include='*.pc'; then
        echo "the files above name a folder of the build" >&2
        return 1
    fi
}

# try_debian_packages BUILD_FOLDER
try_debian_packages() {
    local root=$work/deb/root packages=$work/deb/packages package depends libraries
    # Nothing in the root is run, so it needs no other packages, and any user may do it. What the
    # packages run is ldconfig, which is to leave this system alone.
    local dpkg=(env PATH="$work/deb/bin:$PATH:/usr/sbin:/sbin" dpkg --root="$root" --force-depends
        --force-not-root --force-script-chrootless)
    cpack --config "$1/CPackConfig.cmake" -B "$packages"
    mkdir -p "$root"/var/lib/dpkg/{info,triggers,updates} "$work/deb/bin"
    touch "$root/var/lib/dpkg/status"
    ln -s /bin/true "$work/deb/bin/ldconfig"
    "${dpkg[@]}" --install "$packages"/liblumcore0_*.deb "$packages"/liblumcore-dev_*.deb
    # On a real system these would be installed, too.
    for package in liblumcore0 liblumcore-dev; do
        dpkg-query --admindir="$root/var/lib/dpkg" -W -f '${Depends}\n' "$package" |
            sed 's/ *([^)]*)//g; s/, */\n/g'
    done >"$work/deb/depends"
    for depends in libc6 libjsoncpp25 libjsoncpp-dev libtbb-dev liblumcore0; do
        grep -qx "$depends" "$work/deb/depends" ||
            { echo "no package depends on $depends" >&2; return 1; }
    done
    use_prefix deb "$root/usr"
    "${dpkg[@]}" --purge liblumcore-dev liblumcore0
    if [ -e "$root/usr" ]; then
        find "$root/usr" >&2
        echo "the files above stay when the packages are removed" >&2
        return 1
    fi
}

cmake --preset release
try_package static build/release

cmake --preset deb -B build/package-shared -DCMAKE_BUILD_TYPE=Debug
try_package shared build/package-shared
try_debian_packages build/package-shared
soname=$(readelf -d "$(find "$work/shared/moved" -name liblumcore.so)" | grep SONAME)
case $soname in
    *'[liblumcore.so.0]') ;;
    *) echo "the shared library's SONAME does not carry the major version: $soname" >&2; exit 1 ;;
esac
echo "The library works as archive, as shared library and from its Debian packages"

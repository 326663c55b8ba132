#!/usr/bin/env bash
# Makes every package into build/packages, and prints their names, sizes and SHA-256:
#
#   make-packages.sh            all: the two zips for Windows, the installer, the NuGet package, the Debian packages
#   make-packages.sh windows    all but the Debian packages
#   make-packages.sh debian     the Debian packages
#
# Windows packages are made from build/windows-release and build/windows-msvc, the Debian packages in build/package-debian;
# what is not built there is built. Nothing depends on the time or on the folder: their time is that of the newest entry in
# packaging/debian/changelog, or SOURCE_DATE_EPOCH.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
what=${1:-all}
case $what in
all | windows | debian) ;;
*)
    echo "usage: make-packages.sh [windows|debian]" >&2
    exit 2
    ;;
esac

fail() {
    echo "make-packages.sh: $1" >&2
    exit 1
}
# A step's output is shown when it fails.
quietly() { # WHAT COMMAND...
    local name=$1 log=$root/build/packages-$1.log
    shift
    "$@" >"$log" 2>&1 || {
        tail -n 30 "$log" >&2
        fail "$name failed; the whole log is $log"
    }
}

scripts/setup.sh package
out=$root/build/packages
work=$root/build/package-work
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
entry=$(dpkg-parsechangelog -l packaging/debian/changelog -S Version)
[ "$version" = "${entry%-*}" ] || fail "packaging/debian/changelog is at version $entry, CMakeLists.txt at $version"
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)}
export SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C.UTF-8
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros
umask 022
mkdir -p "$out"
rm -rf "$work"
mkdir -p "$work"

build_windows() { # PRESET
    [ -f "build/$1/build.ninja" ] || cmake --preset "$1"
    ninja -C "build/$1" shipped
}

windows_packages() {
    rm -f "$out"/*.zip "$out"/*.exe "$out"/*.nupkg
    local preset
    for preset in windows-release windows-msvc; do
        quietly "build-$preset" build_windows "$preset"
        quietly "zip-$preset" cpack --config "build/$preset/CPackConfig.cmake" -B "$work/$preset"
        mv "$work/$preset"/*.zip "$out/"
    done
    local abi
    for abi in mingw msvc; do
        (cd "$work" && cmake -E tar xf "$out/zebapi-$version-windows-x64-$abi.zip")
    done
    local mingw=$work/zebapi-$version-windows-x64-mingw msvc=$work/zebapi-$version-windows-x64-msvc
    quietly nuget scripts/make-nuget.py "$version" "$msvc" "$out/zebapi.$version.nupkg"
    quietly installer scripts/make-installer.py "$version" "$mingw" "$msvc" "$out/zebapi-$version-windows-x64-setup.exe"
}

debian_packages() {
    rm -f "$out"/*.deb
    local tree=$work/debian/zebapi
    mkdir -p "$tree"
    cp -R packaging/debian "$tree/debian"
    export ZEB_SOURCE=$root ZEB_BUILD=$root/build/package-debian
    quietly debian env -C "$tree" dpkg-buildpackage --build=binary --no-sign
    mv "$work"/debian/*.deb "$out/"
    mv "$work"/debian/*.changes "$work"/debian/*.buildinfo "$work/"
}

if [ "$what" != debian ]; then windows_packages; fi
if [ "$what" != windows ]; then debian_packages; fi
cd "$out"
for file in *; do
    printf '%-52s %9d  %s\n' "$file" "$(stat -c %s "$file")" "$(sha256sum "$file" | cut -d ' ' -f 1)"
done

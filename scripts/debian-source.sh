#!/usr/bin/env bash
# Fetches the sources of one Debian source package and unpacks what is needed of it:
#
#   debian-source.sh PACKAGE [PATTERN...]
#
# deps/debian-sources.lock pins each package's version, upstream archive and SHA-256. The archive goes to
# build/deps/archives/, its content (only what matches the tar PATTERNs, or everything) to build/deps/PACKAGE/, without
# the archive's own top folder. A package that the lock calls "patched" is unpacked whole, with Debian's patches applied.
# Does nothing when the same content is there. Installs nothing and needs no root: apt's own lists stay as they are.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
if [ $# -lt 1 ]; then
    echo "usage: debian-source.sh PACKAGE [PATTERN...]" >&2
    exit 2
fi
package=$1
shift

fail() {
    echo "debian-source.sh: $1" >&2
    exit 1
}

read -r version archive sum patched < <(awk -v name="$package" '$1 == name { print $2, $3, $4, $5 }' "$root/deps/debian-sources.lock") ||
    fail "deps/debian-sources.lock does not name '$package'"
archives=$root/build/deps/archives
target=$root/build/deps/$package
wanted="$archive $sum $*"
if [ -f "$target/.unpacked" ] && [ "$(cat "$target/.unpacked")" = "$wanted" ]; then exit 0; fi

mkdir -p "$archives"
debian=
if [ -n "$patched" ]; then debian=$(find "$archives" -name "${package}_$version-*.debian.tar.*" | sort -V | tail -n 1); fi
if [ -n "$patched" ] && [ -z "$debian" ] || ! echo "$sum  $archives/$archive" | sha256sum --check --status 2>/dev/null; then
    echo "Fetching $archive of the Debian source package $package"
    # A configuration of its own that asks apt's own sources for source packages.
    apt=$root/build/deps/apt
    rm -rf "$apt/sources"
    mkdir -p "$apt/lists/partial" "$apt/cache/archives/partial" "$apt/sources"
    for file in /etc/apt/sources.list.d/*.sources; do
        [ -f "$file" ] || continue
        grep -qi debian "$file" && sed 's/^Types:.*/Types: deb-src/' "$file" >"$apt/sources/$(basename "$file")"
    done
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -f "$file" ] || continue
        sed -n '/debian/s/^deb /deb-src /p' "$file" >"$apt/sources/$(basename "$file" .list).src.list"
    done
    options=(-o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$apt/sources"
        -o Dir::State::Lists="$apt/lists" -o Dir::Cache="$apt/cache")
    log=$archives/$package.log
    exact=$package=$version
    if [ -n "$patched" ]; then exact=$package; fi
    if ! { apt-get "${options[@]}" update &&
        cd "$archives" && apt-get "${options[@]}" source --download-only --only-source "$exact"; } >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        fail "fetching $package $version failed; the whole log is $log"
    fi
    echo "$sum  $archives/$archive" | sha256sum --check --status ||
        fail "$archive does not have the SHA-256 that deps/debian-sources.lock pins"
fi

rm -rf "$target"
mkdir -p "$target"
patterns=()
if [ $# -gt 0 ]; then patterns=(--wildcards "$@"); fi
tar -C "$target" --strip-components=1 -xf "$archives/$archive" "${patterns[@]}"
if [ -n "$patched" ]; then
    debian=$(find "$archives" -name "${package}_$version-*.debian.tar.*" | sort -V | tail -n 1)
    [ -n "$debian" ] || fail "the archive has no revision of $package $version"
    tar -C "$target" -xf "$debian"
    while read -r patch; do
        patch -d "$target" -p1 --quiet --no-backup-if-mismatch <"$target/debian/patches/$patch" ||
            fail "the patch $patch of $(basename "$debian") does not apply"
    done < <(sed 's/[[:space:]]*#.*//; /^$/d' "$target/debian/patches/series")
fi
printf '%s\n' "$wanted" >"$target/.unpacked"

#!/usr/bin/env bash
# Shows the subjects of a real mailbox three times, from one store file: read by zeb.exe and zebapi.dll under Wine, as
# MinGW-w64 builds them and in the MSVC ABI, and by zeb and libzebapi.so natively. The last four lines are the three
# counts and "identical".
#
# Installs what is missing (as root). All output is in build/; it uses its own Wine prefix and registry file, in
# build/demo/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
root=$PWD
demo=$root/build/demo
linux=$root/build/linux-release/bin
windows=$root/build/windows-release/bin
msvc=$root/build/windows-msvc/bin
mailbox=$root/build/deps/node_modules/pst-extractor/example/testdata/enron.pst
# Two folders of the mailbox together make an inbox worth showing.
inbox=("lokay-m/MLOKAY (Non-Privileged)/Personal" "lokay-m/MLOKAY (Non-Privileged)/TW-Commercial Group")

# Nothing outside the checkout is written, including compiler and font caches.
export CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_DIR=$root/build/ccache XDG_CACHE_HOME=$root/build/cache

if [ $# -gt 0 ]; then
    echo "usage: ./run.sh" >&2
    exit 2
fi

fail() {
    echo "run.sh: $1" >&2
    exit 1
}
step() { printf '== %s\n' "$1"; }

# Ninja's own status line on a terminal; elsewhere one line for every tenth of the work.
build() { # PRESET TARGET...
    local preset=$1 log=$demo/build-$1.log
    shift
    step "building for ${preset%-release}"
    cmake --preset "$preset" >"$log" 2>&1 || {
        tail -n 20 "$log" >&2
        fail "configuring $preset failed; the whole log is $log"
    }
    if [ -t 1 ]; then
        ninja -C "build/$preset" "$@" || fail "building $preset failed"
        return
    fi
    ninja -C "build/$preset" "$@" 2>&1 | tee -a "$log" |
        awk -F'[][/]' '/^\[[0-9]+\/[0-9]+\]/ { part = int(10 * $2 / $3); if (part > last) { last = part; print "   " $2 " of " $3; fflush() } }' ||
        { tail -n 40 "$log" >&2; fail "building $preset failed; the whole log is $log"; }
}

export XDG_CONFIG_HOME=$demo/config ZEBAPI_REGISTRY=$demo/registry.reg
unset ZEBAPI_LOG ZEBSTORE_TRACE ZEBSTORE_FAULT
native() { "$linux/zeb" "$@"; }
# Each Windows build has its own Wine prefix, so it uses its own provider.
under_wine() { # BIN_DIR ARG...
    local bin=$1
    shift
    ZEB_WINEPREFIX=$(prefix_of "$bin") "$root/scripts/wine-run.sh" "$bin/zeb.exe" "$@" 2>"$demo/wine-errors.txt" || {
        cat "$demo/wine-errors.txt" >&2
        return 1
    }
}
prefix_of() { # BIN_DIR
    if [ "$1" = "$msvc" ]; then echo "$demo/wine-msvc"; else echo "$demo/wine"; fi
}
stop_wine() {
    local bin prefix
    for bin in "$windows" "$msvc"; do
        prefix=$(prefix_of "$bin")
        if [ -d "$prefix" ]; then
            WINEPREFIX=$prefix WINEDEBUG=-all wineserver --kill >/dev/null 2>&1 || true
        fi
    done
}
trap stop_wine EXIT

mkdir -p "$demo"
step "installing what is missing"
scripts/setup.sh run || fail "installing what the build needs failed"
build linux-release zeb zeb-import zebapi zebstore
build windows-release zeb zebapi zebstore
build windows-msvc zeb zebapi zebstore

# The store is created again when its mailbox or the importer is newer.
store=$demo/demo.zeb
stamp=$demo/store.stamp
made_from() {
    printf '%s\n' "$root" "${inbox[@]}"
    sha256sum "$mailbox" "$linux/zeb-import" "$linux/libzebstore.so" "$linux/libzebapi.so"
}
if ! made_from | cmp -s - "$stamp" || [ ! -f "$store" ]; then
    step "bringing the mailbox into a store"
    rm -f "$demo"/demo.zeb* "$stamp" "$ZEBAPI_REGISTRY"
    native provider install >/dev/null || fail "registering the provider failed"
    native profile create demo --store "$store" --default >/dev/null || fail "creating the profile failed"
    "$linux/zeb-import" pst "$mailbox" --inbox "${inbox[0]}" --inbox "${inbox[1]}" ||
        fail "importing the mailbox failed"
    made_from >"$stamp"
fi

for bin in "$windows" "$msvc"; do
    registered=$(prefix_of "$bin")/.registered
    if printf '%s\n' "$store" | cmp -s - "$registered"; then continue; fi
    step "preparing Wine for $(basename "$(dirname "$bin")")"
    under_wine "$bin" provider install >/dev/null || fail "registering the provider under Wine failed"
    under_wine "$bin" profile delete demo >/dev/null 2>&1 || true
    under_wine "$bin" profile create demo --store "Z:${store//\//\\}" --default >/dev/null ||
        fail "creating the profile under Wine failed"
    printf '%s\n' "$store" >"$registered"
done

step "the inbox, read by zeb.exe under Wine"
under_wine "$windows" inbox --utc >"$demo/inbox-wine.txt" || fail "zeb.exe cannot read the inbox"
cat "$demo/inbox-wine.txt"
step "the inbox, read by zeb.exe in the MSVC ABI under Wine"
under_wine "$msvc" inbox --utc >"$demo/inbox-msvc.txt" || fail "zeb.exe in the MSVC ABI cannot read the inbox"
cat "$demo/inbox-msvc.txt"
step "the inbox, read by zeb"
native inbox --utc >"$demo/inbox-native.txt" || fail "zeb cannot read the inbox"
cat "$demo/inbox-native.txt"

count() { # FILE
    local last
    last=$(tail -n 1 "$1")
    [[ $last =~ ^([0-9,]+)\ messages?$ ]] || fail "$1 does not end with a count"
    printf '%s' "${BASH_REMATCH[1]//,/}"
}
in_wine=$(count "$demo/inbox-wine.txt")
in_msvc=$(count "$demo/inbox-msvc.txt")
in_linux=$(count "$demo/inbox-native.txt")
echo
for other in wine msvc; do
    if ! cmp -s "$demo/inbox-$other.txt" "$demo/inbox-native.txt"; then
        diff "$demo/inbox-$other.txt" "$demo/inbox-native.txt" | head -n 20 >&2 || true
        fail "the lists inbox-$other.txt and inbox-native.txt in $demo differ"
    fi
done
[ "$in_linux" -ge 50 ] || fail "the inbox has only $in_linux messages"
echo "zeb.exe: $in_wine messages"
echo "zeb.exe (MSVC ABI): $in_msvc messages"
echo "zeb: $in_linux messages"
echo "identical"

#!/usr/bin/env bash
# Runs one Windows program under Wine in a prefix of the project's own: wine-run.sh PROGRAM [ARG...].
# ZEB_WINEPREFIX names another prefix. Never touches ~/.wine.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${ZEB_WINEPREFIX:-$root/build/wine}
# A library called mapi32.dll is the file that was named, as on Windows, not Wine's own.
export WINEARCH=win64 WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d;*mapi32,*mapistub=n,b"
# Of all that Wine has to say only why memory was not to be had: a program that can not start for it ends with code 1,
# and without this with no word.
export WINEDEBUG=${WINEDEBUG:--all,err+virtual}

# Wine's loader lies at 0x7D000000, and Linux begins its heap anywhere in the gigabyte behind it: in one of some 8,000
# programs on the page at 0x7FFE0000, which every Windows program has, and Wine gives up. With nothing left to chance
# the heap begins right behind the loader; where that is forbidden, as in many containers, there is to be no such heap
# (what glibc uses for huge pages comes from elsewhere). Programs that the program starts inherit either.
steady=(setarch --addr-no-randomize)
"${steady[@]}" true 2>/dev/null || steady=(env GLIBC_TUNABLES=glibc.malloc.hugetlb=2)

mkdir -p "$(dirname "$WINEPREFIX")"
if [ ! -f "$WINEPREFIX/.ready" ]; then
    exec 9>"$WINEPREFIX.lock"
    flock 9
    if [ ! -f "$WINEPREFIX/.ready" ]; then
        if ! "${steady[@]}" wineboot --init >"$WINEPREFIX.log" 2>&1 9>&-; then
            cat "$WINEPREFIX.log" >&2
            echo "wine-run.sh: making the Wine prefix $WINEPREFIX failed" >&2
            exit 1
        fi
        wineserver --wait 9>&- || true
        touch "$WINEPREFIX/.ready"
    fi
    exec 9>&-
fi
# A server that outlives the program: Debian's ends with its last client, and starting it anew costs most of a start.
"${steady[@]}" wineserver --persistent=60 </dev/null >/dev/null 2>&1 || true
exec "${steady[@]}" wine "$@"

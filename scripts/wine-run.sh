#!/usr/bin/env bash
# Runs a Windows program under Wine in the project's own prefix: wine-run.sh PROGRAM [ARG...]. ZEB_WINEPREFIX names
# another prefix. Never touches ~/.wine.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${ZEB_WINEPREFIX:-$root/build/wine}
# Native mapi32.dll first: the named file is loaded, as on Windows, not Wine's own.
export WINEARCH=win64 WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d;*mapi32,*mapistub=n,b"
# Of Wine's messages only the one about missing memory: a program that cannot start because of it ends with code 1,
# otherwise silently.
export WINEDEBUG=${WINEDEBUG:--all,err+virtual}

# Wine's loader is at 0x7D000000, and Linux places its heap randomly in the gigabyte after it: for one of about 8,000
# programs on the page at 0x7FFE0000, which every Windows program uses, and Wine fails. Without randomization the heap
# begins right after the loader; where that is forbidden, as in many containers, the heap is disabled (glibc's huge-page
# mode allocates elsewhere). Programs that the program starts inherit either.
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
# A persistent server: Debian's ends with its last client, and restarting it is most of a program's start time.
"${steady[@]}" wineserver --persistent=60 </dev/null >/dev/null 2>&1 || true
exec "${steady[@]}" wine "$@"

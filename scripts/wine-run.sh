#!/usr/bin/env bash
# Runs one Windows program under Wine in a prefix of the project's own: wine-run.sh PROGRAM [ARG...].
# ZEB_WINEPREFIX names another prefix. Never touches ~/.wine.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# A library called mapi32.dll is the file that was named, as on Windows, not Wine's own.
export WINEPREFIX=${ZEB_WINEPREFIX:-$root/build/wine}
export WINEDEBUG=${WINEDEBUG:--all} WINEARCH=win64 WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d;*mapi32,*mapistub=n,b"
mkdir -p "$(dirname "$WINEPREFIX")"
if [ ! -f "$WINEPREFIX/.ready" ]; then
    exec 9>"$WINEPREFIX.lock"
    flock 9
    if [ ! -f "$WINEPREFIX/.ready" ]; then
        wineboot --init >/dev/null 2>&1 9>&-
        wineserver --wait 9>&- || true
        touch "$WINEPREFIX/.ready"
    fi
    exec 9>&-
fi
# A server that outlives the program: Debian's ends with its last client, and starting it anew costs most of a start.
wineserver --persistent=60 </dev/null >/dev/null 2>&1 || true
exec wine "$@"

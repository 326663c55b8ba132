#!/usr/bin/env bash
# Checks the exported names and the imports of the libraries that are built: check-exports.sh [LIBRARY...]
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
if [ $# -eq 0 ]; then
    shopt -s nullglob
    set -- "$root"/build/*/bin/lib{zebapi,zebstore}.so "$root"/build/*/bin/{zebapi,zebstore}.dll
    if [ $# -eq 0 ]; then
        echo "check-exports.sh: no library is built yet" >&2
        exit 2
    fi
fi
for library in "$@"; do
    echo "$library"
    python3 "$root/tests/install/check_exports.py" "$library"
done

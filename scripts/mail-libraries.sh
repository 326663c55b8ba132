#!/usr/bin/env bash
# Compiles the libraries that zeb-import reads mail with for Windows (cmake/mail-libraries), once for both Windows builds:
# build/mail-libraries/bin/ gets the DLLs, lib/ their import libraries, in the forms of both ABIs. Does nothing when they
# are up to date. Usage: mail-libraries.sh [DEPS [OUTPUT]]; DEPS is where scripts/setup.sh unpacked the sources.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
deps=${1:-$root/build/deps}
out=${2:-$root/build/mail-libraries}

mkdir -p "$out"
exec 9>"$out/.lock"
flock 9
# As in every build of the project, all clones share the compiler cache.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
log=$out/build.log
if ! { cmake -S "$root/cmake/mail-libraries" -B "$out" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64.cmake" \
    -DCMAKE_BUILD_TYPE=Release -DZEB_DEPS_DIR="$deps" && ninja -C "$out"; } >"$log" 2>&1; then
    grep -E 'error|undefined|FAILED' "$log" | head -n 20 >&2 || tail -n 20 "$log" >&2
    echo "mail-libraries.sh: the build failed; the whole log is $log" >&2
    exit 1
fi

#!/usr/bin/env bash
# clang-tidy over the product's sources: check-tidy.sh [FILE...].
# A file is skipped when its text, headers and settings have not changed since it last passed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
passed=build/tidy-passed
mkdir -p "$passed"
# What is parsed: single files that are named, else all of the product, several sources at once, as they are compiled.
commands=build/tidy
unity=ON
[ $# -gt 0 ] && commands=build/tidy-single unity=OFF
# Nothing is built there, and clang does not read what GCC precompiled.
cmake --preset linux-asan -B "$commands" -DZEB_UNITY=$unity -DZEB_PRECOMPILE=OFF >"$passed/configure.log" 2>&1 || {
    cat "$passed/configure.log" >&2
    exit 2
}
settings=$(cat .clang-tidy scripts/check-tidy.sh <(clang-tidy --version) | sha256sum)
headers=$(git ls-files -z --cached --others --exclude-standard '*.h' '*.inc' | sort -z | xargs -0 cat | sha256sum)
if [ $# -gt 0 ]; then files=("$@"); else
    mapfile -t files < <(python3 - "$PWD" "$commands" <<'END'
import json, os, re, sys
root, build = sys.argv[1], os.path.join(sys.argv[1], sys.argv[2])
product = re.compile(r"(platform|framework|qorlog|qorth|zebapi|zebstore|tools)/.*\.(cpp|cxx)$")
for file in sorted({entry["file"] for entry in json.load(open(build + "/compile_commands.json"))}):
    inside = os.path.relpath(file, build if file.startswith(build) else root)
    if product.match(inside):
        print(os.path.relpath(file, root))
END
    )
fi
# The text of a source, or of the sources that a generated one includes.
text() {
    cat "$1"
    sed -n 's/^#include "\(.*\.cpp\)"$/\1/p' "$1" | xargs -r cat
}
one() {
    local file=$1 key
    key=$( (printf '%s%s' "$settings" "$headers" && text "$file") | sha256sum | cut -d' ' -f1)
    [ -f "$passed/$key" ] && return 0
    # Sources that are included on purpose; warnings that only GCC knows.
    if clang-tidy -p "$commands" --quiet --checks=-bugprone-suspicious-include \
        --extra-arg=-Wno-unknown-warning-option "$file" 2>"$passed/$key.err"; then
        rm -f "$passed/$key.err"
        touch "$passed/$key"
        return 0
    fi
    grep -v 'warnings generated\|Suppressed\|Use -header-filter' "$passed/$key.err" || true
    rm -f "$passed/$key.err"
    return 1
}
export -f one text
export settings headers passed commands
printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P "$(nproc)" bash -c 'one "$0"'

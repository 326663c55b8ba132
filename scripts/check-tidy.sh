#!/usr/bin/env bash
# clang-tidy over the product's sources: check-tidy.sh [FILE...].
# A file is skipped when its text, headers and settings have not changed since it last passed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
passed=build/tidy-passed
mkdir -p "$passed"
# A command for each source, and none that uses what GCC precompiled. Nothing is built there.
commands=build/tidy
cmake --preset linux-asan -B "$commands" -DZEB_UNITY=OFF -DZEB_PRECOMPILE=OFF >"$passed/configure.log" 2>&1 || {
    cat "$passed/configure.log" >&2
    exit 2
}
settings=$(cat .clang-tidy <(clang-tidy --version) | sha256sum)
headers=$(git ls-files -z --cached --others --exclude-standard '*.h' '*.inc' | sort -z | xargs -0 cat | sha256sum)
if [ $# -gt 0 ]; then files=("$@"); else
    mapfile -t files < <(git ls-files --cached --others --exclude-standard '*.cpp' |
        grep -E '^(platform|framework|qorlog|qorth|zebapi|zebstore|tools)/' | grep -v '/windows/')
fi
one() {
    local file=$1 key
    key=$(printf '%s%s' "$settings" "$headers" | cat - "$file" | sha256sum | cut -d' ' -f1)
    [ -f "$passed/$key" ] && return 0
    if clang-tidy -p "$commands" --quiet "$file" 2>"$passed/$key.err"; then
        rm -f "$passed/$key.err"
        touch "$passed/$key"
        return 0
    fi
    grep -v 'warnings generated\|Suppressed\|Use -header-filter' "$passed/$key.err" || true
    rm -f "$passed/$key.err"
    return 1
}
export -f one
export settings headers passed commands
printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P "$(nproc)" bash -c 'one "$0"'

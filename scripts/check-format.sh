#!/usr/bin/env bash
# Fails when clang-format-19 would change a source file; --fix formats instead.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=(--dry-run -Werror)
[ "${1:-}" = --fix ] && mode=(-i)
git ls-files -z --cached --others --exclude-standard '*.cpp' '*.h' |
    xargs -0 -r -n 20 -P "$(nproc)" clang-format-19 "${mode[@]}"

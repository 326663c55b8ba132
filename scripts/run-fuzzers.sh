#!/usr/bin/env bash
# Runs every fuzzer of a build for a bounded time: run-fuzzers.sh BUILD_DIR [SECONDS]. Starts from the committed seeds
# in fuzz/seeds/NAME; what it finds interesting is kept under build/fuzz/NAME, a crash as build/fuzz/NAME/crash-*.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=${1:?usage: run-fuzzers.sh BUILD_DIR [SECONDS]}
seconds=${2:-15}
one() { # FUZZER SECONDS
    local name corpus seeds=()
    name=$(basename "$1" _fuzzer)
    corpus=build/fuzz/$name
    mkdir -p "$corpus"
    if [ -d "fuzz/seeds/$name" ]; then seeds=("fuzz/seeds/$name"); fi
    if "$1" -max_total_time="$2" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$corpus/" "$corpus" "${seeds[@]}" >"$corpus.log" 2>&1; then
        echo "$name: $(grep '^Done' "$corpus.log")"
    else
        echo "$name: FAILED, the input is in $corpus/"
        tail -n 40 "$corpus.log"
        return 1
    fi
}
export -f one
mapfile -t fuzzers < <(find "$build/bin" -maxdepth 1 -name '*_fuzzer' -type f | sort)
[ ${#fuzzers[@]} -gt 0 ] || {
    echo "run-fuzzers.sh: no fuzzer in $build/bin" >&2
    exit 2
}
printf '%s\0' "${fuzzers[@]}" | xargs -0 -n 1 -P "$(nproc)" bash -c 'one "$0" '"$seconds"

#!/usr/bin/env bash
# Runs every fuzzer of a build for a bounded time: run-fuzzers.sh BUILD_DIR [SECONDS]. Starts from the committed seeds
# in fuzz/seeds/NAME; what it finds interesting is kept under build/fuzz/NAME, a crash as build/fuzz/NAME/crash-*.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=${1:?usage: run-fuzzers.sh BUILD_DIR [SECONDS]}
seconds=${2:-15}
found=no
for fuzzer in "$build"/bin/*_fuzzer; do
    [ -x "$fuzzer" ] || continue
    found=yes
    name=$(basename "$fuzzer" _fuzzer)
    corpus=build/fuzz/$name
    mkdir -p "$corpus"
    seeds=()
    [ -d "fuzz/seeds/$name" ] && seeds=("fuzz/seeds/$name")
    echo "fuzzing $name for $seconds s"
    "$fuzzer" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$corpus/" "$corpus" "${seeds[@]}" 2>&1 | tail -n 12
done
[ $found = yes ] || {
    echo "run-fuzzers.sh: no fuzzer in $build/bin" >&2
    exit 2
}

#!/usr/bin/env bash
# Runs every fuzzer of a build:
#
#   run-fuzzers.sh BUILD_DIR           a fixed walk from the committed seeds in fuzz/seeds/NAME: the same sources give
#                                      the same answer, so that a failure belongs to the change that made it
#   run-fuzzers.sh BUILD_DIR SECONDS   searches on for so long, by chance, from the seeds and what earlier searches kept
#
# What is found interesting is kept under build/fuzz/NAME, an input that fails as build/fuzz/NAME/crash-*; once it is
# mended it belongs to the seeds.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=${1:?usage: run-fuzzers.sh BUILD_DIR [SECONDS]}
seconds=${2:-}
one() { # FUZZER SECONDS
    local name corpus found bound seeds=()
    name=$(basename "$1" _fuzzer)
    corpus=build/fuzz/$name
    mkdir -p "$corpus"
    if [ -n "$2" ]; then
        found=$corpus
        bound=("-max_total_time=$2")
    else
        found=$corpus-walk
        rm -rf "$found" && mkdir "$found"
        bound=(-seed=1 -runs=100000 -reload=0)
        # An input of this one is a store file, checked and repaired: twenty a second.
        if [ "$name" = store_file ]; then bound=(-seed=1 -runs=700 -reload=0 -len_control=0 -max_len=300); fi
    fi
    if [ -d "fuzz/seeds/$name" ]; then seeds=("fuzz/seeds/$name"); fi
    local status=0
    # Addresses decide what a fuzzer tries next: without random ones, where the system allows that, a walk is the same
    # each time.
    local fixed=(setarch -R)
    "${fixed[@]}" true 2>/dev/null || fixed=()
    "${fixed[@]}" "$1" "${bound[@]}" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$corpus/" "$found" "${seeds[@]}" >"$corpus.log" 2>&1 || status=1
    [ "$found" = "$corpus" ] || rm -rf "$found"
    if [ $status -eq 0 ]; then
        echo "$name: $(grep '^Done' "$corpus.log")"
    else
        echo "$name: FAILED, the input is in $corpus/"
        tail -n 40 "$corpus.log"
    fi
    return $status
}
export -f one
mapfile -t fuzzers < <(find "$build/bin" -maxdepth 1 -name '*_fuzzer' -type f | sort)
[ ${#fuzzers[@]} -gt 0 ] || {
    echo "run-fuzzers.sh: no fuzzer in $build/bin" >&2
    exit 2
}
printf '%s\0' "${fuzzers[@]}" | xargs -0 -I{} -P "$(nproc)" bash -c 'one "$1" "$2"' one {} "$seconds"

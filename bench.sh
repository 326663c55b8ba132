#!/usr/bin/env bash
# Measures the library and the provider against hand-written baselines, each pair in one run, natively on Linux, and
# prints one line "RATIO name value goal" per measurement; all figures are written as JSON to build/bench/results.json.
#
#   ./bench.sh [NAME...]     all, or those named
#   ./bench.sh --huge        stores of 10,000,000 messages (3.3 GB, some minutes to make)
#   ./bench.sh --peers       against other programs of Debian's, which are installed
#   ./bench.sh --short       small stores and few pairs: shows that it works, says nothing about speed
#   ./bench.sh --preset NAME ...   another build than linux-release, for --short with sanitizers
#
# Installs what is missing (as root). The large stores are made once and kept in build/bench/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

preset=linux-release
if [ "${1:-}" = --preset ]; then
    preset=${2:?usage: ./bench.sh [--preset NAME] [--short] [NAME...]}
    shift 2
fi
purpose=bench
for argument in "$@"; do
    case $argument in --peers | import-peer) purpose=peers ;; esac
done
scripts/setup.sh "$purpose" >&2
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros
{
    cmake --preset "$preset" >build/configure-bench.log 2>&1 || {
        tail -n 20 build/configure-bench.log >&2
        exit 1
    }
    ninja -C "build/$preset" zebbench >build/build-bench.log 2>&1 || {
        grep -E 'error|FAILED' -A 5 build/build-bench.log | head -n 40 >&2
        exit 1
    }
}
mkdir -p build/bench
exec "build/$preset/bin/zebbench" --folder build/bench "$@"

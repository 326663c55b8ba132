#!/usr/bin/env bash
# Measures the library and the provider against hand-written baselines, each pair in one run, and prints one line
# "RATIO name value goal" per measurement; all figures are written as JSON to build/bench. Natively on Linux; what a call of
# the library costs also on Windows, under Wine, in both C++ ABIs (names with -mingw and -msvc at the end).
#
#   ./bench.sh [NAME...]     all, or those named
#   ./bench.sh --huge        stores of 10,000,000 messages (3.3 GB, some minutes to make)
#   ./bench.sh --peers       against other programs of Debian's, which are installed
#   ./bench.sh --short       small stores and few pairs: shows that it works, says nothing about speed
#   ./bench.sh --preset NAME ...   another build than linux-release, for --short with sanitizers; without Windows
#
# Installs what is missing (as root). The large stores are made once and kept in build/bench/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

preset=linux-release
abis=(mingw:windows-release msvc:windows-msvc)
if [ "${1:-}" = --preset ]; then
    preset=${2:?usage: ./bench.sh [--preset NAME] [--short] [NAME...]}
    abis=()
    shift 2
fi
purpose=bench
options=() native=() windows=()
for argument in "$@"; do
    case $argument in
    --peers | import-peer) purpose=peers ;;
    esac
    case $argument in
    --peers | --huge) abis=() options+=("$argument") ;;
    -*) options+=("$argument") ;;
    *-mingw | *-msvc) windows+=("$argument") ;;
    *) native+=("$argument") ;;
    esac
done
scripts/setup.sh "$purpose" >&2
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros

build() { # PRESET
    cmake --preset "$1" >build/configure-bench.log 2>&1 || {
        tail -n 20 build/configure-bench.log >&2
        exit 1
    }
    ninja -C "build/$1" zebbench >build/build-bench.log 2>&1 || {
        grep -E 'error|FAILED' -A 5 build/build-bench.log | head -n 40 >&2
        exit 1
    }
}

mkdir -p build/bench
if [ ${#native[@]} -gt 0 ] || [ ${#windows[@]} -eq 0 ]; then
    build "$preset"
    "build/$preset/bin/zebbench" --folder build/bench "${options[@]}" "${native[@]}"
fi
[ ${#native[@]} -eq 0 ] || [ ${#windows[@]} -gt 0 ] || exit 0
for abi in "${abis[@]}"; do
    names=()
    for name in "${windows[@]}"; do
        case $name in *-"${abi%:*}") names+=("$name") ;; esac
    done
    [ ${#names[@]} -gt 0 ] || [ ${#windows[@]} -eq 0 ] || continue
    build "${abi#*:}"
    ZEB_WINEPREFIX=$PWD/build/bench/wine-${abi%:*} scripts/wine-run.sh "build/${abi#*:}/bin/zebbench.exe" \
        --folder "build/bench/${abi%:*}" "${options[@]}" "${names[@]}"
done

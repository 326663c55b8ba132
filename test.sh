#!/usr/bin/env bash
# Runs every test there is, on every target, and ends with one line "N passed, N failed".
#
#   ./test.sh           everything: checks of the sources, Linux with address and undefined-behaviour sanitizers,
#                       Linux with the thread sanitizer, Windows in both C++ ABIs under Wine, the packages, a fixed walk
#                       of the fuzzers, clang-tidy, the benchmarks in their short form
#   ./test.sh --quick   the developer's loop: source checks and the Linux suite with sanitizers, but for the tests that
#                       drive the tools as processes (a minute of their own)
#
# Installs what is missing (as root). Logs are in build/<preset>/test-logs.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

quick=no
case ${1:-} in
"") ;;
--quick) quick=yes ;;
*)
    echo "usage: ./test.sh [--quick]" >&2
    exit 2
    ;;
esac

started=$SECONDS
tally=build/tally.txt
mkdir -p build
: >"$tally"
say() { printf '\n== %s (%d s)\n' "$1" $((SECONDS - started)); }

# A check counts as one test.
check() { # NAME COMMAND...
    local name=$1 log=build/check-$1.log
    shift
    if "$@" >"$log" 2>&1; then
        echo "  $name: passed"
        echo "check/$name 1 0" >>"$tally"
    else
        echo "  $name: FAILED"
        tail -n 60 "$log"
        echo "check/$name 0 1" >>"$tally"
    fi
}

# A build that fails is a failed test, and nothing of that build is run.
build() { # PRESET TARGET...
    local preset=$1 log=build/build-$1.log
    shift
    if cmake --preset "$preset" >"$log" 2>&1 && ninja -C "build/$preset" "$@" >>"$log" 2>&1; then
        return 0
    fi
    echo "  build of $preset: FAILED"
    grep -E 'error|FAILED|CMake Error' -A 5 "$log" | head -n 80
    echo "build/$preset 0 1" >>"$tally"
    return 1
}

tests() { scripts/run-tests.py --tally "$tally" "$@"; }

say "installing what is missing"
scripts/setup.sh test || exit 1
# All clones share the compiler cache, if there is one.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
# It caches objects with precompiled headers only with these settings.
export CCACHE_SLOPPINESS=pch_defines,time_macros
# No exit code of the tools is 99: a test that expects a failure does not take a finding for it.
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:detect_stack_use_after_return=1:exitcode=99
export UBSAN_OPTIONS=print_stacktrace=1:exitcode=99
export LSAN_OPTIONS=suppressions=$PWD/tests/support/lsan.supp:print_suppressions=0
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1

say "sources"
check layering python3 scripts/check-layering.py
check layering-self-test python3 scripts/check-layering.py --self-test
check rooms-picture python3 scripts/draw-rooms.py --check
check format scripts/check-format.sh
check readme python3 scripts/check-readme.py
check concept-pictures python3 scripts/draw-concepts.py --check
check documents-code python3 scripts/document-code.py
check documents-site python3 scripts/make-docs.py
check documents-code-self-test python3 scripts/document-code.py --self-test
check boundary scripts/check-boundary
check boundary-self-test scripts/check-boundary --self-test
check coverage-self-test scripts/coverage.py --self-test
check mutate-self-test scripts/mutate.py --self-test

say "Linux, address and undefined-behaviour sanitizers"
if [ $quick = yes ]; then
    build linux-asan all && tests build/linux-asan --only '^(?!tools_test|import_test|soak_)'
elif build linux-asan all; then
    rm -rf build/linux-asan/profiles
    tests build/linux-asan
    check coverage scripts/coverage.py build/linux-asan --report
    tail -n 1 build/check-coverage.log
fi

if [ $quick = no ]; then
    say "Linux, thread sanitizer"
    build linux-tsan concurrent_tests && tests build/linux-tsan --only '_concurrent_test$'

    say "Windows, MinGW's ABI"
    build windows-release all && tests build/windows-release
    check boundary-windows scripts/check-boundary build/windows-release

    say "Windows, MSVC ABI"
    build windows-msvc all && tests build/windows-msvc
    check boundary-msvc scripts/check-boundary build/windows-msvc
    check mixed-pairs tests/integration/mixed_pairs.py scripts/wine-run.sh build/windows-msvc build/windows-release
    WINEPREFIX=$PWD/build/wine WINEDEBUG=-all wineserver --kill >/dev/null 2>&1

    say "packages"
    check packages scripts/check-packages.py

    say "fuzzing"
    if build linux-fuzz fuzzers; then
        check fuzz scripts/run-fuzzers.sh build/linux-fuzz
        awk '/: Done [0-9]+ runs/ { runs += $3 } /: FAILED/ { ++found }
            END { printf "  fuzz: %d executions, %d findings\n", runs, found }' build/check-fuzz.log
    fi

    say "clang-tidy"
    check tidy scripts/check-tidy.sh

    say "benchmarks, short form"
    check bench ./bench.sh --preset linux-asan --short
fi

passed=$(awk '{ n += $2 } END { print n + 0 }' "$tally")
failed=$(awk '{ n += $3 } END { print n + 0 }' "$tally")
say "done"
awk '{ split($1, part, "/"); passed[part[1]] += $2; failed[part[1]] += $3 }
    END { for (target in passed) printf "  %-16s %5d passed %3d failed\n", target, passed[target], failed[target] }' "$tally" | sort
if [ "$failed" -ne 0 ]; then
    awk '$3 > 0 { print "  failed: " $1 " (" $3 ")" }' "$tally"
fi
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]

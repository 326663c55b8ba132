#!/usr/bin/env bash
# Installs what the build needs: Debian packages (as root) and the npm packages of deps/package-lock.json.
# Does nothing when everything is there. Usage: setup.sh [build|run|test|bench|peers|plots|package]; the default installs for all.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
what=${1:-all}

packages=(g++ cmake ninja-build ccache pkg-config git ca-certificates npm
    g++-mingw-w64-x86-64-posix wine wine64 libwine-dev clang-14 lld-14 llvm-14 xz-utils patch
    nlohmann-json3-dev libcli11-dev libxxhash-dev libhowardhinnant-date-dev libpff-dev libgmime-3.0-dev
    libxml2-dev libgsf-1-dev perl python3 python3-six unicode-data python3-pytest python3-pytest-xdist libgtest-dev libgmock-dev googletest)
package_tools=(nsis debhelper dpkg-dev fakeroot)
test_tools=(clang clang-format-19 clang-tidy libclang-rt-14-dev python3-clang-14 pff-tools python3-olefile binutils zsh groff-base
    doxygen gdb xvfb fonts-wine imagemagick lintian "${package_tools[@]}")
case $what in
build | run | bench) ;;
test) packages+=("${test_tools[@]}") ;;
plots) packages+=(python3-matplotlib) ;;
peers) packages+=(notmuch) ;;
package) packages+=("${package_tools[@]}") ;;
all) packages+=("${test_tools[@]}") ;;
*)
    echo "setup.sh: unknown purpose '$what' (build, run, test, bench, peers, plots or package)" >&2
    exit 2
    ;;
esac

missing=()
for package in "${packages[@]}"; do
    # Node may have come from elsewhere; its npm serves as well.
    if [ "$package" = npm ] && command -v npm >/dev/null; then continue; fi
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
    if [ "$(id -u)" -ne 0 ]; then
        echo "setup.sh: these Debian packages are missing and only root can install them: ${missing[*]}" >&2
        exit 1
    fi
    echo "Installing ${#missing[@]} Debian packages: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    log=$root/build/setup.log
    mkdir -p "$root/build"
    if ! { apt-get update && apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        echo "setup.sh: installing Debian packages failed; the whole log is $log" >&2
        exit 1
    fi
fi

deps=$root/build/deps
if ! cmp -s "$root/deps/package-lock.json" "$deps/.installed"; then
    echo "Fetching the npm packages of deps/package-lock.json"
    mkdir -p "$deps"
    cp "$root/deps/package.json" "$root/deps/package-lock.json" "$root/deps/.npmrc" "$deps/"
    (cd "$deps" && npm ci --ignore-scripts --no-audit --no-fund --loglevel=error --cache "$deps/.npm-cache")
    cp "$root/deps/package-lock.json" "$deps/.installed"
fi
"$root/scripts/debian-source.sh" libxml2
# What zeb-import reads mail with on Windows.
"$root/scripts/debian-source.sh" glib2.0
"$root/scripts/debian-source.sh" gmime
"$root/scripts/debian-source.sh" libpff '*/lib*/*.[ch]' '*/common/*.h' '*/include/*.h' '*/COPYING'
"$root/scripts/debian-source.sh" re2
# Debian's archive leaves out the tables that RE2 generates.
tables=$deps/re2/re2
for table in perl_groups.pl unicode_groups.py unicode_casefold.py; do
    made=$tables/${table%.*}.cc
    if [ -s "$made" ]; then continue; fi
    case $table in
    *.pl) perl "$tables/make_$table" >"$made.new" ;;
    *.py) (cd "$tables" && PYTHONDONTWRITEBYTECODE=1 python3 "make_$table" >"$made.new") ;;
    esac
    mv "$made.new" "$made"
done
"$root/scripts/debian-source.sh" utf8proc '*/utf8proc.c' '*/utf8proc.h' '*/utf8proc_data.c' '*/LICENSE.md'

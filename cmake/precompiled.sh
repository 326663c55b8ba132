#!/usr/bin/env bash
# precompiled.sh CACHE COMPILER...: a clang compilation, for a compiler cache that several clones share.
# Clang names the headers of a precompiled header by absolute paths: another clone that took it from the cache would read
# those with "#pragma once" again. So each clone makes its own. What is compiled with it is shared all the same: the
# cache compares the checksum in FILE.pch.sum, made of the text and macros that went in.
export CCACHE_PCH_EXTSUM=1
[[ " $* " == *" -emit-pch "* ]] || exec "$@"
root=$(cd "$(dirname "$0")/.." && pwd)
export CCACHE_NAMESPACE=$root
"$@" || exit

text=()
while (($#)); do
    case $1 in
    -Xclang)
        if [[ $2 == -emit-pch ]]; then shift; else text+=("$1"); fi ;;
    -MD) ;;
    -MT | -MF) shift ;;
    -o)
        output=$2
        shift ;;
    *) text+=("$1") ;;
    esac
    shift
done
set -o pipefail
"${text[@]}" -E -dD | sed "s|$root/||g" | sha256sum >"$output.sum" || { rm -f "$output"; exit 1; }

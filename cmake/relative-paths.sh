#!/usr/bin/env bash
# relative-paths.sh ROOT UP COMMAND...: runs a compiler or linker with paths relative to the build folder (UP leads from it
# to the sources' ROOT). Clang and lld write their whole command line into the debug information, and a hash of that into
# the DLL: with absolute paths the same sources in two folders give different files. So do the sources that CMake writes
# to compile several at once, which name them by absolute paths: a copy names them as the include folder ROOT has them.
root=$1 up=$2
shift 2
arguments=("${@//"$root/"/"$up/"}")
arguments=("${arguments[@]/%"$root"/"$up"}")
last=${arguments[-1]}
if [[ $last == */Unity/unity_*.cxx ]]; then
    sed "s|^#include \"$root/|#include \"|" "$last" >"${last%.cxx}_relative.cxx" || exit 1
    arguments[-1]=${last%.cxx}_relative.cxx
fi
exec "${arguments[@]}"

#!/usr/bin/env bash
# Assembles in build/msvc-sysroot/lib what a program of the MSVC ABI is linked with: libc++ and a few of the compiler's
# helpers from Debian's source package, start-up code of our own (cmake/msvc-abi/src), and import libraries of the names
# that Wine's modules export. Headers need no assembling: libc++'s, those of cmake/msvc-abi/include and MinGW-w64's, in
# this order, are read where they are. Does nothing when none of its inputs has changed.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$root/scripts/debian-source.sh" llvm-toolchain-14 '*/libcxx/include/*' '*/libcxx/src/*' '*/compiler-rt/lib/builtins/*'

out=$root/build/msvc-sysroot
llvm=$root/build/deps/llvm-toolchain-14
mingw=/usr/share/mingw-w64/include
wine=/usr/lib/x86_64-linux-gnu/wine/x86_64-windows
modules=(kernel32 user32 gdi32 advapi32 comctl32 comdlg32 shell32 ole32 oleaut32 ucrtbase vcruntime140 msvcp140 version ntdll)

fail() {
    echo "msvc-sysroot.sh: $1" >&2
    exit 1
}

for tool in clang-14 clang++-14 lld-link-14 llvm-lib-14 llvm-dlltool-14 llvm-readobj-14; do
    command -v "$tool" >/dev/null || fail "$tool is missing: run scripts/setup.sh first"
done

mkdir -p "$out"
exec 9>"$out/.lock"
flock 9
inputs() {
    printf '%s\n' "$root"
    cat "$llvm/.unpacked"
    dpkg-query -W -f '${Package} ${Version}\n' clang-14 lld-14 llvm-14 mingw-w64-x86-64-dev libwine
    cd "$root"
    sha256sum scripts/msvc-sysroot.sh cmake/msvc-abi/flags.txt cmake/msvc-abi/*/*
}
inputs=$(inputs)
if [ -f "$out/.inputs" ] && [ "$(cat "$out/.inputs")" = "$inputs" ]; then exit 0; fi
echo "Assembling the MSVC ABI's libraries"
rm -rf "$out/.inputs" "$out/lib" "$out/obj"
mkdir -p "$out/lib" "$out/obj"

# As in every build of the project, all clones share the compiler cache.
cd "$out"
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
cache=()
command -v ccache >/dev/null && cache=(ccache)
mapfile -t flags < <(sed '/^#/d' "$root/cmake/msvc-abi/flags.txt")
flags+=(-D_WIN32_WINNT=0x0601 -O2 -w)
cxx_dirs=(-nostdinc++ -isystem "$llvm/libcxx/include")
dirs=(-isystem "$root/cmake/msvc-abi/include" -isystem "$mingw")

# One line a source: object, source, further arguments. All of them are compiled side by side.
plan=$out/obj/plan.txt
: >"$plan"
cxx() { # OBJECT SOURCE [ARG...]
    printf '%q ' "${cache[@]}" clang++-14 "${flags[@]}" -fcxx-exceptions "${cxx_dirs[@]}" "${dirs[@]}" -c "$2" -o "obj/$1" \
        "${@:3}" >>"$plan"
    printf '\n' >>"$plan"
}
c() { # OBJECT SOURCE [ARG...]
    printf '%q ' "${cache[@]}" clang-14 "${flags[@]}" "${dirs[@]}" -c "$2" -o "obj/$1" "${@:3}" >>"$plan"
    printf '\n' >>"$plan"
}
for source in "$llvm"/libcxx/src/{,support/win32/,filesystem/,ryu/}*.cpp; do
    name=${source#"$llvm/libcxx/src/"}
    [ "$name" = format.cpp ] && continue # std::format is left out by __config_site
    cxx "cxx_${name//\//_}.obj" "$source" -std=c++20 -D_LIBCPP_BUILDING_LIBRARY -I "$llvm/libcxx/src"
done
for name in divti3 modti3 udivti3 umodti3 udivmodti4 multi3; do
    c "builtin_$name.obj" "$llvm/compiler-rt/lib/builtins/$name.c"
done
for source in "$root"/cmake/msvc-abi/src/*.cpp; do
    name=$(basename "$source" .cpp)
    extra=(-std=c++17)
    [ "$name" = type_info ] && extra+=(-fno-rtti)
    cxx "run_$name.obj" "$source" "${extra[@]}"
done
for source in "$root"/cmake/msvc-abi/src/*.S; do
    c "run_$(basename "$source" .S).obj" "$source"
done
tr '\n' '\0' <"$plan" | xargs -0 -P "$(nproc)" -n 1 bash -c || fail "compiling the runtime failed"

# The start of a program or of a DLL is named on the linker's command line; the rest comes as it is asked for.
mv obj/run_start_program.obj lib/start_program.obj
mv obj/run_start_dll.obj lib/start_dll.obj
llvm-lib-14 /nologo /out:lib/uuid.lib obj/run_uuid.obj
rm obj/run_uuid.obj
llvm-lib-14 /nologo /out:lib/zebrt.lib obj/run_*.obj obj/builtin_*.obj
llvm-lib-14 /nologo /out:lib/c++.lib obj/cxx_*.obj

for module in "${modules[@]}"; do
    {
        printf 'LIBRARY %s.dll\nEXPORTS\n' "$module"
        # ucrtbase.dll has most functions a second time under a private name, ntdll.dll has some of the C library's.
        unwanted='^  _o_'
        [ "$module" = ntdll ] && unwanted='^  [^NLRZ]'
        llvm-readobj-14 --coff-exports "$wine/$module.dll" | sed -n 's/^  *Name: \(..*\)/  \1/p' | grep -v "$unwanted"
    } >"obj/$module.def"
    llvm-dlltool-14 -m i386:x86-64 -d "obj/$module.def" -l "lib/$module.lib"
done
rm -rf obj
printf '%s\n' "$inputs" >.inputs

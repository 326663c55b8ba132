# Cross build for Windows x64 in the MSVC ABI: clang and lld, libc++ and MinGW-w64's headers; the tests run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
get_filename_component(zeb_root ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
set(zeb_sysroot ${zeb_root}/build/msvc-sysroot)
execute_process(COMMAND ${zeb_root}/scripts/msvc-sysroot.sh RESULT_VARIABLE zeb_result)
if(NOT zeb_result EQUAL 0)
  message(FATAL_ERROR "The libraries of the MSVC ABI could not be assembled")
endif()

set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_AR llvm-ar-14)
set(CMAKE_RANLIB llvm-ranlib-14)
set(CMAKE_RC_COMPILER llvm-rc-14)
set(CMAKE_MT llvm-mt-14)

file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/msvc-abi/flags.txt zeb_flags REGEX "^[^#]")
list(JOIN zeb_flags " " zeb_flags)
set(zeb_dirs "-isystem ${CMAKE_CURRENT_LIST_DIR}/msvc-abi/include -isystem /usr/share/mingw-w64/include")
set(CMAKE_C_FLAGS_INIT "${zeb_flags} ${zeb_dirs}")
set(CMAKE_CXX_FLAGS_INIT
  "${zeb_flags} -fcxx-exceptions -nostdinc++ -isystem ${zeb_root}/build/deps/llvm-toolchain-14/libcxx/include ${zeb_dirs}")

# libc++ and the start-up code are static in each module; vcruntime140, msvcp140 and ucrtbase are DLLs of the system.
# The compiler options come along at the link, where some mean nothing.
set(zeb_link "-Wno-unused-command-line-argument -fuse-ld=lld-link -nostdlib -Wl,/nodefaultlib -Wl,/libpath:${zeb_sysroot}/lib")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${zeb_link} ${zeb_sysroot}/lib/start_program.obj")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${zeb_link} ${zeb_sysroot}/lib/start_dll.obj")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${CMAKE_SHARED_LINKER_FLAGS_INIT}")
set(CMAKE_C_STANDARD_LIBRARIES "-lc++ -lzebrt -lvcruntime140 -lucrtbase -lmsvcp140 -lkernel32" CACHE STRING "" FORCE)
set(CMAKE_CXX_STANDARD_LIBRARIES "${CMAKE_C_STANDARD_LIBRARIES}" CACHE STRING "" FORCE)
set(CMAKE_MSVC_RUNTIME_LIBRARY "")

list(APPEND CMAKE_FIND_ROOT_PATH ${zeb_sysroot})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# A package that a host names in CMAKE_PREFIX_PATH lies anywhere.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
set(CMAKE_CROSSCOMPILING_EMULATOR ${zeb_root}/scripts/wine-run.sh)

# Compile options of every target.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

option(ZEB_WERROR "Warnings of the own sources are errors" ON)

# How the compiler is driven: MSVC is true for cl and what is driven like it, not for the others of its ABI.
if(MSVC)
  # Exported classes hold templates that are not exported, and derive from such (4251, 4275): all of these are inline, and
  # their layouts are pinned by tests.
  set(zeb_warnings /W4 /permissive- /Zc:__cplusplus /utf-8 /wd4251 /wd4275)
  set(zeb_no_warnings /w)
  set(zeb_optimised /O2)
  set(zeb_unoptimised /Od)
  set(CMAKE_C_FLAGS_RELEASE "/O2")
  set(CMAKE_CXX_FLAGS_RELEASE "/O2")
else()
  set(zeb_warnings -Wall -Wextra)
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    # Several classes hide a base's overload on purpose (each says so); GCC's -Wall does not ask about it.
    list(APPEND zeb_warnings -Wno-overloaded-virtual)
    if(WIN32)
      # Extensions that clang accepts only for MSVC compatibility are not allowed in the sources.
      list(APPEND zeb_warnings -Wmicrosoft)
    endif()
  endif()
  set(zeb_no_warnings -w)
  set(zeb_optimised -O2)
  set(zeb_unoptimised -O0)
  set(CMAKE_C_FLAGS_RELEASE "-O2")
  set(CMAKE_CXX_FLAGS_RELEASE "-O2")
  set(CMAKE_C_FLAGS_DEBUG "-O1 -g1")
  set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g1")
endif()
# The last of the warnings: the compiler cache moves it there, and clang writes its command into the debug information.
if(ZEB_WERROR AND MSVC)
  list(APPEND zeb_warnings /WX)
elseif(ZEB_WERROR)
  list(APPEND zeb_warnings -Werror)
endif()

# Paths in throw and catch lines read the same in every build: "zebapi/MEM.cpp". A compiler cache with a base
# folder hands the compiler paths relative to the build folder; those are mapped too, and first those that do not pass the
# sources' folder (the last map that fits counts).
if(CMAKE_CXX_COMPILER_ID STREQUAL "MSVC")
  cmake_path(NATIVE_PATH CMAKE_SOURCE_DIR zeb_native_root)
  add_compile_options(/d1trimfile:${zeb_native_root}\\)
elseif(MSVC)
  add_compile_options(/clang:-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=)
else()
  cmake_path(RELATIVE_PATH CMAKE_SOURCE_DIR BASE_DIRECTORY ${CMAKE_BINARY_DIR} OUTPUT_VARIABLE zeb_up)
  set(zeb_deps build/deps)
  cmake_path(ABSOLUTE_PATH zeb_deps BASE_DIRECTORY ${CMAKE_SOURCE_DIR})
  cmake_path(RELATIVE_PATH zeb_deps BASE_DIRECTORY ${CMAKE_BINARY_DIR})
  add_compile_options(-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/= -fmacro-prefix-map=${zeb_up}/=
                      -fmacro-prefix-map=${zeb_deps}/=build/deps/)
endif()

# A shared library names all that it needs. Clang's sanitizers alone are in the program that loads it.
set(zeb_no_undefined -Wl,-z,defs)
if(ZEB_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES Clang)
  set(zeb_no_undefined "")
endif()
if(ZEB_SANITIZE)
  add_compile_options(-fsanitize=${ZEB_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ZEB_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    # Exports are found by name, and called by the types that MAPI publishes, which are not those that a provider has.
    add_compile_options(-fno-sanitize=function)
  endif()
  if(ZEB_SANITIZE MATCHES address AND NOT ZEB_FUZZ)
    # Programs at a fixed address: the sanitizers' tables have half a million addresses that each start would relocate.
    string(APPEND CMAKE_EXE_LINKER_FLAGS " -no-pie")
  endif()
endif()
if(ZEB_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
option(ZEB_COVERAGE "Count what is reached of the product's sources, for scripts/coverage.py (Clang)" OFF)
if(ZEB_COVERAGE)
  # The processes of a program count in the shared pages of one file, which the system keeps when a test kills one of them.
  set(zeb_counted -fprofile-instr-generate -fcoverage-mapping -fprofile-update=atomic "SHELL:-mllvm -runtime-counter-relocation"
    -fprofile-list=${CMAKE_SOURCE_DIR}/cmake/coverage.list
    -fcoverage-compilation-dir=. -fcoverage-prefix-map=${CMAKE_SOURCE_DIR}/= -fcoverage-prefix-map=${zeb_up}/=)
  add_link_options(-fprofile-instr-generate)
  # Where a process counts when the environment does not say it: a library would keep a copy of the environment's name, which
  # is a leak after it was unloaded.
  set(zeb_profile_name ${CMAKE_BINARY_DIR}/profile_name)
  file(CONFIGURE OUTPUT ${zeb_profile_name}.c CONTENT
    "__attribute__((visibility(\"hidden\"))) const char __llvm_profile_filename[] = \"@CMAKE_BINARY_DIR@/profiles/all/%m%c.profraw\";\n" @ONLY)
  execute_process(COMMAND ${CMAKE_C_COMPILER} -fPIC -c ${zeb_profile_name}.c -o ${zeb_profile_name}.o COMMAND_ERROR_IS_FATAL ANY)
  add_link_options(${zeb_profile_name}.o)
  if(NOT ZEB_SANITIZE)
    set(CMAKE_C_FLAGS_DEBUG "-O1")
    set(CMAKE_CXX_FLAGS_DEBUG "-O1")
  endif()
endif()

# For libraries that are compiled with ours: what takes a compiler minutes is left out. Undefined behaviour is not looked
# for in them, and the fuzzers neither check them nor follow their branches.
set(zeb_third_party ${zeb_optimised})
if(ZEB_FUZZ)
  set(zeb_third_party -O1 -fno-sanitize=all)
elseif(ZEB_SANITIZE)
  set(zeb_third_party -O1 -fno-sanitize=undefined)
elseif(ZEB_COVERAGE)
  set(zeb_third_party -O1)
endif()

# Our own sources link this; third-party sources do not.
add_library(zeb_options INTERFACE)
target_include_directories(zeb_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(zeb_options INTERFACE ${zeb_warnings} ${zeb_counted})
# Each lock is checked to be taken in its order (platform/lockorder.h): always when debugging.
option(ZEB_CHECK_LOCKS "Check the order of locks in releases too" OFF)
target_compile_definitions(zeb_options INTERFACE $<$<OR:$<CONFIG:Debug>,$<BOOL:${ZEB_CHECK_LOCKS}>>:ZEB_CHECK_LOCKS>)
if(MINGW)
  # Each product is one file: the compiler's runtime is linked statically.
  add_link_options(-static -static-libgcc -static-libstdc++)
endif()
if(WIN32)
  add_compile_definitions(_WIN32_WINNT=0x0601 NOMINMAX WIN32_LEAN_AND_MEAN)
endif()
if(MSVC)
  # It would warn about standard functions (getenv, strerror) and POSIX names.
  add_compile_definitions(_CRT_SECURE_NO_WARNINGS _CRT_NONSTDC_NO_WARNINGS)
endif()

option(ZEB_PRECOMPILE "Precompile the headers that take most of the tests' and the tools' compilation" ON)
# zeb_precompiled(NAME LIBS targets... OPTIONS options... HEADERS headers...): headers for targets that REUSE_FROM NAME. These
# compile with the same options.
function(zeb_precompiled name)
  cmake_parse_arguments(ARG "" "" "LIBS;OPTIONS;HEADERS" ${ARGN})
  if(NOT ZEB_PRECOMPILE)
    return()
  endif()
  file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/${name}.cpp CONTENT "" @ONLY)
  add_library(${name} OBJECT EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/${name}.cpp)
  target_compile_options(${name} PRIVATE ${ARG_OPTIONS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS})
  target_precompile_headers(${name} PRIVATE ${ARG_HEADERS})
endfunction()

# zeb_reuse_precompiled(TARGET NAME)
function(zeb_reuse_precompiled target name)
  if(NOT ZEB_PRECOMPILE)
    return()
  endif()
  target_precompile_headers(${target} REUSE_FROM ${name})
  if(NOT WIN32)
    # The compilers want the headers' own kind of code, in programs too.
    target_compile_options(${target} PRIVATE -fPIC)
  endif()
endfunction()

option(ZEB_UNITY "Compile several sources of a target at once: half the time of a build from nothing" ON)
# zeb_unity(TARGET): for targets whose sources do not use a name of their own for two things.
function(zeb_unity target)
  if(NOT ZEB_UNITY)
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 5)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # A test's class derives from a fixture without a name for other files, and now is in an included file itself.
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
  endif()
endfunction()

# What the compiler cache needs to keep what was compiled with precompiled headers, and to find it again from another clone.
if(ZEB_PRECOMPILE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fpch-preprocess>)
elseif(ZEB_PRECOMPILE AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND NOT MSVC)
  add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-Xclang -fno-pch-timestamp>")
  if(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_SOURCE_DIR}/cmake/precompiled.sh ${CCACHE})
  endif()
endif()

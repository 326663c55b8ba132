# Third-party headers and sources, each from a Debian package or from the npm lock file in deps/ (scripts/setup.sh
# installs both). None of them are in the tree. The library itself needs MAPI's declarations alone.

# MAPI's declarations: MinGW's, with the four headers that are wrong for 64 bits corrected. Linux reads the same headers
# over Windows' base types from Wine's SDK headers. MSVC reads the published headers as they are.
include(ZebMapiHeaders)
set(ZEB_MAPI_SDK "" CACHE PATH "MSVC: the folder of the published MAPI headers")
set(ZEB_MINGW_HEADERS /usr/share/mingw-w64/include)
set(ZEB_MAPI_HEADERS ${CMAKE_BINARY_DIR}/mapi-headers)
if(MSVC)
  if(NOT EXISTS ${ZEB_MAPI_SDK}/MAPIX.h)
    message(FATAL_ERROR "ZEB_MAPI_SDK does not name the folder of the published MAPI headers: '${ZEB_MAPI_SDK}'")
  endif()
  set(ZEB_MAPI_HEADERS ${ZEB_MAPI_SDK})
else()
  file(MAKE_DIRECTORY ${ZEB_MAPI_HEADERS})
  zeb_mapi_copy(${ZEB_MINGW_HEADERS} ${ZEB_MAPI_HEADERS})
endif()
add_library(zeb_mapi_headers INTERFACE)
target_include_directories(zeb_mapi_headers SYSTEM INTERFACE ${ZEB_MAPI_HEADERS})
# Those that need no correction.
set(zeb_mapi_same mapi mapicode imessage mapiguid mapinls mapioid mapitags mapiform mapiwin wabapi wabdefs wabcode wabtags
    xcmc)
if(NOT WIN32)
  foreach(header ${zeb_mapi_same})
    if(NOT EXISTS ${ZEB_MINGW_HEADERS}/${header}.h)
      message(FATAL_ERROR "${header}.h of mingw-w64 is missing: run scripts/setup.sh first")
    endif()
    file(CREATE_LINK ${ZEB_MINGW_HEADERS}/${header}.h ${ZEB_MAPI_HEADERS}/${header}.h SYMBOLIC)
  endforeach()
  set(ZEB_WINE_HEADERS /usr/include/wine/wine/windows)
  if(NOT EXISTS ${ZEB_WINE_HEADERS}/windef.h)
    message(FATAL_ERROR "Wine's SDK headers are missing: run scripts/setup.sh first")
  endif()
  target_include_directories(zeb_mapi_headers SYSTEM INTERFACE ${ZEB_WINE_HEADERS})
endif()

find_package(Threads REQUIRED)
if(NOT ZEB_PROVIDER)
  return()
endif()

set(ZEB_DEPS_DIR ${CMAKE_SOURCE_DIR}/build/deps CACHE PATH "Where scripts/setup.sh unpacked the npm packages")

# Header-only libraries serve both targets, so they are linked into a separate include folder: /usr/include must never
# be in the cross compiler's path.
set(ZEB_HEADER_ONLY_ROOT /usr/include CACHE PATH "The folder of CLI/, date/, nlohmann/ and xxhash.h")
set(ZEB_HEADER_ONLY ${CMAKE_BINARY_DIR}/header-only)
file(MAKE_DIRECTORY ${ZEB_HEADER_ONLY})
foreach(package CLI date nlohmann xxhash.h)
  if(NOT EXISTS ${ZEB_HEADER_ONLY_ROOT}/${package})
    message(FATAL_ERROR "${ZEB_HEADER_ONLY_ROOT}/${package} is missing: run scripts/setup.sh first")
  endif()
  file(CREATE_LINK ${ZEB_HEADER_ONLY_ROOT}/${package} ${ZEB_HEADER_ONLY}/${package} SYMBOLIC COPY_ON_ERROR)
endforeach()
add_library(zeb_header_only INTERFACE)
target_include_directories(zeb_header_only SYSTEM INTERFACE ${ZEB_HEADER_ONLY})

# SQLite, for zebstore and its benchmarks.
set(ZEB_SQLITE_DIR ${ZEB_DEPS_DIR}/node_modules/better-sqlite3/deps/sqlite3)
if(NOT EXISTS ${ZEB_SQLITE_DIR}/sqlite3.c)
  message(FATAL_ERROR "SQLite is not there: run scripts/setup.sh first (looked in ${ZEB_SQLITE_DIR})")
endif()
add_library(zeb_sqlite STATIC EXCLUDE_FROM_ALL ${ZEB_SQLITE_DIR}/sqlite3.c)
target_include_directories(zeb_sqlite SYSTEM PUBLIC ${ZEB_SQLITE_DIR})
target_compile_definitions(zeb_sqlite PRIVATE
  SQLITE_DQS=0 SQLITE_THREADSAFE=2 SQLITE_DEFAULT_MEMSTATUS=0 SQLITE_DEFAULT_WAL_SYNCHRONOUS=1
  SQLITE_LIKE_DOESNT_MATCH_BLOBS SQLITE_OMIT_DEPRECATED SQLITE_OMIT_LOAD_EXTENSION SQLITE_OMIT_SHARED_CACHE
  SQLITE_MAX_EXPR_DEPTH=0)
target_compile_options(zeb_sqlite PRIVATE ${zeb_no_warnings} ${zeb_third_party})

# Unicode's data: case folding and base letters for zebstore, display widths for the tools.
set(ZEB_UTF8PROC_DIR ${ZEB_DEPS_DIR}/utf8proc)
if(NOT EXISTS ${ZEB_UTF8PROC_DIR}/utf8proc.c)
  message(FATAL_ERROR "utf8proc is missing: run scripts/setup.sh first (looked in ${ZEB_UTF8PROC_DIR})")
endif()
add_library(zeb_utf8proc STATIC EXCLUDE_FROM_ALL ${ZEB_UTF8PROC_DIR}/utf8proc.c)
target_include_directories(zeb_utf8proc SYSTEM PUBLIC ${ZEB_UTF8PROC_DIR})
target_compile_definitions(zeb_utf8proc PUBLIC UTF8PROC_STATIC)
target_compile_options(zeb_utf8proc PRIVATE ${zeb_no_warnings} ${zeb_third_party})

if(NOT ZEB_TOOLS)
  return()
endif()

# RE2, regular expressions in linear time for the tools.
set(ZEB_RE2_DIR ${ZEB_DEPS_DIR}/re2)
if(NOT EXISTS ${ZEB_RE2_DIR}/re2/re2.cc)
  message(FATAL_ERROR "RE2 is missing: run scripts/setup.sh first (looked in ${ZEB_RE2_DIR})")
endif()
set(names re2/bitstate re2/compile re2/dfa re2/mimics_pcre re2/nfa re2/onepass re2/parse
          re2/perl_groups re2/prog re2/re2 re2/regexp re2/simplify re2/stringpiece re2/tostring re2/unicode_casefold
          re2/unicode_groups util/rune util/strutil)
list(TRANSFORM names PREPEND ${ZEB_RE2_DIR}/)
list(TRANSFORM names APPEND .cc)
add_library(zeb_re2 STATIC EXCLUDE_FROM_ALL ${names})
target_include_directories(zeb_re2 SYSTEM PUBLIC ${ZEB_RE2_DIR})
target_compile_options(zeb_re2 PRIVATE ${zeb_no_warnings} ${zeb_third_party})

include(ZebMailLibraries)

# libxml2's HTML parser, for the tools. On Windows it is compiled from Debian's sources with nothing but that.
add_library(zeb_html_parser INTERFACE)
if(WIN32)
  set(ZEB_LIBXML2_DIR ${ZEB_DEPS_DIR}/libxml2)
  if(NOT EXISTS ${ZEB_LIBXML2_DIR}/HTMLparser.c)
    message(FATAL_ERROR "libxml2 is missing: run scripts/setup.sh first (looked in ${ZEB_LIBXML2_DIR})")
  endif()
  function(zeb_add_html_parser)
    set(made ${CMAKE_BINARY_DIR}/libxml2)
    # What libxml/xmlversion.h and config.h switch on: 1, or 0 for all else.
    file(STRINGS ${ZEB_LIBXML2_DIR}/include/libxml/xmlversion.h.in switches REGEX "@WITH_[A-Z0-9_]+@")
    foreach(line ${switches})
      string(REGEX REPLACE ".*@(WITH_[A-Z0-9_]+)@.*" "\\1" switch "${line}")
      set(${switch} 0)
    endforeach()
    foreach(part TREE HTML PUSH SAX1)
      set(WITH_${part} 1)
    endforeach()
    set(VERSION 2.9.14)
    set(LIBXML_VERSION_NUMBER 20914)
    set(LIBXML_VERSION_EXTRA "")
    set(MODULE_EXTENSION "")
    configure_file(${ZEB_LIBXML2_DIR}/include/libxml/xmlversion.h.in ${made}/libxml/xmlversion.h @ONLY)
    set(config "")
    foreach(header STDLIB STRING STDARG ERRNO LIMITS STDINT CTYPE TIME MATH FLOAT SYS_TYPES SYS_STAT FCNTL)
      string(APPEND config "#define HAVE_${header}_H 1\n")
    endforeach()
    file(CONFIGURE OUTPUT ${made}/config.h CONTENT "${config}")
    set(names HTMLparser HTMLtree SAX2 buf chvalid dict encoding entities error globals hash list parser parserInternals threads tree uri
              valid xmlIO xmlmemory xmlstring)
    list(TRANSFORM names PREPEND ${ZEB_LIBXML2_DIR}/)
    list(TRANSFORM names APPEND .c)
    add_library(zeb_libxml2 STATIC EXCLUDE_FROM_ALL ${names})
    target_include_directories(zeb_libxml2 SYSTEM PUBLIC ${made} ${ZEB_LIBXML2_DIR}/include PRIVATE ${ZEB_LIBXML2_DIR})
    target_compile_definitions(zeb_libxml2 PUBLIC LIBXML_STATIC PRIVATE HAVE_CONFIG_H)
    target_compile_options(zeb_libxml2 PRIVATE ${zeb_no_warnings} ${zeb_third_party})
  endfunction()
  zeb_add_html_parser()
  target_link_libraries(zeb_html_parser INTERFACE zeb_libxml2)
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(ZEB_XML REQUIRED IMPORTED_TARGET libxml-2.0)
  target_link_libraries(zeb_html_parser INTERFACE PkgConfig::ZEB_XML)
endif()

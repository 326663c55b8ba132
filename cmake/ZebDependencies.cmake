# Third-party headers and sources, each from a Debian package or from the npm lock file in deps/ (scripts/setup.sh
# installs both). None of them are in the tree.
set(ZEB_DEPS_DIR ${CMAKE_SOURCE_DIR}/build/deps CACHE PATH "Where scripts/setup.sh unpacked the npm packages")
set(ZEB_SQLITE_DIR ${ZEB_DEPS_DIR}/node_modules/better-sqlite3/deps/sqlite3)
if(NOT EXISTS ${ZEB_SQLITE_DIR}/sqlite3.c)
  message(FATAL_ERROR "SQLite is not there: run scripts/setup.sh first (looked in ${ZEB_SQLITE_DIR})")
endif()

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
if(NOT WIN32)
  foreach(header mapi mapicode imessage mapiguid mapinls mapioid mapitags mapiform mapiwin wabapi wabdefs wabcode wabtags
                 xcmc)
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

# SQLite, for zebstore and its benchmarks.
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

find_package(Threads REQUIRED)

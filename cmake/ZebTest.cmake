# zeb_add_test(NAME SOURCES files... LIBS targets...): a GoogleTest program in bin/, run by CTest (under Wine when
# the build is for Windows). A program whose name ends in _concurrent_test is also run with the thread sanitizer.
add_custom_target(concurrent_tests)
if(ZEB_TESTS)
  if(WIN32)
    set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
    set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
    set(ZEB_GOOGLETEST_DIR /usr/src/googletest CACHE PATH "GoogleTest's sources")
    if(NOT EXISTS ${ZEB_GOOGLETEST_DIR}/CMakeLists.txt)
      message(FATAL_ERROR "${ZEB_GOOGLETEST_DIR} has no GoogleTest: run scripts/setup.sh first")
    endif()
    add_subdirectory(${ZEB_GOOGLETEST_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  else()
    find_package(GTest REQUIRED)
  endif()
  include(GoogleTest)
endif()

# GoogleTest's and MAPI's headers take most of a test's compilation.
if(ZEB_TESTS)
  zeb_precompiled(zeb_test_headers LIBS zeb_options zeb_mapi_headers GTest::gmock GTest::gtest OPTIONS ${zeb_unoptimised}
    HEADERS <gmock/gmock.h> <gtest/gtest.h> <platform/mapi.h>)
endif()

if(MINGW)
  find_program(ZEB_LLD NAMES ld.lld-14 ld.lld)
endif()

# zeb_test_target(TARGET): how a target of the tests is compiled.
function(zeb_test_target name)
  # The tested code is optimised; the tests themselves are not, and compile in half the time.
  target_compile_options(${name} PRIVATE ${zeb_unoptimised})
  zeb_unity(${name})
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    # MAPI declares its arrays of any length with one element, in a way that Clang does not know for that.
    target_compile_options(${name} PRIVATE -Wno-array-bounds)
  endif()
  if(ZEB_PRECOMPILE)
    target_link_libraries(${name} PRIVATE zeb_mapi_headers GTest::gmock GTest::gtest)
    zeb_reuse_precompiled(${name} zeb_test_headers)
  endif()
endfunction()

# zeb_debug_containers(TARGET): a host whose standard library checks its containers, which lays them out otherwise.
function(zeb_debug_containers name)
  if(WIN32 AND CMAKE_CXX_COMPILER_ID MATCHES Clang)
    target_compile_definitions(${name} PRIVATE _LIBCPP_DEBUG=1)
  elseif(MSVC)
    target_compile_definitions(${name} PRIVATE _ITERATOR_DEBUG_LEVEL=1)
  else()
    target_compile_definitions(${name} PRIVATE _GLIBCXX_DEBUG)
  endif()
  # The headers shared with other tests are compiled without it.
  set_target_properties(${name} PROPERTIES DISABLE_PRECOMPILE_HEADERS ON)
endfunction()

function(zeb_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  zeb_test_target(${name})
  target_link_libraries(${name} PRIVATE zeb_options ${ARG_LIBS} GTest::gmock GTest::gtest GTest::gtest_main)
  if(WIN32)
    target_link_libraries(${name} PRIVATE ole32 oleaut32 uuid)
  endif()
  # In a program that LLD has linked, a replaced operator new that throws ends in a stack overflow.
  if(MINGW AND ZEB_LLD AND NOT "${ARG_SOURCES}" MATCHES "FailingNew")
    target_link_options(${name} PRIVATE "SHELL:-wrapper ${PROJECT_SOURCE_DIR}/cmake/mingw-lld.sh,${ZEB_LLD}")
  endif()
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
  if(name MATCHES "_concurrent_test$")
    add_dependencies(concurrent_tests ${name})
  endif()
endfunction()

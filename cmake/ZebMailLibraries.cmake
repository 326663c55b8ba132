# libpff and GMime for zeb-import on Windows, as DLLs with a C interface that MinGW-w64 compiles for all ABIs:
# scripts/mail-libraries.sh builds the project in cmake/mail-libraries. On Linux they are Debian's packages.
if(NOT WIN32)
  return()
endif()
find_program(ZEB_MINGW_C x86_64-w64-mingw32-gcc-posix)
if(NOT ZEB_MINGW_C OR NOT CMAKE_HOST_UNIX)
  message(STATUS "zeb-import is not built: its libraries are compiled by MinGW-w64 on Linux")
  return()
endif()
foreach(needed libpff/include/libpff.h gmime/gmime/gmime.h glib2.0/glib/glib.h node_modules/iconv/support/iconv.h)
  if(NOT EXISTS ${ZEB_DEPS_DIR}/${needed})
    message(FATAL_ERROR "${needed} is missing: run scripts/setup.sh first (looked in ${ZEB_DEPS_DIR})")
  endif()
endforeach()

set(zeb_mail_build ${CMAKE_SOURCE_DIR}/build/mail-libraries)
set(ZEB_MAIL_LIBRARIES ${CMAKE_BINARY_DIR}/bin/pff.dll ${CMAKE_BINARY_DIR}/bin/gmime-3.dll)
set(zeb_mail_imports ${zeb_mail_build}/lib/libpff.dll.a ${zeb_mail_build}/lib/libgmime-3.dll.a)
file(GLOB_RECURSE zeb_mail_sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/mail-libraries/*.*)
add_custom_command(OUTPUT ${ZEB_MAIL_LIBRARIES} BYPRODUCTS ${zeb_mail_imports}
  COMMAND ${CMAKE_SOURCE_DIR}/scripts/mail-libraries.sh ${ZEB_DEPS_DIR} ${zeb_mail_build}
  COMMAND ${CMAKE_COMMAND} -E copy ${zeb_mail_build}/bin/pff.dll ${zeb_mail_build}/bin/gmime-3.dll ${CMAKE_BINARY_DIR}/bin
  DEPENDS ${CMAKE_SOURCE_DIR}/scripts/mail-libraries.sh ${CMAKE_SOURCE_DIR}/cmake/mingw-w64.cmake ${ZEB_DEPS_DIR}/glib2.0/.unpacked
          ${ZEB_DEPS_DIR}/gmime/.unpacked ${ZEB_DEPS_DIR}/libpff/.unpacked ${zeb_mail_sources}
  COMMENT "Compiling the mail libraries" VERBATIM)
add_custom_target(zeb_mail_libraries DEPENDS ${ZEB_MAIL_LIBRARIES})

add_library(zeb_pff INTERFACE)
target_include_directories(zeb_pff SYSTEM INTERFACE ${ZEB_DEPS_DIR}/libpff/include)
target_link_libraries(zeb_pff INTERFACE ${zeb_mail_build}/lib/libpff.dll.a)
add_library(zeb_gmime INTERFACE)
target_include_directories(zeb_gmime SYSTEM INTERFACE ${CMAKE_SOURCE_DIR}/cmake/mail-libraries/absent ${zeb_mail_build}/gmime
  ${ZEB_DEPS_DIR}/gmime ${ZEB_DEPS_DIR}/glib2.0 ${ZEB_DEPS_DIR}/glib2.0/glib ${ZEB_DEPS_DIR}/node_modules/iconv/support)
target_link_libraries(zeb_gmime INTERFACE ${zeb_mail_build}/lib/libgmime-3.dll.a)

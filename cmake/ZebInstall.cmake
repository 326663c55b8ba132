# cmake --install: what a host needs (library, headers, package configuration), the provider, and the command line.
include(GNUInstallDirs)

set(zeb_sdk ${CMAKE_INSTALL_INCLUDEDIR}/zebapi)
install(TARGETS zebapi zebstore RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(NOT WIN32)
  install(TARGETS zebapi_guids ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()
install(TARGETS zeb RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(TARGET zeb-import)
  install(TARGETS zeb-import RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# Hosts include "zebapi/ZebAPI.h"; what the library's headers include stands beside them in rooms of its own.
# Public is what the umbrella header includes; the rest of zebapi/ is internal.
file(STRINGS ${CMAKE_SOURCE_DIR}/zebapi/ZebAPI.h zeb_includes REGEX "^#include \"zebapi/")
set(zeb_headers zebapi/ZebAPI.h)
foreach(line ${zeb_includes})
  string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" header "${line}")
  list(APPEND zeb_headers ${header})
endforeach()
list(TRANSFORM zeb_headers PREPEND ${CMAKE_SOURCE_DIR}/)
install(FILES ${zeb_headers} DESTINATION ${zeb_sdk})
foreach(room platform framework qorth)
  file(GLOB zeb_headers ${CMAKE_SOURCE_DIR}/${room}/*.h)
  install(FILES ${zeb_headers} DESTINATION ${zeb_sdk}/rooms/${room})
endforeach()
install(FILES ${CMAKE_SOURCE_DIR}/zebstore/zebstore.h DESTINATION ${zeb_sdk}/rooms/zebstore)
# A host that calls a MAPI interface itself must see the declarations that the library was built with; another
# compiler's SDK brings its own.
if(MINGW)
  foreach(header ${zeb_mapi_corrected})
    install(FILES ${ZEB_MAPI_HEADERS}/${header}.h DESTINATION ${zeb_sdk}/rooms)
  endforeach()
endif()

include(CMakePackageConfigHelpers)
set(zeb_import_library ${CMAKE_IMPORT_LIBRARY_PREFIX}zebapi${CMAKE_IMPORT_LIBRARY_SUFFIX})
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/ZebAPIConfig.cmake.in ${CMAKE_BINARY_DIR}/ZebAPIConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZebAPI
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_BINDIR CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/ZebAPIConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ZebAPIConfig.cmake ${CMAKE_BINARY_DIR}/ZebAPIConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZebAPI)

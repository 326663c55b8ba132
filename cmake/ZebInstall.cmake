# cmake --install: installs the host's files (library, headers, package configuration), the provider, and the command
# line.
include(GNUInstallDirs)

install(TARGETS zebapi zebstore RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(NOT WIN32)
  install(TARGETS zebapi_guids ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()
install(TARGETS zeb RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(TARGET zeb-import)
  install(TARGETS zeb-import RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# Public is what the umbrella header and the framework's bring; everything else is internal. The headers lie as they do in the
# sources, so that a host needs one include folder.
set(zeb_seen)
set(zeb_open zebapi/ZebAPI.h framework/framework.h)
while(zeb_open)
  list(POP_FRONT zeb_open zeb_header)
  if(zeb_header IN_LIST zeb_seen)
    continue()
  endif()
  list(APPEND zeb_seen ${zeb_header})
  cmake_path(GET zeb_header PARENT_PATH zeb_room)
  install(FILES ${CMAKE_SOURCE_DIR}/${zeb_header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${zeb_room})
  file(STRINGS ${CMAKE_SOURCE_DIR}/${zeb_header} zeb_includes REGEX "^#include \"")
  list(TRANSFORM zeb_includes REPLACE "^#include \"([^\"]+)\".*" "\\1")
  list(APPEND zeb_open ${zeb_includes})
endwhile()
install(FILES ${CMAKE_SOURCE_DIR}/zebstore/zebstore.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zebstore)
# A host that calls a MAPI interface itself must see the declarations that the library was built with; another
# compiler's SDK brings its own.
if(MINGW)
  foreach(header ${zeb_mapi_corrected})
    install(FILES ${ZEB_MAPI_HEADERS}/${header}.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  endforeach()
endif()

include(CMakePackageConfigHelpers)
if(MINGW)
  set(zeb_abi MinGW-w64)
else()
  set(zeb_abi MSVC)
endif()
set(zeb_import_library ${CMAKE_IMPORT_LIBRARY_PREFIX}zebapi${CMAKE_IMPORT_LIBRARY_SUFFIX})
zeb_dll_name(zebapi zeb_dll)
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/ZebAPIConfig.cmake.in ${CMAKE_BINARY_DIR}/ZebAPIConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZebAPI
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_BINDIR CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/ZebAPIConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ZebAPIConfig.cmake ${CMAKE_BINARY_DIR}/ZebAPIConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZebAPI)

# cmake --install: the library with headers and package configurations, the provider and the tools as far as they are built,
# and the documents.
option(ZEB_INSTALL_DOCUMENTS "Install documents, examples and licences" ON)

set(zeb_shipped zebapi)
foreach(target zebstore zeb zeb-import zebview)
  if(TARGET ${target})
    list(APPEND zeb_shipped ${target})
  endif()
endforeach()
# Builds what is installed, without the tests.
add_custom_target(shipped DEPENDS ${zeb_shipped})
foreach(target ${zeb_shipped})
  set(zeb_library_dir ${CMAKE_INSTALL_LIBDIR})
  if(target STREQUAL "zebstore")
    set(zeb_library_dir ${ZEB_PROVIDER_DIR})
  endif()
  install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} LIBRARY DESTINATION ${zeb_library_dir}
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  # A program finds the library next to it, as in a build, or where it is installed. The list is the same in both places: CMake
  # would fill a shorter one with colons for the build, and an empty entry is the current folder.
  get_target_property(zeb_type ${target} TYPE)
  if(zeb_type STREQUAL EXECUTABLE AND NOT CMAKE_SKIP_INSTALL_RPATH)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN;$ORIGIN/${ZEB_LIBRARY_FROM_BIN}" BUILD_WITH_INSTALL_RPATH ON)
  endif()
endforeach()
if(WIN32 AND TARGET zeb-import)
  install(FILES ${ZEB_MAIL_LIBRARIES} DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(NOT WIN32)
  install(TARGETS zebapi_guids ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

# Debug information lies next to the file that it belongs to, where debuggers look. On Linux it stays in the file: a
# distribution's packaging cuts it off.
if(ZEB_DEBUG_FILES AND MINGW)
  find_program(ZEB_OBJCOPY NAMES x86_64-w64-mingw32-objcopy objcopy REQUIRED)
  foreach(target ${zeb_shipped})
    install(CODE "
      set(file \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/$<TARGET_FILE_NAME:${target}>\")
      execute_process(COMMAND \"${ZEB_OBJCOPY}\" --only-keep-debug \"\${file}\" \"\${file}.debug\" COMMAND_ERROR_IS_FATAL ANY)
      execute_process(COMMAND \"${ZEB_OBJCOPY}\" --strip-all \"--add-gnu-debuglink=\${file}.debug\" \"\${file}\"
                      COMMAND_ERROR_IS_FATAL ANY)")
  endforeach()
elseif(ZEB_DEBUG_FILES AND WIN32)
  foreach(target ${zeb_shipped})
    install(FILES $<TARGET_FILE_DIR:${target}>/$<TARGET_FILE_BASE_NAME:${target}>.pdb DESTINATION ${CMAKE_INSTALL_BINDIR})
  endforeach()
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
if(TARGET zebstore)
  install(FILES ${CMAKE_SOURCE_DIR}/zebstore/zebstore.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zebstore)
endif()
# A host that calls a MAPI interface itself must see the declarations that the library was built with. MinGW's compiler has
# those that need no correction; a host of another compiler that has none finds all of them in a folder of their own.
if(MINGW)
  set(zeb_mapi_dir ${CMAKE_INSTALL_INCLUDEDIR})
  set(zeb_mapi_same "")
else()
  set(zeb_mapi_dir ${CMAKE_INSTALL_INCLUDEDIR}/mapi)
endif()
if(NOT MSVC)
  foreach(header ${zeb_mapi_corrected})
    install(FILES ${ZEB_MAPI_HEADERS}/${header}.h DESTINATION ${zeb_mapi_dir})
  endforeach()
  foreach(header ${zeb_mapi_same})
    install(FILES ${ZEB_MINGW_HEADERS}/${header}.h DESTINATION ${zeb_mapi_dir})
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

# What debuggers need to show the library's values: printers for GDB, which loads them with the library, and the visualizer for
# Visual Studio.
set(zeb_debug_files ${CMAKE_INSTALL_DATADIR}/zebapi/debug)
install(FILES ${CMAKE_SOURCE_DIR}/debug/zebapi_printers.py ${CMAKE_SOURCE_DIR}/debug/zebapi_names.py
              ${CMAKE_SOURCE_DIR}/debug/zebapi.natvis DESTINATION ${zeb_debug_files})
if(WIN32)
  set(zeb_library_folder ${CMAKE_INSTALL_BINDIR})
else()
  set(zeb_library_folder ${CMAKE_INSTALL_LIBDIR})
endif()
file(RELATIVE_PATH zeb_to_debug_files /${zeb_library_folder} /${zeb_debug_files})
configure_file(${CMAKE_SOURCE_DIR}/debug/auto-load.py.in ${CMAKE_BINARY_DIR}/auto-load.py @ONLY)
set(ZEB_GDB_AUTO_LOAD ${zeb_library_folder} CACHE STRING "Where GDB looks for the printers of the installed library")
install(FILES ${CMAKE_BINARY_DIR}/auto-load.py DESTINATION ${ZEB_GDB_AUTO_LOAD} RENAME $<TARGET_FILE_NAME:zebapi>-gdb.py)

# pkg-config: the file knows where it lies, so that the folder can be anywhere.
set(zeb_pc_libs "-lzebapi -lole32 -loleaut32 -luuid")
set(zeb_pc_cflags "")
if(NOT MINGW AND NOT MSVC)
  set(zeb_pc_cflags " -I\${includedir}/mapi")
endif()
if(NOT WIN32)
  set(zeb_pc_libs "-lzebapi -lzebapi_guids")
  string(APPEND zeb_pc_cflags " -isystem ${ZEB_WINE_HEADERS}")
endif()
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE zeb_libdir)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE zeb_pc_up)
configure_file(${CMAKE_SOURCE_DIR}/cmake/zebapi.pc.in ${CMAKE_BINARY_DIR}/zebapi.pc @ONLY NEWLINE_STYLE UNIX)
install(FILES ${CMAKE_BINARY_DIR}/zebapi.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(ZEB_INSTALL_DOCUMENTS)
  include(ZebInstallDocuments)
endif()

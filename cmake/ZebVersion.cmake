# The version of zebapi's binary interface. It is incremented when a change breaks existing hosts. It is part of the
# library's file name, so such hosts do not start: libzebapi.so.1, zebapi-1.dll. 0: not released yet; the DLL is zebapi.dll.
set(ZEB_INTERFACE_VERSION 0)

# zeb_interface_version(TARGET): puts the interface's version into the name of the library's file.
function(zeb_interface_version target)
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${ZEB_INTERFACE_VERSION})
  if(WIN32 AND NOT ZEB_INTERFACE_VERSION EQUAL 0)
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_NAME ${target}-${ZEB_INTERFACE_VERSION})
  endif()
endfunction()

# zeb_dll_name(TARGET RESULT): the file name of a DLL.
function(zeb_dll_name target result)
  get_target_property(name ${target} RUNTIME_OUTPUT_NAME)
  if(NOT name)
    set(name ${target})
  endif()
  set(${result} ${name}.dll PARENT_SCOPE)
endfunction()

# zeb_version(TARGET DESCRIPTION [MANIFEST FILE]): a DLL or program says which version it is, by a version resource. A
# program's manifest becomes a resource too.
function(zeb_version target description)
  cmake_parse_arguments(PARSE_ARGV 2 ARG "" "MANIFEST" "")
  if(NOT WIN32)
    return()
  endif()
  string(REPLACE "." "," numbers ${PROJECT_VERSION}.0)
  zeb_dll_name(${target} name)
  set(filetype 2) # a DLL
  get_target_property(type ${target} TYPE)
  if(type STREQUAL EXECUTABLE)
    set(name ${target}.exe)
    set(filetype 1)
  endif()
  set(manifest "")
  if(ARG_MANIFEST AND NOT MINGW)
    target_sources(${target} PRIVATE ${ARG_MANIFEST}) # CMake merges it with the linker's
  elseif(ARG_MANIFEST)
    # The resource compiler reads the file next to the script.
    configure_file(${ARG_MANIFEST} ${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest COPYONLY)
    set(manifest "1 24 \"${target}.manifest\"\n")
  endif()
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}-version.rc)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/version.rc.in ${script} @ONLY)
  find_program(ZEB_RESOURCE_COMPILER NAMES ${CMAKE_RC_COMPILER} rc llvm-rc llvm-rc-14 REQUIRED)
  # Named relative to their folder: the resource compiler of the MSVC ABI reads a path like /code/... as its option /c.
  if(MINGW)
    set(resource ${target}-version.o)
    set(command ${ZEB_RESOURCE_COMPILER} --output-format=coff ${target}-version.rc ${resource})
  else()
    set(resource ${target}-version.res)
    set(command ${ZEB_RESOURCE_COMPILER} /fo ${resource} ${target}-version.rc)
  endif()
  add_custom_command(
    OUTPUT ${resource}
    COMMAND ${command}
    DEPENDS ${script} ${ARG_MANIFEST}
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
    VERBATIM)
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${resource})
  set_source_files_properties(${resource} PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
  target_sources(${target} PRIVATE ${resource})
endfunction()

# Debug information of what is shipped, in files of their own: FILE.debug of MinGW's compiler (cut off at installation),
# FILE.pdb in the MSVC ABI. Neither says where the sources lay: the same sources in two folders give the same bytes.
option(ZEB_DEBUG_FILES "Debug information of the products, in files of their own" OFF)

# The commands of clang's driver in the MSVC ABI are part of the debug information.
if(WIN32 AND NOT MINGW AND NOT MSVC AND CMAKE_HOST_UNIX)
  set(relative ${CMAKE_SOURCE_DIR}/cmake/relative-paths.sh ${CMAKE_SOURCE_DIR} ${zeb_up})
  foreach(language C CXX)
    list(PREPEND CMAKE_${language}_COMPILER_LAUNCHER ${relative})
    set(CMAKE_${language}_LINKER_LAUNCHER ${relative})
  endforeach()
endif()

# The time of the build is no part of a DLL, nor of an object in an import library.
if(MSVC)
  add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:/Brepro>)
  add_link_options(/Brepro)
elseif(WIN32 AND NOT MINGW)
  add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-mno-incremental-linker-compatible>)
  add_link_options(LINKER:/Brepro)
elseif(MINGW)
  add_link_options(-Wl,--no-insert-timestamp)
endif()

# zeb_debug_files(ON|OFF): for the targets that are added next.
function(zeb_debug_files switch)
  set(compile $<$<COMPILE_LANGUAGE:C,CXX>:-g>)
  set(link "")
  if(MSVC)
    set(compile $<$<COMPILE_LANGUAGE:C,CXX>:/Z7>)
    set(link /debug /opt:ref /opt:icf /pdbaltpath:%_PDB%)
  elseif(WIN32 AND NOT MINGW)
    # The compiler cache adds the colours, and the command is part of the debug information.
    list(APPEND compile $<$<COMPILE_LANGUAGE:C,CXX>:-fcolor-diagnostics> $<$<COMPILE_LANGUAGE:C,CXX>:-gcodeview>
         $<$<COMPILE_LANGUAGE:C,CXX>:-ffile-compilation-dir=.>
         $<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${zeb_up}/=>
         $<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${zeb_deps}/=build/deps/>)
    set(link LINKER:/debug LINKER:/opt:ref LINKER:/opt:icf LINKER:/pdbaltpath:%_PDB% LINKER:/pdbsourcepath:/zebapi)
  else()
    # The compiler cache names what lies in the folder of the build without that folder; so does the last of the maps. GCC
    # names a system header by what it links to where that is shorter, which depends on the folder.
    list(APPEND compile -ffile-prefix-map=${CMAKE_SOURCE_DIR}/= -ffile-prefix-map=${zeb_up}/=
         -ffile-prefix-map=${zeb_deps}/=build/deps/
         -fdebug-prefix-map=${CMAKE_BINARY_DIR}=. -fdebug-prefix-map=${CMAKE_BINARY_DIR}/=)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      list(APPEND compile $<$<COMPILE_LANGUAGE:C,CXX>:-fno-canonical-system-headers>)
    endif()
  endif()
  get_property(compiled DIRECTORY PROPERTY COMPILE_OPTIONS)
  get_property(linked DIRECTORY PROPERTY LINK_OPTIONS)
  if(ZEB_DEBUG_FILES AND switch)
    set_property(DIRECTORY PROPERTY COMPILE_OPTIONS ${compiled} ${compile})
    set_property(DIRECTORY PROPERTY LINK_OPTIONS ${linked} ${link})
  elseif(ZEB_DEBUG_FILES)
    list(REMOVE_ITEM compiled ${compile})
    list(REMOVE_ITEM linked ${link} "")
    set_property(DIRECTORY PROPERTY COMPILE_OPTIONS ${compiled})
    set_property(DIRECTORY PROPERTY LINK_OPTIONS ${linked})
  endif()
endfunction()

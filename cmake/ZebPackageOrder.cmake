# Run by cpack after the archive: packs the same files again, in the order of their names. cpack packs them in the order in which
# the file system lists them.
foreach(package ${CPACK_PACKAGE_FILES})
  cmake_path(GET CPACK_TEMPORARY_DIRECTORY PARENT_PATH parent)
  file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE ${parent} ${CPACK_TEMPORARY_DIRECTORY}/*)
  list(SORT files)
  list(JOIN files "\n" lines)
  file(WRITE ${package}.list "${lines}\n")
  execute_process(COMMAND ${CMAKE_COMMAND} -E tar cf ${package} --format=zip --files-from=${package}.list
                  WORKING_DIRECTORY ${parent} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${package}.list)
endforeach()

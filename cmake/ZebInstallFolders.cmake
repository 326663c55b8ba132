# Where things are installed, and how installed programs find what they need there.
include(GNUInstallDirs)
# The provider is loaded by its path: on Linux it is not among the libraries that programs are linked with.
if(WIN32)
  set(ZEB_PROVIDER_DIR ${CMAKE_INSTALL_BINDIR})
else()
  set(ZEB_PROVIDER_DIR ${CMAKE_INSTALL_LIBDIR}/zebapi)
endif()
# From the programs' folder to the provider's and to the library's.
set(provider ${ZEB_PROVIDER_DIR})
cmake_path(ABSOLUTE_PATH provider BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
cmake_path(RELATIVE_PATH provider BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR} OUTPUT_VARIABLE ZEB_PROVIDER_FROM_BIN)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR} OUTPUT_VARIABLE ZEB_LIBRARY_FROM_BIN)

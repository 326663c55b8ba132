# The library alone, compiled by the user's compiler: it needs nothing but the C++ standard library, Windows and the
# published MAPI headers. The triplet, or the environment, names their folder in ZEBAPI_MAPI_SDK.
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)

# An overlay port: it lies in the sources that it builds.
get_filename_component(SOURCE_PATH "${CURRENT_PORT_DIR}/../../../.." ABSOLUTE)
if(NOT DEFINED ZEBAPI_MAPI_SDK AND DEFINED ENV{ZEBAPI_MAPI_SDK})
  set(ZEBAPI_MAPI_SDK "$ENV{ZEBAPI_MAPI_SDK}")
endif()
set(mapi_headers "")
if(DEFINED ZEBAPI_MAPI_SDK)
  set(mapi_headers "-DZEB_MAPI_SDK=${ZEBAPI_MAPI_SDK}")
endif()

vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS
    -DZEB_PROVIDER=OFF
    -DZEB_TOOLS=OFF
    -DZEB_TESTS=OFF
    -DZEB_BENCH=OFF
    -DZEB_WERROR=OFF
    -DZEB_PRECOMPILE=OFF
    -DZEB_DEBUG_FILES=ON
    -DZEB_INSTALL_DOCUMENTS=OFF
    ${mapi_headers})
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/ZebAPI)
vcpkg_fixup_pkgconfig()
vcpkg_copy_pdbs()

file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include")
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")

# An overlay port of the sources that it lies in:
#     vcpkg install vnbytstr --overlay-ports=packaging/vcpkg
# The resource libraries need windres and ld for Windows files on the machine (Debian:
# binutils-mingw-w64-x86-64); vcpkg has no port of them.
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)
get_filename_component(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)

vcpkg_check_features(OUT_FEATURE_OPTIONS FEATURE_OPTIONS
    FEATURES controls VNBYTSTR_CONTROLS)
vcpkg_cmake_configure(
    SOURCE_PATH "${SOURCE_PATH}"
    OPTIONS
        ${FEATURE_OPTIONS}
        -DVNBYTSTR_EXAMPLES=OFF
        -DVNBYTSTR_TESTS=OFF
        -DVNBYTSTR_BENCH=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/vnbytstr)
vcpkg_fixup_pkgconfig()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/packaging/debian/copyright")

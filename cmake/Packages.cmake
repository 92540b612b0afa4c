# `cpack -G DEB` in a build of the preset `package` makes the Debian packages (scripts/package does all
# of it); `cpack -G TGZ --config CPackSourceConfig.cmake` the tarball of the sources. What depends on
# the version is in packaging/cpack.cmake, which cpack reads, so that `cpack -D` can change it.
set(VNBYTSTR_MAINTAINER "vnbytstr maintainers <maintainers@vnbytstr.invalid>" CACHE STRING
    "Who answers for the packages: name <address>")

set(CPACK_PACKAGE_NAME vnbytstr)
set(CPACK_PACKAGE_CONTACT "${VNBYTSTR_MAINTAINER}")
set(CPACK_PACKAGE_VENDOR "vnbytstr")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/packaging/cpack.cmake")
set(CPACK_COMPONENTS_ALL library development)
if(VNBYTSTR_CONTROLS)
    list(APPEND CPACK_COMPONENTS_ALL controls)
endif()
if(VNBYTSTR_EXAMPLES)
    list(APPEND CPACK_COMPONENTS_ALL vnquery)
endif()
# Folders do not take the umask of whoever makes the packages.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

# What packaging/cpack.cmake has to know of this build.
set(CPACK_VNBYTSTR_SOURCE_DIR "${PROJECT_SOURCE_DIR}")
set(CPACK_VNBYTSTR_BUILD_DIR "${PROJECT_BINARY_DIR}")
set(CPACK_VNBYTSTR_SOVERSION "${VNBYTSTR_SOVERSION}")
set(CPACK_VNBYTSTR_VERSION "${PROJECT_VERSION}")
set(CPACK_VNBYTSTR_LIBDIR "${CMAKE_INSTALL_LIBDIR}")

# The sources: what belongs to the repository, without what was built from it. An unpacked tarball
# makes the same tarball again.
set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME "vnbytstr-${PROJECT_VERSION}")
set(CPACK_SOURCE_IGNORE_FILES "") # packaging/cpack.cmake fills it

include(CPack)

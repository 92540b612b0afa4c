# What `cmake --install` puts in place: libraries, headers, CMake package, pkg-config files. The
# components are library, controls, development and vnquery; a package is made of each.
include(CMakePackageConfigHelpers)

install(TARGETS vnbytstr EXPORT vnbytstrTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            COMPONENT library NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development) # what follows and names no other
# What lies under include/ is public, and nothing else is installed.
install(DIRECTORY include/vnbytstr DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
# The window layer and the controls: a component of their own, since only they need Qt.
if(VNBYTSTR_CONTROLS)
    set_target_properties(vnbytstr_controls PROPERTIES INSTALL_RPATH "$ORIGIN") # finds the core
    install(TARGETS vnbytstr_controls EXPORT vnbytstrControlsTargets
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
                COMPONENT controls NAMELINK_COMPONENT development
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT controls)
    install(EXPORT vnbytstrControlsTargets NAMESPACE vnbytstr::
            DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vnbytstr)
endif()

install(EXPORT vnbytstrTargets NAMESPACE vnbytstr::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vnbytstr)
configure_package_config_file(cmake/vnbytstrConfig.cmake.in
    "${PROJECT_BINARY_DIR}/vnbytstrConfig.cmake"
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vnbytstr
    PATH_VARS VNBYTSTR_DATA_DIR)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/vnbytstrConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/vnbytstrConfig.cmake"
              "${PROJECT_BINARY_DIR}/vnbytstrConfigVersion.cmake"
              cmake/vnbytstrResources.cmake cmake/ResourceLibrary.rci
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vnbytstr)

# The pkg-config files name the prefix from where they are, so that it may be chosen or moved later.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(VNBYTSTR_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
               BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig"
               OUTPUT_VARIABLE up)
    set(VNBYTSTR_PC_PREFIX "\${pcfiledir}/${up}")
endif()
set(pcFiles vnbytstr.pc)
if(VNBYTSTR_CONTROLS)
    list(APPEND pcFiles vnbytstr-controls.pc)
endif()
foreach(file IN LISTS pcFiles)
    configure_file(cmake/${file}.in "${PROJECT_BINARY_DIR}/${file}" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${file}" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
unset(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME)

# What `cmake --install` puts in place: library, headers, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS vnbytstr EXPORT vnbytstrTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/vnbytstr DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
# The public headers include these by "platform/..." next to themselves. Headers named *Internal.h
# stay at home.
install(DIRECTORY platform/framework platform/system platform/companion
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vnbytstr/platform
        FILES_MATCHING PATTERN "*.h" PATTERN "*Internal.h" EXCLUDE)

# The window layer and the controls: a component of their own, since only they need Qt.
if(VNBYTSTR_CONTROLS)
    install(TARGETS vnbytstr_controls EXPORT vnbytstrControlsTargets
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(DIRECTORY platform/window
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vnbytstr/platform
            FILES_MATCHING PATTERN "*.h" PATTERN "*Internal.h" EXCLUDE
            REGEX "/(ComboWidgets|FileFilters|LineField|ListBoxRows|SpinCounter|TextField|WidgetDetails)\\.h$" EXCLUDE)
    install(EXPORT vnbytstrControlsTargets NAMESPACE vnbytstr::
            DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vnbytstr)
endif()

install(EXPORT vnbytstrTargets NAMESPACE vnbytstr::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vnbytstr)
configure_package_config_file(cmake/vnbytstrConfig.cmake.in
    "${PROJECT_BINARY_DIR}/vnbytstrConfig.cmake"
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vnbytstr)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/vnbytstrConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/vnbytstrConfig.cmake"
              "${PROJECT_BINARY_DIR}/vnbytstrConfigVersion.cmake"
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vnbytstr)

configure_file(cmake/vnbytstr.pc.in "${PROJECT_BINARY_DIR}/vnbytstr.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/vnbytstr.pc"
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Read by cpack before each kind of package, after its -D options.
cmake_policy(VERSION 3.25)

# --- the sources ---------------------------------------------------------------------------------
if(CPACK_INSTALLED_DIRECTORIES)
    # Git knows what is the repository's; a tarball has nothing else but folders of builds.
    set(extras "build/" "out/" "compile_commands.json")
    set(untracked "")
    if(EXISTS "${CPACK_VNBYTSTR_SOURCE_DIR}/.git") # a tarball may lie in somebody else's repository
        execute_process(COMMAND git -C "${CPACK_VNBYTSTR_SOURCE_DIR}" ls-files --others --directory
            OUTPUT_VARIABLE untracked OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    endif()
    if(untracked)
        string(REPLACE "\n" ";" untracked "${untracked}")
        list(APPEND extras ${untracked})
    endif()
    list(APPEND extras ".git/" ".git")
    foreach(extra IN LISTS extras)
        string(REGEX REPLACE "([][+.*()^$?|\\\\])" "\\\\\\1" pattern "${CPACK_VNBYTSTR_SOURCE_DIR}/${extra}")
        string(REGEX MATCH "/$" isFolder "${extra}")
        if(isFolder)
            list(APPEND CPACK_IGNORE_FILES "^${pattern}")
        else()
            list(APPEND CPACK_IGNORE_FILES "^${pattern}$")
        endif()
    endforeach()
    set(CPACK_PACKAGING_INSTALL_PREFIX "/")
    set(CPACK_PRE_BUILD_SCRIPTS "${CPACK_VNBYTSTR_SOURCE_DIR}/packaging/times.cmake")
    return()
endif()

# --- Debian packages -----------------------------------------------------------------------------
if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SOURCE vnbytstr)
if(NOT CPACK_DEBIAN_PACKAGE_VERSION)
    set(CPACK_DEBIAN_PACKAGE_VERSION "${CPACK_PACKAGE_VERSION}-1")
endif()
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The libraries of this build are not installed here.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    "${CPACK_VNBYTSTR_BUILD_DIR}" "${CPACK_VNBYTSTR_BUILD_DIR}/src/window")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(exactly "(= ${CPACK_DEBIAN_PACKAGE_VERSION})")
set(soversion "${CPACK_VNBYTSTR_SOVERSION}")
set(core "libvnbytstr${soversion}")
set(controls "libvnbytstr-controls${soversion}")
# Each component's description begins with a line of its own. Lines have less than 80 columns.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(about "vnbytstr keeps large objects and query results partly in memory and partly in
a swap file, translates text between character sets, speaks eleven languages,
and has lists of many rows and columns for programs that query databases.")

# Both shared libraries say which package has them (shlibs) and since which version each of their
# symbols (symbols, made by packaging/debian/prepare.cmake), for dpkg-shlibdeps.
foreach(component LIBRARY CONTROLS)
    set(CPACK_DEBIAN_${component}_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_${component}_DEBUGINFO_PACKAGE ON)
endforeach()
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(control "${CPACK_VNBYTSTR_BUILD_DIR}/packaging")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${core})
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "byte storage and text for desktop database programs
${about}
.
This package has the shared library and its texts.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${control}/library/symbols;${control}/library/triggers")

set(CPACK_DEBIAN_CONTROLS_PACKAGE_NAME ${controls})
set(CPACK_DEBIAN_CONTROLS_PACKAGE_DEPENDS "${core} ${exactly}")
set(CPACK_COMPONENT_CONTROLS_DESCRIPTION "windows and list controls on vnbytstr
${about}
.
This package has the shared library of the window layer and the list controls.")
set(CPACK_DEBIAN_CONTROLS_PACKAGE_CONTROL_EXTRA "${control}/controls/symbols;${control}/controls/triggers")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvnbytstr-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${core} ${exactly}")
if("controls" IN_LIST CPACK_COMPONENTS_ALL)
    string(APPEND CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ", ${controls} ${exactly}")
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "qt6-base-dev")
endif()
# What compiles a program's own texts.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "binutils-mingw-w64-x86-64")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "byte storage and text for database programs (development)
${about}
.
This package has the headers, the files for CMake and pkg-config, the guides and
example programs. It needs a compiler for C++20.")

set(CPACK_DEBIAN_VNQUERY_PACKAGE_NAME vnquery)
set(CPACK_DEBIAN_VNQUERY_PACKAGE_SECTION database)
set(CPACK_DEBIAN_VNQUERY_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_VNQUERY_PACKAGE_DEPENDS "${core} ${exactly}")
if("controls" IN_LIST CPACK_COMPONENTS_ALL)
    string(APPEND CPACK_DEBIAN_VNQUERY_PACKAGE_DEPENDS ", ${controls} ${exactly}")
endif()
# What opens the help pages; pictures and Qt's own texts of the window.
set(CPACK_DEBIAN_VNQUERY_PACKAGE_RECOMMENDS
    "xdg-utils, qt6-image-formats-plugins, libqt6svg6, qt6-translations-l10n")
set(CPACK_DEBIAN_VNQUERY_PACKAGE_SUGGESTS "odbc-postgresql, sqlite3")
set(CPACK_COMPONENT_VNQUERY_DESCRIPTION "runs SQL queries and shows, edits and exports results
vnquery runs queries on SQLite or over ODBC, on the command line or in a window,
shows results of any size, saves their large objects and exports them as CSV,
JSON, SQL and more, or as text in any character set.")

set(CPACK_PRE_BUILD_SCRIPTS "${CPACK_VNBYTSTR_SOURCE_DIR}/packaging/debian/prepare.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${CPACK_VNBYTSTR_SOURCE_DIR}/packaging/debian/debug_symbols.cmake")

# Run by cpack when the files of each component lie in their folders: adds what Debian wants of every
# package (changelogs, the copyright file, compressed manual pages), and makes the control files of
# the shared libraries. Nothing depends on the time or on the user who runs it.
cmake_policy(VERSION 3.25)
set(source "${CPACK_VNBYTSTR_SOURCE_DIR}")
set(control "${CPACK_VNBYTSTR_BUILD_DIR}/packaging")
find_program(GZIP gzip REQUIRED)
find_program(DPKG_GENSYMBOLS dpkg-gensymbols REQUIRED)

# The time of every file, of the changelog and of the archives: the caller's, or the last change's.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    file(TIMESTAMP "${source}/CHANGELOG.md" seconds "%s" UTC)
    set(ENV{SOURCE_DATE_EPOCH} "${seconds}")
endif()
execute_process(COMMAND date -u -R -d "@$ENV{SOURCE_DATE_EPOCH}"
    OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

function(compress)
    execute_process(COMMAND "${GZIP}" -9nf ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# What each package has in its folder of documents.
function(add_documents folder package)
    set(documents "${folder}/usr/share/doc/${package}")
    file(MAKE_DIRECTORY "${documents}")
    file(COPY "${source}/packaging/debian/copyright" DESTINATION "${documents}")
    configure_file("${source}/CHANGELOG.md" "${documents}/changelog" COPYONLY)
    file(WRITE "${documents}/changelog.Debian" "vnbytstr (${CPACK_DEBIAN_PACKAGE_VERSION}) unstable; urgency=medium

  * Packages of vnbytstr ${CPACK_VNBYTSTR_VERSION}; changelog.gz has the changes.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
    compress("${documents}/changelog" "${documents}/changelog.Debian")
    file(GLOB_RECURSE manual "${folder}/usr/share/man/*.[0-9]")
    if(manual)
        compress(${manual})
    endif()
endfunction()

# All symbols count as new in this version: until 1.0 each minor version has a SONAME of its own, and
# a program that was built with a patch version asks for at least that.
function(add_library_control folder component package)
    file(MAKE_DIRECTORY "${control}/${component}")
    file(WRITE "${control}/${component}/triggers" "activate-noawait ldconfig\n")
    file(REMOVE "${control}/${component}/symbols")
    file(GLOB library "${folder}/usr/${CPACK_VNBYTSTR_LIBDIR}/lib*.so.${CPACK_VNBYTSTR_VERSION}")
    execute_process(COMMAND "${DPKG_GENSYMBOLS}" -q -c0 "-p${package}" "-v${CPACK_VNBYTSTR_VERSION}"
            "-e${library}" "-O${control}/${component}/symbols"
        WORKING_DIRECTORY "${control}/${component}" COMMAND_ERROR_IS_FATAL ANY)
    file(CHMOD "${control}/${component}/triggers" "${control}/${component}/symbols"
        PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    set(folder "${CPACK_TEMPORARY_DIRECTORY}/${component}")
    string(TOUPPER "${component}" upper)
    set(package "${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
    add_documents("${folder}" "${package}")
    if(component MATCHES "^(library|controls)$")
        add_library_control("${folder}" "${component}" "${package}")
    elseif(component STREQUAL "development")
        # As in the sources, so that the links between them lead somewhere.
        set(documents "${folder}/usr/share/doc/${package}")
        file(COPY "${source}/README.md" "${source}/docs" DESTINATION "${documents}")
        file(COPY "${source}/examples/programs" DESTINATION "${documents}/examples")
    elseif(component STREQUAL "vnquery")
        file(COPY "${source}/scripts/films.sql" DESTINATION "${folder}/usr/share/doc/${package}/examples")
    endif()
    # What was copied has the umask of whoever checked the sources out.
    execute_process(COMMAND chmod -R u=rwX,go=rX "${folder}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()

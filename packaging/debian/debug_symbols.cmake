# Run by cpack when the packages are made: what it leaves out of those with debug symbols. Their list of
# checksums names files in the folder that they were built in, and they have no documents: those of
# the package that they belong to, and depend on, are theirs as well.
cmake_policy(VERSION 3.25)
find_program(DPKG_DEB dpkg-deb REQUIRED)
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    if(NOT package MATCHES "\\.ddeb$")
        continue()
    endif()
    set(folder "${package}.files")
    file(REMOVE_RECURSE "${folder}")
    execute_process(COMMAND "${DPKG_DEB}" --raw-extract "${package}" "${folder}" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND "${DPKG_DEB}" --field "${package}" Package
        OUTPUT_VARIABLE name OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE "-dbgsym$" "" owner "${name}")
    file(MAKE_DIRECTORY "${folder}/usr/share/doc")
    file(CREATE_LINK "${owner}" "${folder}/usr/share/doc/${name}" SYMBOLIC)
    file(GLOB_RECURSE symbols RELATIVE "${folder}" "${folder}/usr/lib/debug/*.debug")
    list(SORT symbols)
    file(WRITE "${folder}/DEBIAN/md5sums" "")
    foreach(file IN LISTS symbols)
        file(MD5 "${folder}/${file}" sum)
        file(APPEND "${folder}/DEBIAN/md5sums" "${sum}  ${file}\n")
    endforeach()
    execute_process(COMMAND chmod -R u=rwX,go=rX "${folder}" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND "${DPKG_DEB}" --root-owner-group -Zxz --build "${folder}" "${package}"
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE "${folder}")
endforeach()

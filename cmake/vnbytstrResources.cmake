# Texts in several languages: resource libraries, one PE file per language.

# vnbytstr_add_resource_library(TARGET LANGUAGE SCRIPT [PREFIX NAME] [DEPENDS FILE...])
#
# Compiles the resource script SCRIPT to the resource library <NAME><LANGUAGE>.dll (NAME is TARGET's by
# default) whenever TARGET is built, and puts it where a program that is built in this folder looks for
# it: beside the program. LANGUAGE is a code of three letters, such as ENU. DEPENDS names the files that
# the script includes. The full names of the libraries are in TARGET's property
# VNBYTSTR_RESOURCE_LIBRARIES:
#
#     foreach(language ENU DEU)
#         vnbytstr_add_resource_library(films ${language} messages/films${language}.rc
#                                       DEPENDS messages/MessageIds.h)
#     endforeach()
#     install(FILES $<TARGET_PROPERTY:films,VNBYTSTR_RESOURCE_LIBRARIES> TYPE BIN)
#
# The script is UTF-8. It includes "ResourceLibrary.rci", which says what it has to define before, and
# the program loads its strings with vnbytstr::ProgramTexts (vnbytstr/ProgramTexts.h). The same sources
# give the same bytes. Needs windres and ld for Windows files (Debian: binutils-mingw-w64-x86-64).
function(vnbytstr_add_resource_library target language script)
    cmake_parse_arguments(PARSE_ARGV 3 add "" "PREFIX" "DEPENDS")
    if(add_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "vnbytstr_add_resource_library does not know ${add_UNPARSED_ARGUMENTS}.")
    endif()
    if(NOT add_PREFIX)
        set(add_PREFIX "${target}")
    endif()
    find_program(VNBYTSTR_WINDRES NAMES x86_64-w64-mingw32-windres i686-w64-mingw32-windres)
    find_program(VNBYTSTR_PE_LINKER NAMES x86_64-w64-mingw32-ld i686-w64-mingw32-ld)
    if(NOT VNBYTSTR_WINDRES OR NOT VNBYTSTR_PE_LINKER)
        message(FATAL_ERROR "Resource libraries need windres and ld for Windows files (Debian package "
            "binutils-mingw-w64-x86-64).")
    endif()
    set(name "${add_PREFIX}${language}")
    set(folder "${CMAKE_CURRENT_BINARY_DIR}")
    if(CMAKE_RUNTIME_OUTPUT_DIRECTORY)
        set(folder "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
    endif()
    set(library "${folder}/${name}.dll")
    cmake_path(ABSOLUTE_PATH script BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" NORMALIZE)
    cmake_path(GET script PARENT_PATH scriptFolder)
    set(compiler "${CMAKE_CXX_COMPILER}")
    if(NOT compiler)
        set(compiler "${CMAKE_C_COMPILER}")
    endif()
    string(REGEX MATCHALL "[0-9]+" version "${PROJECT_VERSION}.0.0")
    list(GET version 0 major)
    list(GET version 1 minor)
    # The compiler's own preprocessor: one for Windows programs may be missing.
    add_custom_command(OUTPUT "${library}"
        COMMAND "${VNBYTSTR_WINDRES}" --codepage=65001 "--preprocessor=${compiler}"
                --preprocessor-arg=-E --preprocessor-arg=-xc --preprocessor-arg=-DRC_INVOKED
                -DRESOURCE_MAJOR=${major} -DRESOURCE_MINOR=${minor}
                "--include-dir=${scriptFolder}"
                "--include-dir=${CMAKE_CURRENT_FUNCTION_LIST_DIR}"
                --output-format=coff "${script}" "${name}.o"
        COMMAND "${VNBYTSTR_PE_LINKER}" -shared --entry 0 --strip-all --no-insert-timestamp
                -o "${library}" "${name}.o"
        DEPENDS "${script}" ${add_DEPENDS} "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/ResourceLibrary.rci"
        COMMENT "Compiling resource library ${name}.dll"
        VERBATIM)
    add_custom_target(${name} DEPENDS "${library}")
    add_dependencies(${target} ${name})
    set_property(TARGET ${target} APPEND PROPERTY VNBYTSTR_RESOURCE_LIBRARIES "${library}")
endfunction()

# vnbytstr_deploy_resources(TARGET [DESTINATION FOLDER]): copies the resource libraries with this
# library's own texts, in all languages, beside a program when it is built; with DESTINATION also
# installs them there. Needed where the program goes to machines without an installation of vnbytstr;
# else the library finds its own.
function(vnbytstr_deploy_resources target)
    cmake_parse_arguments(PARSE_ARGV 1 deploy "" "DESTINATION" "")
    file(GLOB libraries "${vnbytstr_RESOURCE_DIR}/vnurc*.dll")
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${libraries} "$<TARGET_FILE_DIR:${target}>"
        VERBATIM)
    if(deploy_DESTINATION)
        install(FILES ${libraries} DESTINATION "${deploy_DESTINATION}")
    endif()
endfunction()

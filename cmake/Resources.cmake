# vnbytstr_resources_beside(target): puts the resource libraries beside a program of this build, where
# it looks for them. Once per folder is enough for all programs in it.
function(vnbytstr_resources_beside target)
    get_property(name DIRECTORY PROPERTY VNBYTSTR_RESOURCE_COPIES)
    if(NOT name)
        set(name ${target}_resources)
        get_property(libraries GLOBAL PROPERTY VNBYTSTR_RESOURCE_LIBRARIES)
        set(copies "")
        foreach(library IN LISTS libraries)
            cmake_path(GET library FILENAME file)
            set(copy "${CMAKE_CURRENT_BINARY_DIR}/${file}")
            add_custom_command(OUTPUT "${copy}"
                COMMAND "${CMAKE_COMMAND}" -E copy "${library}" "${copy}"
                DEPENDS vnbytstr_resources "${library}"
                VERBATIM)
            list(APPEND copies "${copy}")
        endforeach()
        add_custom_target(${name} DEPENDS ${copies})
        set_property(DIRECTORY PROPERTY VNBYTSTR_RESOURCE_COPIES ${name})
    endif()
    add_dependencies(${target} ${name})
endfunction()

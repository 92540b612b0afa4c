# vnbytstr_deploy_resources(TARGET [DESTINATION FOLDER]): copies the resource libraries, which hold the
# texts in all languages, beside a program when it is built; with DESTINATION also installs them
# there. Needed where the program goes to machines without an installation of vnbytstr; else the
# library finds its own.
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

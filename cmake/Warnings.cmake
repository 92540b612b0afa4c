# Warnings, sanitizers and coverage for every target of this project.
function(vnbytstr_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion)
    # Not under the sanitizers: their instrumentation makes gcc warn of things that are not there.
    if(VNBYTSTR_WERROR AND NOT VNBYTSTR_SANITIZE)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

if(VNBYTSTR_SANITIZE)
    add_compile_options(-fsanitize=${VNBYTSTR_SANITIZE} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${VNBYTSTR_SANITIZE})
endif()
if(VNBYTSTR_COVERAGE)
    add_compile_options(--coverage)
    add_compile_definitions(VNBYTSTR_COVERAGE)
    add_link_options(--coverage)
endif()

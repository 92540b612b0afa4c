# Headers that nearly every file reads, compiled once per target. Tests have them always; the code
# only with VNBYTSTR_PCH, on in the sanitizers' preset: elsewhere a missing #include has to be found.
option(VNBYTSTR_PCH "Precompile the headers that nearly every file of the code reads" OFF)

function(vnbytstr_precompile target)
    if(VNBYTSTR_PCH)
        target_precompile_headers(${target} PRIVATE
            <algorithm> <array> <functional> <map> <memory> <optional> <span> <string>
            <string_view> <utility> <vector> ${ARGN})
    endif()
endfunction()

# A test program is compiled more often than it is run: hardly optimised, with its headers ready, and
# under the sanitizers watched for its use of memory only (the code under test is watched in full). All
# programs that ask for the same headers share those of the first; with others than the test
# framework's own, those of one folder do.
function(vnbytstr_compile_test_fast target)
    set(key ${ARGN})
    if(key)
        list(APPEND key "${CMAKE_CURRENT_SOURCE_DIR}")
    endif()
    string(MAKE_C_IDENTIFIER "VNBYTSTR_TEST_HEADERS_${key}" property)
    get_property(owner GLOBAL PROPERTY ${property})
    if(owner)
        target_precompile_headers(${target} REUSE_FROM ${owner})
    else()
        target_precompile_headers(${target} PRIVATE <gtest/gtest.h> ${ARGN})
        set_property(GLOBAL PROPERTY ${property} ${target})
    endif()
    # gcc 12 sees strings overflow at -O1 that do not.
    target_compile_options(${target} PRIVATE
        "$<$<CONFIG:RelWithDebInfo>:-O1;-Wno-array-bounds;-Wno-stringop-overflow>"
        $<$<CONFIG:Debug>:-O0>)
    if(VNBYTSTR_SANITIZE MATCHES undefined)
        target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
    endif()
endfunction()

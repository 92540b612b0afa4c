# Headers that nearly every file reads, compiled once per target: VNBYTSTR_PCH, on in the sanitizers'
# preset, where only the time to build counts. Off elsewhere, so that a missing #include is found.
option(VNBYTSTR_PCH "Precompile the headers that nearly every file reads" OFF)

function(vnbytstr_precompile target)
    if(VNBYTSTR_PCH)
        target_precompile_headers(${target} PRIVATE
            <algorithm> <array> <functional> <map> <memory> <optional> <span> <string>
            <string_view> <utility> <vector> ${ARGN})
    endif()
endfunction()

# Hardening for what is given to others: what an error in memory can be made to do is narrowed down by
# the compiler, the linker and the kernel. docs/security.md names each.
option(VNBYTSTR_HARDENING
       "Harden: checked library calls, stack protection, control-flow marks, read-only relocations" OFF)

if(VNBYTSTR_HARDENING)
    include(CheckCXXCompilerFlag)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
    foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
        string(MAKE_C_IDENTIFIER "VNBYTSTR_HAS${flag}" known)
        check_cxx_compiler_flag(${flag} ${known})
        if(${known})
            add_compile_options(${flag})
        endif()
    endforeach()
    # Without optimisation the C library's checks only give a warning. A value of the compiler's own
    # default would be redefined, which is a warning as well.
    add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
    if(NOT WIN32)
        add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
    endif()
endif()

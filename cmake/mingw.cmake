# Toolchain for Windows programs by MinGW-w64 on Debian, with the libraries that scripts/windows-libraries
# built. The environment says which processor (VNBYTSTR_WINDOWS_CPU: x86_64, or i686 for 32 bits) and
# where the libraries are (VNBYTSTR_WINDOWS_LIBRARIES).
set(CMAKE_SYSTEM_NAME Windows)
set(cpu "$ENV{VNBYTSTR_WINDOWS_CPU}")
if(cpu STREQUAL "")
    set(cpu x86_64)
endif()
set(libraries "$ENV{VNBYTSTR_WINDOWS_LIBRARIES}")
if(libraries STREQUAL "")
    set(libraries /opt/vnbytstr-mingw)
endif()
set(CMAKE_SYSTEM_PROCESSOR ${cpu})
# The variants with POSIX threads: std::thread and std::mutex need them.
set(CMAKE_C_COMPILER ${cpu}-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER ${cpu}-w64-mingw32-g++-posix)
# The compiler takes the stack for aligned to 32 and 64 bytes where the system aligns it to 16 (GCC bug
# 54412): the assembler turns the moves of vector registers into ones that need no alignment.
set(CMAKE_C_FLAGS_INIT -Wa,-muse-unaligned-vector-move)
set(CMAKE_CXX_FLAGS_INIT -Wa,-muse-unaligned-vector-move)
set(CMAKE_RC_COMPILER ${cpu}-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH ${libraries}/${cpu} /usr/${cpu}-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Programs of the build, such as tests, run on a Win32 runtime where there is one.
find_program(VNBYTSTR_WINE NAMES wine64 wine HINTS /usr/lib/wine)
if(VNBYTSTR_WINE AND cpu STREQUAL x86_64)
    set(CMAKE_CROSSCOMPILING_EMULATOR "${VNBYTSTR_WINE}")
endif()

// Marks the names that the core's shared library exports; everything else stays hidden. Define
// VNBYTSTR_STATIC where the core is linked as a static library. The controls library has a macro
// of its own, in window/Export.h. What else depends on the compiler in public headers is here, too.
#pragma once

#if defined(_MSVC_LANG) ? _MSVC_LANG < 202002L : __cplusplus < 202002L
#error "vnbytstr needs C++20: compile with -std=c++20, or link vnbytstr::vnbytstr with CMake."
#endif

/// Marks what the library exports.
#if defined(VNBYTSTR_STATIC) // the library is linked into the program
#define VNBYTSTR_API
#elif !defined(_WIN32)
#define VNBYTSTR_API __attribute__((visibility("default")))
#elif defined(VNBYTSTR_BUILDING)
#define VNBYTSTR_API __declspec(dllexport)
#else
#define VNBYTSTR_API __declspec(dllimport)
#endif

/// Lets the compiler check a function's arguments against its format, parameter number `format`;
/// the first of the arguments is number `first`, or 0 where they come as a va_list.
#if defined(__MINGW32__) && !defined(__clang__) // whose "printf" is that of another runtime
#define VNBYTSTR_FORMAT(format, first) __attribute__((__format__(__gnu_printf__, format, first)))
#elif defined(__GNUC__)
#define VNBYTSTR_FORMAT(format, first) __attribute__((__format__(__printf__, format, first)))
#else
#define VNBYTSTR_FORMAT(format, first)
#endif

// Marks the names that the shared library exports; everything else stays hidden.
#pragma once

#if defined(_MSVC_LANG) ? _MSVC_LANG < 202002L : __cplusplus < 202002L
#error "vnbytstr needs C++20: compile with -std=c++20, or link vnbytstr::vnbytstr with CMake."
#endif

#if defined(_WIN32)
#if defined(VNBYTSTR_BUILDING)
#define VNBYTSTR_API __declspec(dllexport)
#else
#define VNBYTSTR_API __declspec(dllimport)
#endif
#else
#define VNBYTSTR_API __attribute__((visibility("default")))
#endif

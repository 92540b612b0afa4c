// Marks the names that the shared library exports; everything else stays hidden.
#pragma once

#if defined(_WIN32)
#if defined(VNBYTSTR_BUILDING)
#define VNBYTSTR_API __declspec(dllexport)
#else
#define VNBYTSTR_API __declspec(dllimport)
#endif
#else
#define VNBYTSTR_API __attribute__((visibility("default")))
#endif

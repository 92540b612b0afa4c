// The framework's scalar types, with the same widths on every platform; the one place that has
// them. On Windows they are the system's own, so that a program may include <windows.h> before or
// after. A 32-bit unsigned value is a DWORD: `unsigned long` has 64 bits elsewhere and is used
// nowhere.
#pragma once

#include "vnbytstr/framework/Export.h"

#include <cstdint>

#if defined(_WIN32)
#if !defined(WIN32_LEAN_AND_MEAN)
#define WIN32_LEAN_AND_MEAN
#endif
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>
// Macros there, names of functions here.
#undef GetModuleFileName
#undef LoadString
#undef MessageBox
#undef ShellExecute
#else

/// Types of the interface, as wide on every system.
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using BOOL = int;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using COLORREF = DWORD;
using WCHAR = char16_t;
using LPCSTR = const char*;
using LPSTR = char*;
using LPCTSTR = const char*;
using LPTSTR = char*;

struct HINSTANCE__;
/// Handle of a loaded resource library.
using HINSTANCE = HINSTANCE__*;

#ifndef TRUE
/// What a BOOL holds.
#define TRUE 1
#endif
#ifndef FALSE
/// What a BOOL holds.
#define FALSE 0
#endif

#endif

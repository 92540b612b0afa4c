// The framework's scalar types, with the same widths on every platform.
// A 32-bit unsigned value is a DWORD: `unsigned long` has 64 bits here and is used nowhere.
#pragma once

#include "vnbytstr/framework/Export.h"

#include <cstdint>

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
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

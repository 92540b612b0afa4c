// What the system's settings say about the text that programs meet.
#pragma once

#include "vnbytstr/framework/Export.h"

namespace vnbytstr {

/// Whether text may hold characters of several bytes: the ANSI code page is a double-byte page,
/// another multi-byte one, or UTF-8.
VNBYTSTR_API bool IsDbcsEnabled();
/// Whether the system is set up for text from right to left: the ANSI code page is the Hebrew or
/// the Arabic one (1255, 1256), or the locale's language is written that way.
VNBYTSTR_API bool IsMiddleEastEnabled();

} // namespace vnbytstr

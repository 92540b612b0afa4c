// A program that includes <windows.h> before, with all its macros, the library.
#undef WIN32_LEAN_AND_MEAN
#undef NOMINMAX
#define UNICODE
#include <windows.h>

#include "vnbytstr/vnbytstr.h"

#define HEADER_ORDER Before
#include "tests/text/windows/HeaderTest.h"

// A program that includes <windows.h> after the library.
#undef WIN32_LEAN_AND_MEAN
#undef NOMINMAX
#include "vnbytstr/vnbytstr.h"

#include <windows.h>

#define HEADER_ORDER After
#include "tests/text/windows/HeaderTest.h"

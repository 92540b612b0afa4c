// unixODBC's headers beside the framework's. Both define names of the same scalar types; where they
// differ in kind, ODBC's get other names here, as the windowless half of it uses neither.
#pragma once

#include "vnbytstr/ByteStream.h"

#define WCHAR OdbcUtf16Unit
#define HINSTANCE OdbcInstanceHandle
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
#undef HINSTANCE
#undef WCHAR
#undef BOOL

// unixODBC's headers, together with the framework's. Both define the names of some scalar types;
// where these differ, ODBC's are renamed here. The functions used here need neither.
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

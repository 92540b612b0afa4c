// ODBC's headers, together with the framework's. unixODBC's define the names of some scalar types,
// too; where these differ, ODBC's are renamed here. The functions used here need neither. Windows'
// headers take the system's types, as the framework does there.
#pragma once

#include "vnbytstr/ByteStream.h"

#if !defined(_WINDOWS_)
#define WCHAR OdbcUtf16Unit
#define HINSTANCE OdbcInstanceHandle
#endif
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
#undef HINSTANCE
#undef WCHAR
#undef BOOL

// The trace of how language and resources are chosen.
#pragma once

#include "vnbytstr/framework/String.h"

namespace vnbytstr::detail {

/// Whether trace lines are written (VNBYTSTR_TRACE=1, read when the system is installed).
bool IsTracing();

/// Writes a line through the system when that is wanted; formats as printf does, and only then.
VNBYTSTR_FORMAT(1, 2) void Trace(const char* format, ...);

} // namespace vnbytstr::detail

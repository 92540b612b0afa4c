// The interactive mode.
#pragma once

#include "vnquery/console/Options.h"

namespace vnquery {

/// Reads statements from the terminal and runs each as soon as a semicolon ends it, until the input
/// ends or .quit. Ctrl-C cancels the line or the query. Throws Failure when the database cannot be
/// opened, and Interrupted on signals other than Ctrl-C.
void RunShell(const Options& options);

} // namespace vnquery

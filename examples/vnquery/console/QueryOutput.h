// Runs statements and does with their rows what the options ask for.
#pragma once

#include "vnquery/console/Options.h"
#include "vnquery/sources/QueryGuard.h"

namespace vnquery {

/// Runs one query. The rows go one by one through everything that the options name. Throws
/// Failure, OutputClosed and Interrupted.
void RunStatement(const Options& options, const std::string& sql);

/// Runs the statements of the options' SQL one after the other, up to the first that fails.
void RunScript(const Options& options);

} // namespace vnquery

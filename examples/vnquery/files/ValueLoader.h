// Loads a file as a value.
#pragma once

#include "vnquery/result/ColumnKind.h"
#include "vnquery/result/Value.h"
#include "vnquery/tasks/Progress.h"

#include <string>

namespace vnquery {

/// Reads a file as a value for a column of that kind: bytes, or text (UTF-8, without its byte
/// order mark). Throws Interrupted, and Failure when the file cannot be read, is a folder, is not
/// UTF-8 where a text is needed, or is longer than 4 GiB - 2. `column` is for messages.
Value LoadValue(const std::string& file, ColumnKind kind, const std::string& column,
                Progress& progress);

} // namespace vnquery

// A file's content as a value.
#pragma once

#include "vnquery/result/ColumnKind.h"
#include "vnquery/result/Value.h"
#include "vnquery/work/Progress.h"

#include <string>

namespace vnquery {

/// Reads a file as a value for a column of that kind: bytes, or text (UTF-8, where a byte order
/// mark at the beginning does not count). Throws Failure when it cannot be read, is a folder, is no
/// text where one is needed, or is longer than 4 GiB - 2; and Interrupted.
Value LoadValue(const std::string& file, ColumnKind kind, const std::string& column,
                Progress& progress);

} // namespace vnquery

// What a result takes up.
#pragma once

#include "vnquery/result/ResultSet.h"

namespace vnquery {

/// Prints to standard error: rows, values, bytes held, pages in memory and in swap files, these
/// files' names and sizes, and the most memory that the process had.
void PrintStatistics(const ResultSet& result);

} // namespace vnquery

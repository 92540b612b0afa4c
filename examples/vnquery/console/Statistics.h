// How much memory and disk a result uses.
#pragma once

#include "vnquery/result/ResultSet.h"

namespace vnquery {

/// Prints to standard error: rows, values, bytes held, pages in memory and in swap files, the names
/// and sizes of these files, and the peak memory of the process.
void PrintStatistics(const ResultSet& result);

} // namespace vnquery

// The result as columns on the terminal.
#pragma once

#include "vnquery/result/CellText.h"
#include "vnquery/result/ResultSet.h"

namespace vnquery {

/// Writes headings, rows and the number of rows to standard output. A column is as wide as its
/// widest cell; numbers are right-aligned. Throws Failure when the output cannot be written.
void PrintResult(const ResultSet& result, const CellFormat& format);

} // namespace vnquery

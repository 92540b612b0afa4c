// A row of the result as the single text that a list takes.
#pragma once

#include "vnquery/result/CellText.h"
#include "vnquery/result/PendingEdits.h"

#include <string>

namespace vnquery {

/// Separates the values of a row in the list. FormatCell makes control characters visible, so no
/// displayed value contains it.
constexpr char kCellSeparator = '\x1F';

/// A cell as it is displayed: its new value if it was changed.
std::string DisplayCell(const ResultSet& result, const PendingEdits& edits, CellPlace place,
                        const CellFormat& format);

/// The row's cells in the order of `columns` (indices of the result's columns).
std::string DisplayRow(const ResultSet& result, const PendingEdits& edits, std::size_t row,
                       const std::vector<std::size_t>& columns, const CellFormat& format);

} // namespace vnquery

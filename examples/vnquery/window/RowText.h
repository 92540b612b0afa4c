// A row of the result as the one text that a list takes.
#pragma once

#include "vnquery/result/CellText.h"
#include "vnquery/result/PendingEdits.h"

#include <string>

namespace vnquery {

/// What the list puts between the values of a row. FormatCell makes every control character
/// visible, so that no displayed value can hold it.
constexpr char kCellSeparator = '\x1F';

/// A cell as it is displayed: what it is to become, when it was changed.
std::string DisplayCell(const ResultSet& result, const PendingEdits& edits, CellPlace place,
                        const CellFormat& format);

/// The row's cells in the order of `columns` (indices of the result's columns).
std::string DisplayRow(const ResultSet& result, const PendingEdits& edits, std::size_t row,
                       const std::vector<std::size_t>& columns, const CellFormat& format);

} // namespace vnquery

// Which text of an array belongs to which row of a list, kept up to date while rows are inserted,
// removed and reordered.
#pragma once

#include "vnbytstr/framework/Arrays.h"

#include <span>

namespace vnbytstr::detail {

/// A row and its text were inserted, both at index `row`. The new entry refers to text `row`;
/// entries that referred to it or to a later text now refer to the next one.
void InsertMappedRow(CUIntArray& map, int row);

/// `row` and its text were removed; entries that referred to a later text now refer to the one
/// before. Rows out of range are ignored.
void RemoveMappedRow(CUIntArray& map, int row);

/// The rows were reordered: `order` contains, for each new row, its row before. A map of another
/// size is not changed.
void ReorderMappedRows(CUIntArray& map, std::span<const int> order);

/// The text of `row`, or -1 when it is out of range.
int MappedIndex(const CUIntArray& map, int row);

} // namespace vnbytstr::detail

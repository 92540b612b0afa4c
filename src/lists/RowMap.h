// Which text of an array belongs to which row of a list, kept right while rows are inserted and
// reordered.
#pragma once

#include "vnbytstr/framework/Arrays.h"

#include <span>

namespace vnbytstr::detail {

/// A row and its text were just inserted at `row`: the new entry names text `row`, and entries of
/// other rows that named `row` or a later text name the next one, since the texts moved up too.
void InsertMappedRow(CUIntArray& map, int row);

/// A row and its text were just removed: entries of other rows that named a later text name the one
/// before. A row that the map does not have changes nothing.
void RemoveMappedRow(CUIntArray& map, int row);

/// The rows were reordered: `order` holds, for each new row, the row it was before. A map that does
/// not cover the rows stays as it is.
void ReorderMappedRows(CUIntArray& map, std::span<const int> order);

/// The text of `row`; -1 when the map has none for it.
int MappedIndex(const CUIntArray& map, int row);

} // namespace vnbytstr::detail

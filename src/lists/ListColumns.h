// The columns of a list as plain arithmetic: where they lie, how wide they become, which cell is
// edited next. Pixels, columns and rows count from 0.
#pragma once

#include "vnbytstr/ListColumn.h"

#include <functional>
#include <optional>
#include <span>
#include <string_view>

namespace vnbytstr::detail {

using Columns = std::span<const SListColumn>;

/// Pixels from `left` up to and without `right`.
struct PixelSpan {
    int left = 0;
    int right = 0;
    bool IsEmpty() const { return right <= left; }
    bool operator==(const PixelSpan&) const = default;
};

struct CellAddress {
    int row = -1;
    int column = -1;
    bool operator==(const CellAddress&) const = default;
};

/// Sum of the first `count` widths; stays within int.
int WidthBefore(Columns columns, int count);
/// The first column whose running sum of widths exceeds `x`; -1 past the last.
int ColumnAt(Columns columns, int x);
/// The row `y` pixels below the top of row `topRow`; -1 when there is none.
int RowAt(int y, int topRow, int rowHeight, int rowCount);
/// Where a cell lies across. With `clientRight` not negative the right edge ends there.
PixelSpan CellSpan(Columns columns, int column, int clientRight = -1);

/// Gives every column its first width: first the `percents` (of `usable` pixels; empty: none), then
/// equal shares of what remains. The shares deliberately count the columns that were wide already.
void ComputeWidths(std::span<SListColumn> columns, std::span<const int> percents, int usable);
/// value * numerator / denominator, rounded half away from 0; -1 when that is no int.
int MulDiv(int value, int numerator, int denominator);

/// Reads a column information text: for each of `count` columns its heading, a line feed, its width
/// in pixels (at least 1) in digits, and a line feed that may be missing after the last. `store`
/// receives each column as soon as it is read. False when a check fails; columns already stored
/// stay.
bool ReadColumnInformation(std::string_view text, int count,
                           const std::function<void(int, std::string_view)>& storeHeading,
                           const std::function<void(int, int)>& storeWidth);

/// One value of a row, as it is drawn.
struct DrawnCell {
    int column = 0;
    std::string_view text;
    PixelSpan span;
};
/// What `row` looks like in `area` with the values `offset` pixels to the right of their columns'
/// left edges; calls `draw` for each value from the left.
void LayOutRow(Columns columns, std::string_view row, std::string_view separator, PixelSpan area,
               int offset, const std::function<void(const DrawnCell&)>& draw);

/// The next cell that can be edited, the one at `from` included. Forwards the search goes on in the
/// next row after the last column and ends with the last row; backwards it ends at column 0.
std::optional<CellAddress> FindEditable(Columns columns, CellAddress from, bool forward,
                                        int rowCount);

} // namespace vnbytstr::detail

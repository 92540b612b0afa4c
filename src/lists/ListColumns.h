// The columns of a list as plain arithmetic: where they are, how wide they become, which cell is
// edited next. Pixels, columns and rows count from 0.
#pragma once

#include "vnbytstr/ListColumn.h"

#include <functional>
#include <span>
#include <string_view>

namespace vnbytstr::detail {

/// The columns from left to right.
using Columns = std::span<const SListColumn>;

/// Pixels from `left` to `right`, the latter not included.
struct PixelSpan {
    int left = 0;
    int right = 0;
    bool IsEmpty() const { return right <= left; }
    bool operator==(const PixelSpan&) const = default;
};

/// The default is no cell.
struct CellAddress {
    int row = -1;
    int column = -1;
    bool operator==(const CellAddress&) const = default;
};

/// The row `y` pixels below the top of row `topRow`, or -1.
int RowAt(int y, int topRow, int rowHeight, int rowCount);
/// Gives a width to every column that has none: first by `percents` of `usable` pixels (may be
/// empty), then equal shares of what remains, or 50 pixels each when nothing does. The number of
/// shares deliberately includes the columns that had a width before.
void ComputeWidths(std::span<SListColumn> columns, std::span<const int> percents, int usable);
/// value * numerator / denominator, halves rounded away from 0; -1 when the denominator is 0 or the
/// result is out of the range of int.
int MulDiv(int value, int numerator, int denominator);

/// Reads a column information text: for each of `count` columns its name, a line feed, its width in
/// pixels (decimal, at least 1; what follows the digits is skipped), and a line feed that is
/// optional after the last. Calls `storeHeading` and `storeWidth` with the column as soon as its
/// name and its width are read, so that they have been called for everything before an error.
/// Returns false on an error.
bool ReadColumnInformation(std::string_view text, int count,
                           const std::function<void(int, std::string_view)>& storeHeading,
                           const std::function<void(int, int)>& storeWidth);

/// One value of a row, as it is drawn.
struct DrawnCell {
    int column = 0;
    std::string_view text;
    PixelSpan span;
};
/// Lays out `row` in `area`, its values `offset` pixels right of their columns' left edges; calls
/// `draw` for each value from left to right.
void LayOutRow(Columns columns, std::string_view row, std::string_view separator, PixelSpan area,
               int offset, const std::function<void(const DrawnCell&)>& draw);

} // namespace vnbytstr::detail

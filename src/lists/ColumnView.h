// Which columns of a list are shown, in which order, and where they are in its client area. Plain
// arithmetic; pixels and columns count from 0.
#pragma once

#include "src/lists/ListColumns.h"

#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {

/// The columns as they are shown at one moment. The first `frozen` of the shown ones stay where
/// they are when the list scrolls horizontally; the others move left, under them.
class ColumnView {
public:
    ColumnView() = default;
    /// All columns in the order of their numbers. `shift`: how far the list is scrolled.
    explicit ColumnView(Columns columns, int shift = 0) : m_columns(columns), m_shift(shift) {}
    /// `shown`: the numbers of the shown columns from left to right; empty: all. Both spans stay
    /// the caller's.
    ColumnView(Columns columns, std::span<const int> shown, int frozen, int shift)
        : m_columns(columns), m_shown(shown), m_frozen(frozen), m_shift(shift) {}

    Columns All() const { return m_columns; }
    int Shift() const { return m_shift; }
    int Frozen() const { return m_frozen; }
    /// Every column is shown, in the order of the numbers, and scrolls.
    bool IsPlain() const { return m_shown.empty() && m_frozen == 0; }

    /// How many columns are shown.
    int Count() const {
        return static_cast<int>(m_shown.empty() ? m_columns.size() : m_shown.size());
    }
    /// The column at a position from the left, which must be below Count.
    int ColumnOf(int position) const {
        return m_shown.empty() ? position : m_shown[static_cast<std::size_t>(position)];
    }
    /// The position of a column from the left, or -1 when it is not shown.
    int PositionOf(int column) const;
    bool IsFrozen(int column) const;
    /// The last shown column, or -1.
    int Last() const { return Count() > 0 ? ColumnOf(Count() - 1) : -1; }
    /// Pixels that frozen columns take.
    int FrozenWidth() const { return WidthBefore(m_frozen); }
    /// Sum of the widths of the first `count` shown columns, limited to the range of int.
    int WidthBefore(int count) const;
    /// Where a column is; empty when it is not shown. May lie out of view, or under frozen ones.
    PixelSpan Place(int column) const;
    /// The part of its place that frozen columns do not cover.
    PixelSpan VisiblePlace(int column) const;
    /// VisiblePlace of every column, by number.
    std::vector<PixelSpan> VisiblePlaces() const;
    /// The column at `x`, or -1.
    int At(int x) const;

    /// The width of the column at a position.
    int WidthOf(int position) const {
        return m_columns[static_cast<std::size_t>(ColumnOf(position))].m_nWidth;
    }

private:
    PixelSpan Uncovered(int position, PixelSpan place, int frozenWidth) const;

    Columns m_columns;
    std::span<const int> m_shown;
    int m_frozen = 0;
    int m_shift = 0;
};

/// As LayOutRow, for a view that is not plain. `area` begins where unscrolled columns would begin
/// if the row were drawn scrolled. Columns that scroll come first.
void LayOutShown(const ColumnView& view, std::string_view row, std::string_view separator,
                 PixelSpan area, int offset, const std::function<void(const DrawnCell&)>& draw);

/// The next cell that can be edited, in the order in which columns are shown, starting at the
/// position (not the column) `from.column`. A forward search continues in the next row after the
/// last column and ends with the last row; a backward search ends at the first column.
std::optional<CellAddress> FindEditable(const ColumnView& view, CellAddress from, bool forward,
                                        int rowCount);

} // namespace vnbytstr::detail

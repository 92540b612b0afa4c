#include "src/lists/ColumnView.h"

#include "src/lists/RowText.h"

#include <algorithm>
#include <climits>
#include <cstdint>

namespace vnbytstr::detail {
namespace {

int Limited(std::int64_t value) {
    return static_cast<int>(std::clamp<std::int64_t>(value, INT_MIN, INT_MAX));
}

} // namespace

int ColumnView::PositionOf(int column) const {
    if (m_shown.empty())
        return column >= 0 && column < Count() ? column : -1;
    const auto found = std::find(m_shown.begin(), m_shown.end(), column);
    return found != m_shown.end() ? static_cast<int>(found - m_shown.begin()) : -1;
}

bool ColumnView::IsFrozen(int column) const {
    const int position = PositionOf(column);
    return position >= 0 && position < m_frozen;
}

int ColumnView::WidthBefore(int count) const {
    std::int64_t sum = 0;
    const int end = std::min(count, Count());
    for (int position = 0; position < end; ++position)
        sum += WidthOf(position);
    return Limited(sum);
}

PixelSpan ColumnView::Place(int column) const {
    const int position = PositionOf(column);
    if (position < 0)
        return {};
    const std::int64_t shift = position < m_frozen ? 0 : m_shift;
    return {Limited(WidthBefore(position) - shift), Limited(WidthBefore(position + 1) - shift)};
}

PixelSpan ColumnView::Uncovered(int position, PixelSpan place, int frozenWidth) const {
    if (position >= m_frozen && m_frozen > 0) {
        place.left = std::max(place.left, frozenWidth);
        place.right = std::max(place.right, place.left);
    }
    return place;
}

PixelSpan ColumnView::VisiblePlace(int column) const {
    const int position = PositionOf(column);
    return position < 0 ? PixelSpan() : Uncovered(position, Place(column), FrozenWidth());
}

std::vector<PixelSpan> ColumnView::VisiblePlaces() const {
    std::vector<PixelSpan> places(m_columns.size());
    const int frozenWidth = FrozenWidth();
    std::int64_t left = 0;
    for (int position = 0; position < Count(); ++position) {
        const std::int64_t right = left + WidthOf(position);
        const int shift = position < m_frozen ? 0 : m_shift;
        places[static_cast<std::size_t>(ColumnOf(position))] =
            Uncovered(position, {Limited(left - shift), Limited(right - shift)}, frozenWidth);
        left = right;
    }
    return places;
}

int ColumnView::At(int x) const {
    const bool isFrozen = m_frozen > 0 && x < FrozenWidth();
    const std::int64_t wanted = std::int64_t{x} + (isFrozen ? 0 : m_shift);
    std::int64_t sum = 0;
    for (int position = 0; position < Count(); ++position) {
        sum += WidthOf(position);
        if (sum > wanted)
            return ColumnOf(position);
    }
    return -1;
}

void LayOutShown(const ColumnView& view, std::string_view row, std::string_view separator,
                 PixelSpan area, int offset, const std::function<void(const DrawnCell&)>& draw) {
    std::vector<std::string_view> cells(view.All().size());
    CellReader reader(row, separator);
    for (std::string_view& cell : cells)
        if (!reader.Next(cell))
            break;
    const auto drawPositions = [&](int first, int end) {
        std::int64_t left = std::int64_t{area.left} + view.WidthBefore(first) +
                            (first < view.Frozen() ? view.Shift() : 0);
        for (int position = first; position < end && left < area.right; ++position) {
            const int column = view.ColumnOf(position);
            const SListColumn& record = view.All()[static_cast<std::size_t>(column)];
            const std::int64_t right =
                std::min<std::int64_t>(left + offset + record.m_nWidth, area.right - offset);
            draw({column,
                  cells[static_cast<std::size_t>(column)],
                  {Limited(left + offset), Limited(right - record.m_nSpacing)}});
            left += record.m_nWidth;
        }
    };
    drawPositions(view.Frozen(), view.Count());
    drawPositions(0, std::min(view.Frozen(), view.Count()));
}

std::optional<CellAddress> FindEditable(const ColumnView& view, CellAddress from, bool forward,
                                        int rowCount) {
    const int count = view.Count();
    const auto cellAt = [&](int row, int position) -> std::optional<CellAddress> {
        const int column = view.ColumnOf(position);
        if (view.All()[static_cast<std::size_t>(column)].m_nEditorType == kEditorNone)
            return std::nullopt;
        return CellAddress{row, column};
    };
    if (!forward) {
        for (int position = std::min(from.column, count - 1); position >= 0; --position)
            if (const auto cell = cellAt(from.row, position))
                return cell;
        return std::nullopt;
    }
    if (from.row < 0 || from.row >= rowCount)
        return std::nullopt;
    for (int position = std::max(from.column, 0); position < count; ++position)
        if (const auto cell = cellAt(from.row, position))
            return cell;
    if (from.row + 1 < rowCount) // all rows have the same columns: one more row is enough
        for (int position = 0; position < count; ++position)
            if (const auto cell = cellAt(from.row + 1, position))
                return cell;
    return std::nullopt;
}

} // namespace vnbytstr::detail

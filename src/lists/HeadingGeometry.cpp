#include "src/lists/HeadingGeometry.h"

#include <algorithm>
#include <climits>
#include <cstdint>

namespace vnbytstr::detail {

bool HeadingGeometry::GetRect(int column, HeadingRect& rect) const {
    rect = {};
    if (m_view.PositionOf(column) < 0)
        return false;
    const PixelSpan place = m_view.VisiblePlace(column);
    const std::int64_t left = std::int64_t{m_left} + place.left;
    const std::int64_t right = std::int64_t{m_left} + place.right;
    rect = {static_cast<int>(std::min<std::int64_t>(left, INT_MAX)), kTop,
            static_cast<int>(std::min<std::int64_t>(right, m_width - 1)), m_height};
    return left < m_width;
}

int HeadingAt(int count, const HeadingRects& rectOf, int x, int y) {
    HeadingRect rect;
    for (int column = 0; column < count && rectOf(column, rect); ++column)
        if (x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom)
            return column;
    return -1;
}

int DividerAt(int count, const HeadingRects& rectOf, int width, int x) {
    const int last = count - 2;
    if (last < 0)
        return -1;
    HeadingRect rect;
    int candidate = 0;
    // A divider further right than the last pixel but one cannot be told from the edge.
    while (candidate < last && rectOf(candidate, rect) && rect.right < width - 1)
        ++candidate;
    for (int column = candidate; column >= 0; --column) {
        rectOf(column, rect);
        const std::int64_t distance = std::int64_t{x} - rect.right;
        if (distance >= -HeadingGeometry::kGrabLeft && distance <= HeadingGeometry::kGrabRight)
            return column;
    }
    return -1;
}

int HeadingGeometry::DropPosition(int x) const {
    HeadingRect rect;
    for (int position = 0; position < m_view.Count(); ++position) {
        if (!GetRect(m_view.ColumnOf(position), rect))
            return position;
        if (rect.right > rect.left && x < (rect.left + rect.right) / 2)
            return position;
    }
    return m_view.Count();
}

int HeadingGeometry::DropEdge(int position) const {
    HeadingRect rect;
    if (position < m_view.Count()) {
        GetRect(m_view.ColumnOf(position), rect);
        return std::clamp(rect.left, 0, std::max(0, m_width - 1));
    }
    GetRect(m_view.Last(), rect);
    return std::clamp(rect.right, 0, std::max(0, m_width - 1));
}

HeadingLines LayOutHeading(const HeadingRect& rect, bool pressed) {
    HeadingLines lines;
    const int width = rect.right - rect.left;
    if (width > 0) {
        lines.hasFrame = true;
        lines.frame[0] = {rect.right - 1, rect.top};
        lines.frame[1] = {rect.right - 1, rect.bottom};
    }
    if (width > 1) {
        lines.upperPoints = 2;
        lines.upper[0] = {rect.left, rect.bottom - 1};
        lines.upper[1] = {rect.left, rect.top + 1};
    }
    if (width > 2) {
        lines.upperPoints = 3;
        lines.upper[2] = {rect.right - 2, rect.top + 1};
        lines.hasLower = true;
        lines.lower[0] = {rect.right - 2, rect.top + 1};
        lines.lower[1] = {rect.right - 2, rect.bottom};
    }
    lines.text = pressed ? HeadingRect{rect.left + 2, rect.top + 3, rect.right - 2, rect.bottom + 1}
                         : HeadingRect{rect.left + 1, rect.top + 2, rect.right - 3, rect.bottom};
    return lines;
}

} // namespace vnbytstr::detail

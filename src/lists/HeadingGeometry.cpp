#include "src/lists/HeadingGeometry.h"

#include <algorithm>
#include <climits>
#include <cstdint>

namespace vnbytstr::detail {

bool HeadingGeometry::GetRect(int column, HeadingRect& rect) const {
    rect = {};
    if (column < 0 || static_cast<std::size_t>(column) >= m_columns.size())
        return false;
    const std::int64_t left = std::int64_t{kFirstLeft} + WidthBefore(m_columns, column) - m_shift;
    const std::int64_t right = left + m_columns[static_cast<std::size_t>(column)].m_nWidth;
    rect = {static_cast<int>(std::min<std::int64_t>(left, INT_MAX)), kTop,
            static_cast<int>(std::min<std::int64_t>(right, m_width - 1)), m_height};
    return left < m_width;
}

int HeadingGeometry::HitTest(int x, int y) const {
    if (y < kTop || y >= m_height || x >= m_width - 1)
        return -1;
    return x < kFirstLeft ? -1 : ColumnAt(m_columns, x - kFirstLeft + m_shift);
}

int HeadingGeometry::SizerHitTest(int x) const {
    const int last = static_cast<int>(m_columns.size()) - 2;
    const std::int64_t limit = std::int64_t{m_width} - 4 + m_shift;
    int candidate = 0;
    std::int64_t sum = 0;
    while (candidate < last) {
        sum += m_columns[static_cast<std::size_t>(candidate)].m_nWidth;
        if (sum > limit)
            break;
        ++candidate;
    }
    if (candidate > last)
        return -1;
    std::int64_t right = std::int64_t{kFirstLeft} + WidthBefore(m_columns, candidate + 1) - m_shift;
    for (int column = candidate; column >= 0; --column) {
        const std::int64_t distance = x - std::min<std::int64_t>(right, m_width - 1);
        if (distance >= -kGrabLeft && distance <= kGrabRight)
            return column;
        right -= m_columns[static_cast<std::size_t>(column)].m_nWidth;
    }
    return -1;
}

int HeadingGeometry::FixedLastWidth() const {
    HeadingRect rect;
    const int last = static_cast<int>(m_columns.size()) - 1;
    return HeadingGeometry(m_columns, m_width, m_height).GetRect(last, rect) ? m_width - rect.left
                                                                             : -1;
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

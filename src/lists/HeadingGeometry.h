// Where the headings of a list lie in their strip, and what lies under a point, as plain
// arithmetic. Pixels in the strip's client area.
#pragma once

#include "src/lists/ListColumns.h"

#include <span>

namespace vnbytstr::detail {

struct HeadingRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

class HeadingGeometry {
public:
    static constexpr int kFirstLeft = 2; ///< the list's rows begin this far from its edge
    static constexpr int kTop = 1;
    static constexpr int kGrabLeft = 5;  ///< a boundary is grabbed from this far left of it
    static constexpr int kGrabRight = 3; ///< to this far right of it, both included

    /// `shift`: pixels that the list hides at its left.
    HeadingGeometry(Columns columns, int clientWidth, int clientHeight, int shift = 0)
        : m_columns(columns), m_width(clientWidth), m_height(clientHeight), m_shift(shift) {}

    /// The heading's rectangle; false when its left edge lies outside of the strip, or there is no
    /// such column.
    bool GetRect(int column, HeadingRect& rect) const;
    /// The column whose rectangle holds the point, or -1.
    int HitTest(int x, int y) const;
    /// The column whose right boundary is grabbed at `x`, or -1. The last column has none. Where
    /// the zones of two boundaries overlap the right one is taken, so that a column dragged to
    /// nothing can be dragged open again.
    int SizerHitTest(int x) const;
    /// The width that makes the last column end at the strip's right edge when nothing is hidden;
    /// -1 when it begins at or right of that edge, or there is no column.
    int FixedLastWidth() const;

private:
    Columns m_columns;
    int m_width;
    int m_height;
    int m_shift;
};

/// Where the lines and the text of one heading lie. A line is drawn without its last point.
struct HeadingLines {
    struct Point {
        int x = 0;
        int y = 0;
    };
    bool hasFrame = false;
    Point frame[2]{};    ///< frame pen
    int upperPoints = 0; ///< 0, 2 or 3
    Point upper[3]{};    ///< highlight pen; shadow pen when pressed
    bool hasLower = false;
    Point lower[2]{}; ///< shadow pen
    HeadingRect text; ///< empty when the heading is too narrow
};
HeadingLines LayOutHeading(const HeadingRect& rect, bool pressed);

} // namespace vnbytstr::detail

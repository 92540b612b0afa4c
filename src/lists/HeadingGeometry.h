// Where the column headers of a list are in their header control, and what is at a point, as plain
// arithmetic. All numbers are pixels of the control's client area.
#pragma once

#include "src/lists/ColumnView.h"

#include <functional>
#include <span>

namespace vnbytstr::detail {

/// Right and bottom are not included.
struct HeadingRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

/// The geometry of a header control with some columns, at one size.
class HeadingGeometry {
public:
    static constexpr int kFirstLeft = 2; ///< the list's rows begin this far from its edge
    static constexpr int kTop = 1;
    static constexpr int kGrabLeft = 5;  ///< a divider is grabbed from this far left of it
    static constexpr int kGrabRight = 3; ///< to this far right of it, both included

    /// `rowsLeft`: how far right of the list's edge its rows begin.
    HeadingGeometry(const ColumnView& columns, int clientWidth, int clientHeight, int rowsLeft = 0)
        : m_view(columns), m_width(clientWidth), m_height(clientHeight),
          m_left(kFirstLeft + rowsLeft) {}

    /// The header's rectangle, without what frozen columns cover; false when it begins right of the
    /// control's right edge, or there is no such column, or it is hidden.
    bool GetRect(int column, HeadingRect& rect) const;
    /// Where the first header begins when the list is not scrolled.
    int Left() const { return m_left; }
    /// Where a header dropped at `x` would be put: before the header at that position, or, if it is
    /// the number of columns, at the end.
    int DropPosition(int x) const;
    /// Where the left edge of the header at a position is (for the number of columns: the right
    /// edge of the last), within the control.
    int DropEdge(int position) const;

private:
    ColumnView m_view;
    int m_width;
    int m_height;
    int m_left;
};

/// The rectangle of the header at a position from the left; false when it begins right of the
/// control's right edge.
using HeadingRects = std::function<bool(int position, HeadingRect& rect)>;
/// The position whose rectangle holds the point, or -1.
int HeadingAt(int count, const HeadingRects& rectOf, int x, int y);
/// The position whose divider is grabbed at `x` in a control of that width, or -1. The last column
/// has none. Where the zones of two dividers overlap the right one is taken, so that a column
/// dragged to width 0 can be widened again.
int DividerAt(int count, const HeadingRects& rectOf, int width, int x);

/// Where the lines and the text of one header are drawn. A line does not include its last point.
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
    HeadingRect text; ///< empty when the header is too narrow
};
/// The lines and the text of a header in `rect`.
HeadingLines LayOutHeading(const HeadingRect& rect, bool pressed);

} // namespace vnbytstr::detail

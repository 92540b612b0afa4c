// The layout of the main window's view, as plain geometry.
#pragma once

namespace vnquery {

struct LayoutRect {
    int left = 0, top = 0, right = 0, bottom = 0;
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
};

/// What texts and fonts need, in pixels.
struct ViewMeasures {
    int line = 16;     ///< height of a line of text
    int label = 60;    ///< width of the widest label
    int button = 60;   ///< width of the widest button's text
    int headings = 20; ///< height of the header control
};

struct ViewLayout {
    LayoutRect databaseLabel, database, open, connect;
    LayoutRect sqlLabel, sql, run, stop, progress;
    LayoutRect list; ///< without the headings above it
};

/// The view's parts in a client area of that size. The result gets at least half of the height. In
/// a window that is too small the parts keep their minimum sizes and extend past the right or
/// bottom edge. No size is negative, and no part overlaps another.
ViewLayout LayOutView(int width, int height, const ViewMeasures& measures);

} // namespace vnquery

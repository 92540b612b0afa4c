// Where the parts of the main window's view stand. No window in it.
#pragma once

namespace vnquery {

struct LayoutRect {
    int left = 0, top = 0, right = 0, bottom = 0;
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
};

/// What the texts and fonts ask for, in pixels.
struct ViewMeasures {
    int line = 16;     ///< height of a line of text
    int label = 60;    ///< width of the widest label
    int button = 60;   ///< width of the widest button's text
    int headings = 20; ///< height of the headings' strip
};

struct ViewLayout {
    LayoutRect databaseLabel, database, open, connect;
    LayoutRect sqlLabel, sql, run, stop, progress;
    LayoutRect list; ///< without the headings above it
};

/// The view's parts in a client area of that size. The result gets at least half of the height; in
/// a window too small for all parts they keep their least sizes and stick out at the right or
/// bottom. No part is ever of negative size, and none overlaps another.
ViewLayout LayOutView(int width, int height, const ViewMeasures& measures);

} // namespace vnquery

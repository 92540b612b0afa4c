// The object an HGDIOBJ points to, and its form for Qt.
#pragma once

#include "vnbytstr/window/Gdi.h"

#include <QColor>
#include <QFont>
#include <QPixmap>

#include <memory>

namespace vnbytstr::detail {

inline QColor ToQColor(COLORREF color) {
    return {GetRValue(color), GetGValue(color), GetBValue(color)};
}

/// A drawing object. Freed by GdiObject::Free, unless it is a stock object. Its number is never
/// reused, so that a cache entry for one font cannot be taken for another's.
struct GdiObject {
    enum class Type { Pen, Brush, Font, Bitmap };

    static HGDIOBJ Make(std::unique_ptr<GdiObject> object);
    static GdiObject* Of(HGDIOBJ object); ///< null unless the handle names a living object
    static GdiObject* Of(HGDIOBJ object, Type type);
    static bool Free(HGDIOBJ object);

    Type type = Type::Brush;
    bool stock = false;
    bool empty = false; ///< NULL_BRUSH, NULL_PEN
    unsigned serial = 0;
    COLORREF color = 0;
    int penStyle = 0;
    int penWidth = 1;
    QFont font;
    LOGFONT logFont{};
    QPixmap pixmap;
    std::unique_ptr<CGdiObject> temporary; ///< what FromHandle gives out
};

/// The font of a handle; the application's font for null or an invalid handle.
QFont FontOf(HFONT font);
unsigned FontSerial(HFONT font);
/// Brushes may also be given as COLOR_* + 1.
bool BrushColor(HBRUSH brush, COLORREF& color);
LOGFONT DescribeFont(const QFont& font);

} // namespace vnbytstr::detail

// Single lines of text, shaped once and kept: lists draw the same texts again and again.
#pragma once

#include <QFont>
#include <QGlyphRun>
#include <QList>
#include <QPointF>

#include <span>
#include <string_view>
#include <utility>
#include <vector>

class QPainter;

namespace vnbytstr::detail {

/// A shaped line.
struct TextLine {
    QList<QGlyphRun> runs;
    double width = 0; ///< advance, in pixels
    double ascent = 0;
    double height = 0;

    /// `position` is the line's left top.
    void Draw(QPainter& painter, QPointF position) const;
};

/// How a line is to be shaped.
struct TextStyle {
    const QFont& font;
    unsigned fontSerial; ///< of the font's handle; the same number is the same font
    bool rightToLeft = false;
};

/// Longer texts are cut off here: no screen shows more.
inline constexpr std::size_t kMaxDrawnBytes = 65536;

/// The text in one line; control characters are drawn as spaces. Valid until the next call.
const TextLine& ShapeText(std::string_view text, const TextStyle& style);
/// The same, cut with an ellipsis where it is wider than `width` pixels.
const TextLine& ShapeElided(std::string_view text, const TextStyle& style, int width);
/// Where parts (bytes from, up to) of a text stand in its line, cut like that: pixels from its left
/// edge, left and right. Of a part that was cut off, the ellipsis's.
std::vector<std::pair<double, double>>
ElidedSpans(std::string_view text, const TextStyle& style, int width,
            std::span<const std::pair<std::size_t, std::size_t>> parts);
/// Forgets all lines (the application's font changed).
void ForgetShapedText();

} // namespace vnbytstr::detail

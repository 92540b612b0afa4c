#include "src/window/draw/TextLayout.h"
#include "src/window/core/WindowInternal.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <functional>
#include <string>
#include <unordered_map>

namespace vnbytstr::detail {
namespace {

struct KeyView {
    std::string_view text;
    unsigned font;
    int width; ///< -1: not cut
    bool rightToLeft;
};
struct Key {
    std::string text;
    unsigned font;
    int width;
    bool rightToLeft;
};
struct KeyHash {
    using is_transparent = void;
    template <class K>
    std::size_t operator()(const K& key) const {
        const std::size_t numbers = key.font * 31U + static_cast<unsigned>(key.width + 1) * 2U +
                                    (key.rightToLeft ? 1U : 0U);
        return std::hash<std::string_view>()(key.text) ^ (numbers * 0x9E3779B97F4A7C15ULL);
    }
};
struct KeyEqual {
    using is_transparent = void;
    template <class L, class R>
    bool operator()(const L& left, const R& right) const {
        return left.font == right.font && left.width == right.width &&
               left.rightToLeft == right.rightToLeft &&
               std::string_view(left.text) == std::string_view(right.text);
    }
};
using Lines = std::unordered_map<Key, TextLine, KeyHash, KeyEqual>;

// Two generations: when the young one is full it becomes the old one; a line found in the old one
// moves back to the young one. Together they hold what a few screens show.
constexpr std::size_t kGeneration = 2048;
constexpr std::size_t kMaxKept = 1024; // bytes
Lines young;
Lines old;
TextLine unkept;

TextLine* Find(const KeyView& view) {
    if (const auto found = young.find(view); found != young.end())
        return &found->second;
    const auto found = old.find(view);
    if (found == old.end())
        return nullptr;
    auto node = old.extract(found);
    return &young.insert(std::move(node)).position->second;
}

const TextLine& Keep(const KeyView& view, TextLine line) {
    if (view.text.size() > kMaxKept) {
        unkept = std::move(line);
        return unkept;
    }
    if (young.size() >= kGeneration) {
        old = std::move(young);
        young = Lines();
    }
    return young
        .insert_or_assign(Key{std::string(view.text), view.font, view.width, view.rightToLeft},
                          std::move(line))
        .first->second;
}

QString OneLine(std::string_view text) {
    QString line = ToQString(text.substr(0, kMaxDrawnBytes));
    for (QChar& ch : line)
        if (ch.unicode() < 0x20 || ch.unicode() == 0x7F || ch == QChar::LineSeparator ||
            ch == QChar::ParagraphSeparator)
            ch = u' ';
    return line;
}

constexpr double kWide = 1 << 24;

/// Lays a text out in one line of its own width and calls `use` with it; not for an empty text.
template <class Use>
void LayOut(const QString& text, const TextStyle& style, const Use& use) {
    QTextLayout layout(text, style.font);
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    option.setTextDirection(style.rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    option.setFlags(QTextOption::IncludeTrailingSpaces);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (!line.isValid()) {
        layout.endLayout();
        return;
    }
    line.setLineWidth(kWide);
    const double width = line.naturalTextWidth();
    // Text running right to left stands at the right end of its line: give it just its own width.
    line.setLineWidth(width + 0.01);
    layout.endLayout();
    use(layout, line, width);
}

TextLine Shape(const QString& text, const TextStyle& style) {
    TextLine shaped;
    LayOut(text, style, [&](const QTextLayout&, const QTextLine& line, double width) {
        shaped.width = width;
        shaped.ascent = line.ascent();
        shaped.height = line.height();
        shaped.runs = line.glyphRuns();
    });
    return shaped;
}

QString Elided(const QString& text, const TextStyle& style, int width) {
    return QFontMetricsF(style.font).elidedText(text, Qt::ElideRight, width);
}

} // namespace

void TextLine::Draw(QPainter& painter, QPointF position) const {
    for (const QGlyphRun& run : runs)
        painter.drawGlyphRun(position, run);
}

const TextLine& ShapeText(std::string_view text, const TextStyle& style) {
    const KeyView view{text.substr(0, kMaxDrawnBytes), style.fontSerial, -1, style.rightToLeft};
    if (const TextLine* line = Find(view))
        return *line;
    return Keep(view, Shape(OneLine(text), style));
}

const TextLine& ShapeElided(std::string_view text, const TextStyle& style, int width) {
    const TextLine& whole = ShapeText(text, style);
    if (whole.width <= width)
        return whole;
    const KeyView view{text.substr(0, kMaxDrawnBytes), style.fontSerial, std::max(width, 0),
                       style.rightToLeft};
    if (const TextLine* line = Find(view))
        return *line;
    return Keep(view, Shape(Elided(OneLine(text), style, width), style));
}

std::vector<std::pair<double, double>>
ElidedSpans(std::string_view text, const TextStyle& style, int width,
            std::span<const std::pair<std::size_t, std::size_t>> parts) {
    const QString whole = OneLine(text);
    const QString shown =
        ShapeText(text, style).width <= width ? whole : Elided(whole, style, width);
    // The beginning that is left; the ellipsis follows it.
    const auto kept = static_cast<int>(
        std::mismatch(whole.begin(), whole.end(), shown.begin(), shown.end()).second -
        shown.begin());
    const auto end = static_cast<int>(shown.size());
    const auto indexOf = [text](std::size_t at) {
        return static_cast<int>(ToQString(text.substr(0, std::min(at, kMaxDrawnBytes))).size());
    };
    std::vector<std::pair<double, double>> spans;
    LayOut(shown, style, [&](const QTextLayout& layout, const QTextLine& line, double) {
        for (const auto& [from, to] : parts) {
            const int first = std::min(indexOf(from), kept);
            const int last = indexOf(to) > kept ? end : indexOf(to);
            bool isFirst = true;
            for (int at = first; at < last; at = layout.nextCursorPosition(at)) {
                const double left = line.cursorToX(at, QTextLine::Leading);
                const double right = line.cursorToX(at, QTextLine::Trailing);
                const std::pair<double, double> place = std::minmax(left, right);
                // Characters of one direction stand side by side.
                constexpr double kGap = 0.5;
                if (!isFirst && place.first <= spans.back().second + kGap &&
                    place.second >= spans.back().first - kGap) {
                    spans.back().first = std::min(spans.back().first, place.first);
                    spans.back().second = std::max(spans.back().second, place.second);
                } else {
                    spans.push_back(place);
                }
                isFirst = false;
            }
        }
    });
    return spans;
}

void ForgetShapedText() {
    young.clear();
    old.clear();
}

} // namespace vnbytstr::detail

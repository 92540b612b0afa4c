// The text members of CDC.
#include "vnbytstr/window/DC.h"

#include "src/window/draw/DeviceContext.h"
#include "src/window/draw/GdiInternal.h"
#include "src/window/draw/TextLayout.h"
#include "src/window/draw/TextPlaces.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

using vnbytstr::detail::DeviceContext;
using vnbytstr::detail::FontOf;
using vnbytstr::detail::FontSerial;
using vnbytstr::detail::kMaxDrawnBytes;
using vnbytstr::detail::ShapeElided;
using vnbytstr::detail::ShapeText;
using vnbytstr::detail::TextLine;
using vnbytstr::detail::TextStyle;
using vnbytstr::detail::ToQColor;
using vnbytstr::detail::ToQString;

namespace {

DeviceContext* Context(HDC dc) { return DeviceContext::Of(dc); }

std::string_view View(LPCTSTR text, int length) {
    if (text == nullptr)
        return {};
    return length < 0 ? std::string_view(text)
                      : std::string_view(text, static_cast<std::size_t>(length));
}

int RoundUp(double width) { return static_cast<int>(std::ceil(width - 0.01)); }

/// A text without its '&' marks, and the index of the marked character in it; -1: no character.
struct Mnemonic {
    std::string text;
    qsizetype at = -1;
};
Mnemonic TakeMnemonic(std::string_view text) {
    Mnemonic result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '&' && i + 1 < text.size()) {
            ++i;
            if (text[i] != '&')
                result.at = static_cast<qsizetype>(result.text.size());
        }
        result.text += text[i];
    }
    return result;
}

QPointF LinePosition(const QRect& area, double width, int height, UINT flags, bool mirrored) {
    double x = area.x();
    const bool right = ((flags & DT_RIGHT) != 0) != mirrored;
    if ((flags & DT_CENTER) != 0)
        x += std::floor((area.width() - width) / 2);
    else if (right)
        x += area.width() - std::ceil(width - 0.01);
    double y = area.y();
    if ((flags & DT_VCENTER) != 0)
        y += std::floor((area.height() - height) / 2.0);
    else if ((flags & DT_BOTTOM) != 0)
        y += area.height() - height;
    return {x, y};
}

int QtFlags(UINT flags, bool mirrored, bool rightToLeft) {
    int qt = Qt::AlignAbsolute;
    qt |= (flags & DT_CENTER) != 0                  ? Qt::AlignHCenter
          : (((flags & DT_RIGHT) != 0) != mirrored) ? Qt::AlignRight
                                                    : Qt::AlignLeft;
    qt |= Qt::AlignTop;
    if ((flags & DT_WORDBREAK) != 0)
        qt |= Qt::TextWordWrap;
    if ((flags & DT_EXPANDTABS) != 0)
        qt |= Qt::TextExpandTabs;
    if ((flags & DT_NOPREFIX) == 0)
        qt |= Qt::TextShowMnemonic;
    if ((flags & DT_NOCLIP) != 0)
        qt |= Qt::TextDontClip;
    return qt | (rightToLeft ? Qt::TextForceRightToLeft : Qt::TextForceLeftToRight);
}

/// Several lines, or words broken over lines.
int DrawLines(DeviceContext& context, std::string_view text, LPRECT rect, UINT flags, bool rtl) {
    const QString lines = ToQString(text.substr(0, kMaxDrawnBytes)).remove(u'\r');
    const QFont font = FontOf(context.state.font);
    const QRect area = context.ToDevice(*rect);
    const int qt = QtFlags(flags, context.IsMirrored(), rtl);
    QRect limit = area;
    limit.setHeight(1 << 20);
    if ((flags & DT_WORDBREAK) == 0)
        limit.setWidth(1 << 20);
    const QRect needed = QFontMetrics(font).boundingRect(limit, qt, lines);
    if ((flags & DT_CALCRECT) != 0) {
        rect->right = rect->left + needed.width();
        rect->bottom = rect->top + needed.height();
        return needed.height();
    }
    context.Paint(area, [&](QPainter& painter) {
        painter.setFont(font);
        painter.setPen(ToQColor(context.state.textColor));
        painter.drawText(area, qt, lines);
    });
    return needed.height();
}

} // namespace

int CDC::DrawText(LPCTSTR text, int length, LPRECT rect, UINT flags) {
    if (m_hDC == nullptr || rect == nullptr)
        return 0;
    DeviceContext& context = *Context(m_hDC);
    const bool rtl = (flags & DT_RTLREADING) != 0 || context.IsRtlReading();
    std::string_view shown = View(text, length);
    if ((flags & DT_SINGLELINE) == 0)
        return DrawLines(context, shown, rect, flags, rtl);
    Mnemonic mnemonic;
    if ((flags & DT_NOPREFIX) == 0 && shown.find('&') != std::string_view::npos) {
        mnemonic = TakeMnemonic(shown.substr(0, kMaxDrawnBytes));
        shown = mnemonic.text;
    }
    const QFont font = FontOf(context.state.font);
    const TextStyle style{font, FontSerial(context.state.font), rtl};
    const int height = QFontMetrics(font).height();
    if ((flags & DT_CALCRECT) != 0) {
        rect->right = rect->left + RoundUp(ShapeText(shown, style).width);
        rect->bottom = rect->top + height;
        return height;
    }
    const QRect area = context.ToDevice(*rect);
    if (shown.empty() || (area.width() <= 0 && (flags & DT_NOCLIP) == 0))
        return height;
    const TextLine& line = (flags & DT_END_ELLIPSIS) != 0 ? ShapeElided(shown, style, area.width())
                                                          : ShapeText(shown, style);
    const QPointF at = LinePosition(area, line.width, height, flags, context.IsMirrored());
    const bool clip =
        (flags & DT_NOCLIP) == 0 && (line.width > area.width() + 0.5 || height > area.height());
    context.Paint(area, [&](QPainter& painter) {
        if (clip) {
            painter.save();
            painter.setClipRect(area, Qt::IntersectClip);
        }
        if (context.state.bkMode == OPAQUE)
            painter.fillRect(QRectF(at, QSizeF(std::ceil(line.width), height)),
                             ToQColor(context.state.bkColor));
        painter.setPen(ToQColor(context.state.textColor));
        line.Draw(painter, at);
        if (mnemonic.at >= 0) {
            const QFontMetricsF metrics(font);
            const auto before = static_cast<std::size_t>(mnemonic.at);
            const double x = metrics.horizontalAdvance(ToQString(shown.substr(0, before)));
            const double w = metrics.horizontalAdvance(ToQString(shown.substr(before)).left(1));
            painter.fillRect(QRectF(at.x() + x, at.y() + metrics.ascent() + 1, w, 1),
                             ToQColor(context.state.textColor));
        }
        if (clip)
            painter.restore();
    });
    return height;
}

std::vector<CRect> vnbytstr::detail::TextPlaces(const CDC& dc, std::string_view text,
                                                const RECT& rect, UINT flags,
                                                std::span<const TextPart> parts) {
    DeviceContext* const context = dc.m_hDC != nullptr ? Context(dc.m_hDC) : nullptr;
    if (context == nullptr || text.empty() || parts.empty())
        return {};
    const QFont font = FontOf(context->state.font);
    const bool rtl = (flags & DT_RTLREADING) != 0 || context->IsRtlReading();
    const TextStyle style{font, FontSerial(context->state.font), rtl};
    const QRect area = context->ToDevice(rect);
    const bool elides = (flags & DT_END_ELLIPSIS) != 0;
    const double width =
        elides ? ShapeElided(text, style, area.width()).width : ShapeText(text, style).width;
    const int height = QFontMetrics(font).height();
    const QPointF at = LinePosition(area, width, height, flags, context->IsMirrored());
    std::vector<std::pair<std::size_t, std::size_t>> bytes;
    for (const TextPart& part : parts)
        bytes.emplace_back(part.from, part.end);
    std::vector<CRect> places;
    for (const auto& [left, right] :
         ElidedSpans(text, style, elides ? area.width() : INT_MAX, bytes)) {
        const QPoint corner(static_cast<int>(std::floor(at.x() + left)), static_cast<int>(at.y()));
        const int end = static_cast<int>(std::ceil(at.x() + right));
        const CRect place = context->FromDevice(QRect(corner, QSize(end - corner.x(), height)));
        CRect visible;
        if (visible.IntersectRect(place, &rect))
            places.push_back(visible);
    }
    return places;
}

BOOL CDC::ExtTextOut(int x, int y, UINT options, LPCRECT rect, LPCTSTR text, UINT length,
                     const int* /*widths*/) {
    if (m_hDC == nullptr)
        return FALSE;
    DeviceContext& context = *Context(m_hDC);
    if ((options & ETO_OPAQUE) != 0 && rect != nullptr)
        FillSolidRect(rect, context.state.bkColor);
    const std::string_view shown = View(text, static_cast<int>(length));
    if (shown.empty())
        return TRUE;
    const bool rtl = (options & ETO_RTLREADING) != 0 || context.IsRtlReading();
    const QFont font = FontOf(context.state.font);
    const TextLine& line = ShapeText(shown, {font, FontSerial(context.state.font), rtl});
    const int width = RoundUp(line.width);
    const int height = QFontMetrics(font).height();
    const CRect place(x, y, x + width, y + height);
    const QRect area = context.ToDevice(place);
    const bool clip = (options & ETO_CLIPPED) != 0 && rect != nullptr;
    const QRect clipArea = clip ? context.ToDevice(*rect) : QRect();
    context.Paint(area, [&](QPainter& painter) {
        if (clip) {
            painter.save();
            painter.setClipRect(clipArea, Qt::IntersectClip);
        }
        if (context.state.bkMode == OPAQUE && (options & ETO_OPAQUE) == 0)
            painter.fillRect(area, ToQColor(context.state.bkColor));
        painter.setPen(ToQColor(context.state.textColor));
        line.Draw(painter, area.topLeft());
        if (clip)
            painter.restore();
    });
    return TRUE;
}

CSize CDC::GetTextExtent(LPCTSTR text, int length) const {
    if (m_hDC == nullptr)
        return {};
    const HFONT handle = Context(m_hDC)->state.font;
    const QFont font = FontOf(handle);
    const TextLine& line = ShapeText(View(text, length), {font, FontSerial(handle), false});
    return {RoundUp(line.width), QFontMetrics(font).height()};
}

BOOL CDC::GetTextMetrics(LPTEXTMETRIC metrics) const {
    if (m_hDC == nullptr || metrics == nullptr)
        return FALSE;
    const QFont font = FontOf(Context(m_hDC)->state.font);
    const QFontMetrics measured(font);
    *metrics = TEXTMETRIC{};
    metrics->tmHeight = measured.height();
    metrics->tmAscent = measured.ascent();
    metrics->tmDescent = metrics->tmHeight - metrics->tmAscent;
    metrics->tmInternalLeading = std::max(0, metrics->tmHeight - QFontInfo(font).pixelSize());
    metrics->tmExternalLeading = std::max(0, measured.leading());
    metrics->tmAveCharWidth = measured.averageCharWidth();
    metrics->tmMaxCharWidth = measured.maxWidth();
    metrics->tmWeight = font.weight();
    metrics->tmItalic = font.italic() ? 1 : 0;
    metrics->tmUnderlined = font.underline() ? 1 : 0;
    metrics->tmStruckOut = font.strikeOut() ? 1 : 0;
    metrics->tmCharSet = DEFAULT_CHARSET;
    return TRUE;
}

BOOL GetTextExtentPoint32(HDC dc, LPCTSTR text, int length, LPSIZE size) {
    if (dc == nullptr || size == nullptr)
        return FALSE;
    *size = CDC::FromHandle(dc)->GetTextExtent(text, length);
    return TRUE;
}

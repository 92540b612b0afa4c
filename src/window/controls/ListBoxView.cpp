// The list box: scrolling and painting.
#include "src/window/controls/ListBoxControl.h"

#include "src/window/core/WindowWidget.h"
#include "src/window/draw/DeviceContext.h"
#include "src/window/draw/GdiInternal.h"
#include "vnbytstr/window/ListBox.h"
#include "vnbytstr/window/WindowFunctions.h"

#include <QScrollBar>

#include <algorithm>

namespace vnbytstr::detail {

CRect ListBoxControl::RowRect(int row) const {
    // A row too far away for 32-bit coordinates is out of view anyway.
    constexpr std::int64_t kFar = 0x3FFFFFFF;
    const std::int64_t top = std::clamp(m_rows.TopOf(row) - m_rows.TopOf(m_top), -kFar, kFar);
    const int height = m_rows.Has(row) ? m_rows.HeightOf(row) : m_rows.Height();
    const int width = std::max<int>(m_client.cx, m_extent);
    return {-m_shift, static_cast<int>(top), width - m_shift, static_cast<int>(top) + height};
}

void ListBoxControl::InvalidateRow(int row) {
    if (!m_redraw || row < m_top || row > m_rows.Count())
        return;
    const CRect rect = RowRect(row);
    if (rect.top < m_client.cy)
        m_window.Invalidate(rect);
}

void ListBoxControl::InvalidateFrom(int row) {
    const int shown = std::max(row, m_top);
    if (!m_redraw || m_rows.TopOf(shown) - m_rows.TopOf(m_top) >= m_client.cy)
        return; // below what is seen, as most rows that are added
    const CRect first = RowRect(shown);
    if (first.top < m_client.cy) {
        const CRect rest(0, std::max<int>(first.top, 0), m_client.cx, m_client.cy);
        m_window.Invalidate(rest);
    }
}

int ListBoxControl::LastTop() const {
    const std::int64_t over = m_rows.TopOf(m_rows.Count()) - m_client.cy;
    if (over <= 0 || m_rows.Count() == 0)
        return 0;
    const int row = m_rows.RowAt(over);
    // A row cut by the upper edge is scrolled out.
    return std::min(m_rows.TopOf(row) < over ? row + 1 : row, m_rows.Count() - 1);
}

int ListBoxControl::FullyVisible() const {
    if (m_rows.Count() == 0)
        return 1;
    const int bottom = m_rows.RowAt(m_rows.TopOf(m_top) + m_client.cy);
    return std::max(std::min(bottom, m_rows.Count()) - m_top, 1);
}

void ListBoxControl::ScrollTo(int top) {
    top = std::clamp(top, 0, LastTop());
    if (top == m_top)
        return;
    const std::int64_t by = m_rows.TopOf(m_top) - m_rows.TopOf(top);
    m_top = top;
    if (QScrollBar* bar = m_window.ScrollBar(SB_VERT)) {
        UpdateScrollBars();
        bar->setValue(m_top);
    }
    if (!m_redraw)
        return;
    if (std::abs(by) < m_client.cy && m_window.ExistingOverlay() == nullptr)
        m_window.Widget()->scroll(0, static_cast<int>(by), m_window.ClientArea());
    else
        m_window.Invalidate(nullptr);
}

void ListBoxControl::ScrollIntoView(int row) {
    if (row < m_top) {
        ScrollTo(row);
        return;
    }
    const std::int64_t below = m_rows.TopOf(row) + m_rows.HeightOf(row) - m_client.cy;
    if (below <= m_rows.TopOf(m_top) || row == m_top)
        return;
    int top = m_rows.RowAt(std::max<std::int64_t>(below, 0));
    if (m_rows.TopOf(top) < below)
        ++top;
    ScrollTo(std::min(top, row));
}

/// From the area that does not change with the bars: each of them may make the other one needed,
/// and a change of the client area comes back here.
ListBoxControl::Bars ListBoxControl::NeededBars() const {
    const QSize area = m_window.InnerArea().size();
    const bool always = Has(LBS_DISABLENOSCROLL);
    const auto isVerticalNeeded = [&](int height) {
        return m_window.WantsScrollBar(SB_VERT) && height > 0 &&
               m_rows.TopOf(m_rows.Count()) > height;
    };
    // A bar's thickness is asked of the style, which takes longer than adding a row.
    const auto less = [&] { return area.height() - GetSystemMetrics(SM_CYHSCROLL); };
    Bars needed;
    const bool mayBeHorizontal = m_window.WantsScrollBar(SB_HORZ);
    needed.vertical = isVerticalNeeded(always && mayBeHorizontal ? less() : area.height());
    if (!mayBeHorizontal || m_extent <= 0)
        return needed;
    const bool hasVertical = needed.vertical || (always && m_window.WantsScrollBar(SB_VERT));
    const int width = area.width() - (hasVertical ? GetSystemMetrics(SM_CXVSCROLL) : 0);
    needed.horizontal = width > 0 && m_extent > width;
    if (needed.horizontal && !needed.vertical)
        needed.vertical = isVerticalNeeded(less());
    return needed;
}

void ListBoxControl::UpdateScrollBars() {
    if (!m_barsStale && m_window.ScrollBar(SB_VERT) == nullptr && !m_window.WantsScrollBar(SB_VERT))
        return;
    m_barsStale = false;
    if (m_window.WantsScrollBar(SB_VERT)) {
        m_window.ShowScrollBar(SB_VERT, NeededBars().vertical || Has(LBS_DISABLENOSCROLL));
        m_window.SetScroll(SB_VERT, 0, LastTop() + FullyVisible() - 1, FullyVisible(), m_top,
                           NeededBars().vertical);
    }
    if (m_window.WantsScrollBar(SB_HORZ)) {
        m_window.ShowScrollBar(SB_HORZ, NeededBars().horizontal || Has(LBS_DISABLENOSCROLL));
        m_window.SetScroll(SB_HORZ, 0, std::max(m_extent - 1, 0), m_client.cx, m_shift,
                           NeededBars().horizontal);
    }
}

void ListBoxControl::OnScroll(int bar, UINT code) {
    const QScrollBar* widget = m_window.ScrollBar(bar);
    const bool vertical = bar == SB_VERT;
    int at = vertical ? m_top : m_shift;
    // Read before the bars are updated, which puts the thumb back.
    const int thumb = widget != nullptr ? widget->sliderPosition() : at;
    UpdateScrollBars();
    const int page = std::max(vertical ? FullyVisible() : m_client.cx, 1);
    constexpr int kSidestep = 8;
    const int line = vertical ? 1 : kSidestep;
    const int last = vertical ? LastTop() : std::max<int>(0, m_extent - m_client.cx);
    switch (code) {
    case SB_LINEUP:
        at -= line;
        break;
    case SB_LINEDOWN:
        at += line;
        break;
    case SB_PAGEUP:
        at -= page;
        break;
    case SB_PAGEDOWN:
        at += page;
        break;
    case SB_TOP:
        at = 0;
        break;
    case SB_BOTTOM:
        at = last;
        break;
    case SB_THUMBTRACK:
    case SB_THUMBPOSITION:
        at = thumb;
        break;
    default:
        return;
    }
    at = std::clamp(at, 0, last);
    if (vertical) {
        ScrollTo(at);
    } else {
        ShiftTo(at);
    }
}

void ListBoxControl::ShiftTo(int pixels) {
    pixels = std::clamp(pixels, 0, std::max<int>(0, m_extent - m_client.cx));
    if (pixels == m_shift)
        return;
    m_shift = pixels;
    m_barsStale = true;
    UpdateScrollBars();
    m_window.Invalidate(nullptr);
}

int ListBoxControl::RowFromPoint(CPoint point, bool& outside) const {
    outside = point.x < 0 || point.x >= m_client.cx || point.y < 0 || point.y >= m_client.cy;
    if (m_rows.Count() == 0)
        return -1;
    const int row = m_rows.RowAt(m_rows.TopOf(m_top) + std::max<int>(point.y, -m_client.cy));
    outside = outside || row >= m_rows.Count();
    return std::clamp(row, 0, m_rows.Count() - 1);
}

// --- painting --------------------------------------------------------------------------------

void ListBoxControl::Paint() {
    bool erase = false;
    RECT area{};
    HWND handle = m_window.Handle();
    HDC dc = BeginWindowPaint(m_window, erase, area);
    DeviceContext& context = *DeviceContext::Of(dc);
    COLORREF background = GetSysColor(COLOR_WINDOW);
    HBRUSH brush = m_window.AskCtlColor(WM_CTLCOLORLISTBOX, dc);
    if (Window::Of(handle) != nullptr && BrushColor(brush, background))
        CDC::FromHandle(dc)->FillSolidRect(&area, background);
    const DeviceContext::State state = context.state;
    const int first = std::max(m_rows.RowAt(m_rows.TopOf(m_top) + area.top), m_top);
    for (int row = first; Window::Of(handle) != nullptr && row < m_rows.Count(); ++row) {
        const CRect rect = RowRect(row);
        if (rect.top >= area.bottom)
            break;
        DrawRow(dc, row, rect);
        context.state = state;
    }
    const bool empty = Window::Of(handle) != nullptr && m_rows.Count() == 0;
    if (empty && m_hasFocus && !IsOwnerDrawn()) {
        const CRect rect = RowRect(0);
        CDC::FromHandle(dc)->DrawFocusRect(rect);
    }
    EndWindowPaint(dc);
}

void ListBoxControl::DrawRow(HDC dc, int row, const CRect& rect) {
    const bool selected = m_rows.IsSelected(row);
    const bool focused = m_hasFocus && (row == m_caret || (m_caret < 0 && row == 0));
    if (!IsOwnerDrawn()) {
        DrawPlainRow(dc, row, rect, selected, focused);
        return;
    }
    DRAWITEMSTRUCT item{};
    item.CtlType = ODT_LISTBOX;
    item.CtlID = m_window.Id();
    item.itemID = static_cast<UINT>(row);
    item.itemAction = ODA_DRAWENTIRE;
    item.itemState = (selected ? ODS_SELECTED : 0) | (focused ? ODS_FOCUS : 0) |
                     ((m_window.Style() & WS_DISABLED) != 0 ? ODS_DISABLED : 0);
    item.hwndItem = m_window.Handle();
    item.hDC = dc;
    item.rcItem = rect;
    item.itemData = m_rows.Data(row);
    m_window.NotifyParent(WM_DRAWITEM, m_window.Id(), reinterpret_cast<LPARAM>(&item));
}

void ListBoxControl::DrawPlainRow(HDC handle, int row, const CRect& rect, bool selected,
                                  bool focused) {
    CDC& dc = *CDC::FromHandle(handle);
    if (selected) {
        dc.SetTextColor(GetSysColor(COLOR_HIGHLIGHTTEXT));
        dc.FillSolidRect(rect, GetSysColor(COLOR_HIGHLIGHT));
    }
    if ((m_window.Style() & WS_DISABLED) != 0)
        dc.SetTextColor(GetSysColor(COLOR_GRAYTEXT));
    dc.SetBkMode(TRANSPARENT);
    CRect text = rect;
    text.DeflateRect(2, 0);
    const std::string_view shown = m_rows.Text(row);
    const UINT right = (m_window.ExStyle() & WS_EX_RIGHT) != 0 ? DT_RIGHT : DT_LEFT;
    const auto length = static_cast<int>(std::min<std::size_t>(shown.size(), 0x7FFFFFFF));
    dc.DrawText(shown.data(), length, text, DT_SINGLELINE | DT_NOPREFIX | DT_VCENTER | right);
    if (focused)
        dc.DrawFocusRect(rect);
}

} // namespace vnbytstr::detail

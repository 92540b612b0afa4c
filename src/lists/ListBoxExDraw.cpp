// CListBoxEx: drawing and measuring rows.
#include "src/lists/ListBoxExInternal.h"
#include "src/lists/ListColors.h"
#include "src/lists/ListColumns.h"
#include "src/lists/ListFinder.h"
#include "src/lists/ListRows.h"
#include "src/lists/LongText.h"

#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

using namespace vnbytstr::detail;

namespace {

/// Gap between what AutoFitCol measured and the column's edge, on either side.
constexpr int kFitGap = 4;
/// Beside a text at the right of its column, which would else touch the next.
constexpr int kRightGap = 2;
/// Texts are measured up to here; no screen shows more.
constexpr std::size_t kMaxMeasuredBytes = 4000;

/// At least as much of a text as is visible in `width` pixels; a text that is too long still gets
/// its ellipsis.
std::string_view Visible(std::string_view text, int width) {
    constexpr std::size_t kBytesPerPixel = 8; // narrow letters with combining marks
    return Beginning(text, 64 + kBytesPerPixel * static_cast<std::size_t>(std::max(width, 0)));
}

/// Rows' texts are put together in this buffer.
thread_local std::string drawBuffer;
constexpr std::size_t kMaxKeptBuffer = 64 * 1024;

/// FitAllColumns measures about this long, AutoFitCol half of it.
constexpr std::chrono::milliseconds kLongestFit{40};

} // namespace

void CListBoxEx::MeasureItem(LPMEASUREITEMSTRUCT item) {
    if (GetSafeHwnd() == nullptr || (GetStyle() & LBS_OWNERDRAWFIXED) != 0)
        return;
    if (m_nItemHeight == 0) {
        CClientDC dc(this);
        CFont* font = GetFont();
        CFont* old = font != nullptr ? dc.SelectObject(font) : nullptr;
        TEXTMETRIC metrics{};
        dc.GetTextMetrics(&metrics);
        if (old != nullptr)
            dc.SelectObject(old);
        // With much internal leading, the first sum is too small for the descenders.
        m_nItemHeight =
            std::max(metrics.tmHeight - metrics.tmInternalLeading + 4, metrics.tmHeight);
    }
    item->itemHeight = static_cast<UINT>(m_nItemHeight);
}

void CListBoxEx::DrawItem(LPDRAWITEMSTRUCT item) {
    CDC* dc = CDC::FromHandle(item->hDC);
    if (dc == nullptr)
        return;
    CRect rect(item->rcItem);
    const bool selected = (item->itemState & ODS_SELECTED) != 0;
    const bool edited = selected && m_pActiveEditor != nullptr;
    const bool isRow = static_cast<int>(item->itemID) >= 0;
    if (item->itemAction == ODA_FOCUS && !edited) {
        dc->DrawFocusRect(rect);
        return;
    }
    const bool disabled = (item->itemState & ODS_DISABLED) != 0;
    const bool marked = selected && !edited && !disabled;
    DrawnRow drawn{static_cast<int>(item->itemID), GetSysColor(COLOR_WINDOW),
                   GetSysColor(COLOR_WINDOWTEXT), m_bGreyNulls && !marked};
    if (marked) {
        drawn.m_text = GetSysColor(COLOR_HIGHLIGHTTEXT);
        drawn.m_background = GetSysColor(COLOR_HIGHLIGHT);
    } else {
        if (m_bZebra && item->itemID % 2 == 1)
            drawn.m_background = StripeColor(drawn.m_background, drawn.m_text);
        if (disabled || m_bReadOnly)
            drawn.m_text = GetSysColor(COLOR_GRAYTEXT);
    }
    const int oldMode = dc->SetBkMode(TRANSPARENT);
    const COLORREF oldColor = dc->SetTextColor(drawn.m_text);
    CBrush brush(drawn.m_background);
    dc->FillRect(rect, &brush);
    if (isRow) {
        CRect text(rect);
        text.DeflateRect(2, 0);
        // A copy of the row's text, moved out: an override of DrawColumns may change the row, and
        // draw another list.
        std::string row = std::exchange(drawBuffer, {});
        m_pRows->TextToDraw(static_cast<int>(item->itemID), row);
        const Lifeline life(this);
        const DrawnRow* const outer = std::exchange(m_pDrawn, &drawn);
        DrawColumns(dc, text, row.c_str());
        if (life.Exists())
            m_pDrawn = outer;
        if (row.capacity() <= kMaxKeptBuffer)
            drawBuffer = std::move(row);
    }
    dc->SetTextColor(oldColor);
    dc->SetBkMode(oldMode);
    if (item->itemAction == ODA_FOCUS || (item->itemState & ODS_FOCUS) != 0)
        dc->DrawFocusRect(rect);
}

void CListBoxEx::DrawColumns(CDC* dc, CRect rect, LPCTSTR text) {
    const std::string_view row(text != nullptr ? text : "");
    if (m_nColumns == 0) {
        const std::string_view seen = Visible(row, rect.Width());
        if (m_pFinder != nullptr) {
            CRect place(rect);
            place.right =
                rect.left + dc->GetTextExtent(seen.data(), static_cast<int>(seen.size())).cx;
            m_pFinder->DrawMarks(*dc, {0, row, {}}, seen, place, DT_LEFT);
        }
        dc->ExtTextOut(rect.left, rect.top, ETO_CLIPPED, rect, seen.data(),
                       static_cast<UINT>(seen.size()));
        return;
    }
    const UINT flags = DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS;
    CRect visibleArea(rect);
    if (m_bSideScroll)
        dc->GetClipBox(visibleArea); // skip what is scrolled out
    const auto draw = [&](const DrawnCell& cell) {
        if (cell.span.IsEmpty() || cell.text.empty() || cell.span.right <= visibleArea.left ||
            cell.span.left >= visibleArea.right)
            return;
        CRect place(cell.span.left, rect.top, cell.span.right, rect.bottom);
        const std::string_view seen = Visible(cell.text, place.Width());
        const bool isRight = IsRightAligned(cell.column);
        if (isRight && !m_bRightAligned)
            place.right = std::max(place.left, place.right - m_nOffset - kRightGap);
        const UINT all = flags | static_cast<UINT>(isRight ? DT_RIGHT : DT_LEFT);
        if (m_pFinder != nullptr)
            m_pFinder->DrawMarks(*dc, cell, seen, place, all);
        const bool isGrey = m_pDrawn != nullptr && m_pDrawn->m_greyNulls &&
                            m_pRows->IsNull(m_pDrawn->m_row, cell.column, cell.text);
        const COLORREF color = isGrey ? dc->SetTextColor(GetSysColor(COLOR_GRAYTEXT)) : 0;
        dc->DrawText(seen.data(), static_cast<int>(seen.size()), place, all);
        if (isGrey)
            dc->SetTextColor(color);
    };
    const ColumnView view = GetColumnView();
    const PixelSpan area{rect.left, rect.right};
    const std::string_view separator = ViewOf(m_strSeparator);
    if (view.IsPlain()) {
        LayOutRow(GetColumns(), row, separator, area, m_nOffset, draw);
        return;
    }
    const int frozenEdge = rect.left + view.Shift() + view.FrozenWidth();
    const int saved = dc->SaveDC();
    bool isClipped = false;
    LayOutShown(view, row, separator, area, m_nOffset, [&](const DrawnCell& cell) {
        const bool scrolls = view.Frozen() > 0 && !view.IsFrozen(cell.column);
        if (scrolls && !isClipped)
            dc->IntersectClipRect(frozenEdge, rect.top, std::max(rect.right, visibleArea.right),
                                  rect.bottom);
        else if (!scrolls && isClipped)
            dc->RestoreDC(saved);
        isClipped = scrolls;
        draw(cell);
    });
    dc->RestoreDC(saved);
}

void CListBoxEx::EnableGreyNulls(BOOL on) {
    m_bGreyNulls = on;
    RedrawAll();
}

void CListBoxEx::EnableZebra(BOOL on) {
    m_bZebra = on;
    RedrawAll();
}

// --- fitting -------------------------------------------------------------------------------------

int CListBoxEx::MeasureColumn(int column, std::chrono::steady_clock::time_point until) {
    CClientDC dc(this);
    const auto widthOf = [&dc](std::string_view text) {
        const std::string_view head = Beginning(text, kMaxMeasuredBytes);
        SIZE size{0, 0};
        GetTextExtentPoint32(dc, head.data(), static_cast<int>(head.size()), &size);
        return size.cx;
    };
    CFont* headingFont = m_pHeadings != nullptr ? m_pHeadings->GetActiveFont() : nullptr;
    CFont* listFont = GetFont();
    const SListColumn& record = m_pColumns[static_cast<std::size_t>(column)];
    CFont* old = headingFont != nullptr ? dc.SelectObject(headingFont) : nullptr;
    // The gaps of DrawHeading, and of the sort arrow.
    int width = widthOf(ViewOf(record.m_strHeading)) + 4 + 2 * kFitGap;
    if (listFont != nullptr) {
        CFont* previous = dc.SelectObject(listFont);
        old = old != nullptr ? old : previous;
    }
    m_pRows->ForEachMeasured(column, until, [&](std::string_view value) {
        if (!value.empty())
            width = std::max<int>(width, widthOf(value) + record.m_nSpacing + m_nOffset + kFitGap);
    });
    if (old != nullptr)
        dc.SelectObject(old);
    return width;
}

void CListBoxEx::AutoFitCol(int column) {
    if (!IsColumn(column) || GetSafeHwnd() == nullptr)
        return;
    SetWidths();
    SetColumnWidth(column,
                   MeasureColumn(column, std::chrono::steady_clock::now() + kLongestFit / 2));
    if (m_pHeadings != nullptr)
        m_pHeadings->FixLastColWidth();
    FollowEditedRow();
    RedrawAll();
}

void CListBoxEx::FitAllColumns() {
    if (GetSafeHwnd() == nullptr)
        return;
    SetWidths();
    const auto end = std::chrono::steady_clock::now() + kLongestFit;
    for (int column = 0; column < m_nColumns; ++column) {
        const auto now = std::chrono::steady_clock::now();
        SetColumnWidth(column, MeasureColumn(column, now + (end - now) / (m_nColumns - column)));
    }
    if (m_pHeadings != nullptr)
        m_pHeadings->FixLastColWidth();
    FollowEditedRow();
    RedrawAll();
}

// CListBoxEx: drawing and measuring rows.
#include "src/lists/ListBoxExInternal.h"
#include "src/lists/ListColumns.h"
#include "src/lists/RowText.h"

#include "src/charset/CodePage.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

using namespace vnbytstr::detail;

namespace {

/// Gap between what AutoFitCol measured and the column's edge, on either side.
constexpr int kFitGap = 4;
/// Of lists with more rows only the visible rows and this number of longest rows are measured.
constexpr int kMaxMeasuredRows = 1000;
constexpr int kMaxVisibleRows = 100; ///< as many as a screen shows
/// Texts are measured up to here; no screen shows more.
constexpr std::size_t kMaxMeasuredBytes = 4000;

/// The start of a text, cut between characters.
std::string_view Beginning(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes)
        return text;
    // CharStart gets a few bytes more than are kept, not the whole text, which may be 100 MB.
    const std::string_view head = text.substr(0, bytes);
    const vnbytstr::CodePage& page = vnbytstr::CodePage::Ansi();
    return head.substr(0, page.CharStart(text.substr(0, bytes + 8), bytes));
}

/// At least as much of a text as is visible in `width` pixels; a text that is too long still gets
/// its ellipsis.
std::string_view Visible(std::string_view text, int width) {
    constexpr std::size_t kBytesPerPixel = 8; // narrow letters with combining marks
    return Beginning(text, 64 + kBytesPerPixel * static_cast<std::size_t>(std::max(width, 0)));
}

/// The values of rows longer than this are cut before they are drawn.
constexpr std::size_t kLongRow = 32 * 1024;
constexpr std::size_t kMaxDrawnBytes = 8 * 1024;

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
    COLORREF textColor;
    COLORREF background = GetSysColor(COLOR_WINDOW);
    if ((item->itemState & ODS_DISABLED) != 0) {
        textColor = GetSysColor(COLOR_GRAYTEXT);
    } else if (!selected || edited) {
        textColor = GetSysColor(m_bReadOnly ? COLOR_GRAYTEXT : COLOR_WINDOWTEXT);
    } else {
        textColor = GetSysColor(COLOR_HIGHLIGHTTEXT);
        background = GetSysColor(COLOR_HIGHLIGHT);
    }
    const int oldMode = dc->SetBkMode(TRANSPARENT);
    const COLORREF oldColor = dc->SetTextColor(textColor);
    CBrush brush(background);
    dc->FillRect(rect, &brush);
    if (isRow) {
        CRect text(rect);
        text.DeflateRect(2, 0);
        DrawColumns(dc, text, TextToDraw(static_cast<int>(item->itemID)));
    }
    dc->SetTextColor(oldColor);
    dc->SetBkMode(oldMode);
    if (item->itemAction == ODA_FOCUS || (item->itemState & ODS_FOCUS) != 0)
        dc->DrawFocusRect(rect);
}

/// A row's text with very long values cut; a copy, since an override of DrawColumns may change the
/// row.
CString CListBoxEx::TextToDraw(int row) const {
    const std::string_view text = RowText(row);
    if (text.size() <= kLongRow)
        return StringOf(text);
    CellReader reader(text, m_nColumns > 0 ? ViewOf(m_strSeparator) : std::string_view());
    CString shortened;
    std::string_view value;
    for (int column = 0; column < std::max(1, m_nColumns) && reader.Next(value); ++column) {
        if (column > 0)
            shortened += m_strSeparator;
        shortened += StringOf(Beginning(value, kMaxDrawnBytes));
    }
    return shortened;
}

void CListBoxEx::DrawColumns(CDC* dc, CRect rect, LPCTSTR text) {
    const std::string_view row(text != nullptr ? text : "");
    if (m_nColumns == 0) {
        const std::string_view seen = Visible(row, rect.Width());
        dc->ExtTextOut(rect.left, rect.top, ETO_CLIPPED, rect, seen.data(),
                       static_cast<UINT>(seen.size()));
        return;
    }
    const UINT flags = DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS |
                       static_cast<UINT>(m_bRightAligned ? DT_RIGHT : DT_LEFT);
    CRect visibleArea(rect);
    if (m_bSideScroll)
        dc->GetClipBox(visibleArea); // skip what is scrolled out
    LayOutRow(GetColumns(), row, ViewOf(m_strSeparator), {rect.left, rect.right}, m_nOffset,
              [&](const DrawnCell& cell) {
                  if (cell.span.IsEmpty() || cell.text.empty() ||
                      cell.span.right <= visibleArea.left || cell.span.left >= visibleArea.right)
                      return;
                  CRect place(cell.span.left, rect.top, cell.span.right, rect.bottom);
                  const std::string_view seen = Visible(cell.text, place.Width());
                  dc->DrawText(seen.data(), static_cast<int>(seen.size()), place, flags);
              });
}

// --- fitting -------------------------------------------------------------------------------------

/// The `count` rows with the longest values of a column, in bytes; the first ones of equal length.
std::vector<int> CListBoxEx::LongestValues(int column, int count) const {
    std::vector<std::pair<std::size_t, int>> lengths(static_cast<std::size_t>(GetCount()));
    for (std::size_t row = 0; row < lengths.size(); ++row)
        lengths[row] = {CellOf(static_cast<int>(row), column).size(), -static_cast<int>(row)};
    const auto end = lengths.begin() + std::min<std::ptrdiff_t>(count, std::ssize(lengths));
    std::nth_element(lengths.begin(), end, lengths.end(), std::greater<>());
    std::vector<int> rows;
    for (auto at = lengths.begin(); at != end; ++at)
        rows.push_back(-at->second);
    return rows;
}

int CListBoxEx::MeasureColumn(int column) {
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
    const auto measure = [&](int row) {
        const std::string_view value = CellOf(row, column);
        if (!value.empty())
            width = std::max<int>(width, widthOf(value) + record.m_nSpacing + m_nOffset + kFitGap);
    };
    const int count = GetCount();
    if (count <= kMaxMeasuredRows) {
        for (int row = 0; row < count; ++row)
            measure(row);
    } else {
        const int top = static_cast<int>(SendMessage(LB_GETTOPINDEX));
        for (int row = top; row < std::min(count, top + kMaxVisibleRows); ++row)
            measure(row);
        for (const int row : LongestValues(column, kMaxMeasuredRows))
            measure(row);
    }
    if (old != nullptr)
        dc.SelectObject(old);
    return width;
}

void CListBoxEx::AutoFitCol(int column) {
    if (!IsColumn(column) || GetSafeHwnd() == nullptr)
        return;
    SetWidths();
    SetColumnWidth(column, MeasureColumn(column));
    if (m_pHeadings != nullptr)
        m_pHeadings->FixLastColWidth();
    FollowEditedRow();
    RedrawAll();
}

void CListBoxEx::FitAllColumns() {
    if (GetSafeHwnd() == nullptr)
        return;
    SetWidths();
    for (int column = 0; column < m_nColumns; ++column)
        SetColumnWidth(column, MeasureColumn(column));
    if (m_pHeadings != nullptr)
        m_pHeadings->FixLastColWidth();
    FollowEditedRow();
    RedrawAll();
}

// --- the selection as text -----------------------------------------------------------------------

CString CListBoxEx::GetSelectionText(BOOL withHeadings) const {
    std::string text;
    const auto add = [&text](std::string_view value, bool last) {
        if (value.find_first_of("\t\r\n\"") == std::string_view::npos) {
            text.append(value);
        } else {
            text += '"';
            for (const char ch : value)
                text.append(ch == '"' ? 2 : 1, ch);
            text += '"';
        }
        text.append(last ? "\r\n" : "\t");
    };
    const int columns = std::max(1, m_nColumns);
    if (withHeadings && m_nColumns > 0)
        for (int column = 0; column < columns; ++column)
            add(ViewOf(m_pColumns[static_cast<std::size_t>(column)].m_strHeading),
                column == columns - 1);
    const int count = GetCount();
    for (int row = 0; row < count; ++row) {
        if (SendMessage(LB_GETSEL, static_cast<WPARAM>(row)) <= 0)
            continue;
        for (int column = 0; column < columns; ++column)
            add(CellOf(row, column), column == columns - 1);
    }
    return StringOf(text);
}

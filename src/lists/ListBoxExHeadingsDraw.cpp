// CListBoxExHeadings: drawing.
#include "vnbytstr/ListBoxExHeadings.h"

#include "src/lists/HeadingGeometry.h"
#include "src/lists/HeadingTracking.h"
#include "vnbytstr/ListBoxEx.h"

using namespace vnbytstr::detail;

namespace {

constexpr int kArrowHeight = 4; ///< of the sort arrow; its width is 2 * kArrowHeight - 1
constexpr int kArrowRoom = 14;  ///< from its left to the header's right edge
constexpr int kSideGap = 2;     ///< beside a name at the left or right, where the cells' texts are

} // namespace

void CListBoxExHeadings::MakeDrawingObjects() {
    if (m_brBackground.GetSafeHandle() != nullptr)
        return;
    m_brBackground.CreateSolidBrush(GetSysColor(COLOR_3DFACE));
    m_penFrame.CreatePen(PS_SOLID, 1, GetSysColor(COLOR_3DDKSHADOW));
    m_penHighlight.CreatePen(PS_SOLID, 1, GetSysColor(COLOR_3DHIGHLIGHT));
    m_penShadow.CreatePen(PS_SOLID, 1, GetSysColor(COLOR_3DSHADOW));
}

void CListBoxExHeadings::DeleteDrawingObjects() {
    m_brBackground.DeleteObject();
    m_penFrame.DeleteObject();
    m_penHighlight.DeleteObject();
    m_penShadow.DeleteObject();
}

void CListBoxExHeadings::DrawHeading(CDC* dc, LPCTSTR text, CRect rect, BOOL pressed) {
    MakeDrawingObjects();
    const HeadingLines lines =
        LayOutHeading({rect.left, rect.top, rect.right, rect.bottom}, pressed != FALSE);
    CPen* old = dc->SelectObject(&m_penFrame);
    if (lines.hasFrame) {
        dc->MoveTo(lines.frame[0].x, lines.frame[0].y);
        dc->LineTo(lines.frame[1].x, lines.frame[1].y);
    }
    dc->SelectObject(pressed ? &m_penShadow : &m_penHighlight);
    for (int i = 1; i < lines.upperPoints; ++i) {
        dc->MoveTo(lines.upper[i - 1].x, lines.upper[i - 1].y);
        dc->LineTo(lines.upper[i].x, lines.upper[i].y);
    }
    if (lines.hasLower) {
        dc->SelectObject(&m_penShadow);
        dc->MoveTo(lines.lower[0].x, lines.lower[0].y);
        dc->LineTo(lines.lower[1].x, lines.lower[1].y);
    }
    if (old != nullptr)
        dc->SelectObject(old);

    CRect place(lines.text.left, lines.text.top, lines.text.right, lines.text.bottom);
    if (place.Width() <= 0)
        return;
    const CString heading(text);
    SIZE size{0, 0};
    GetTextExtentPoint32(*dc, heading, heading.GetLength(), &size);
    if (m_nTextFlags == DT_RIGHT && place.Width() > m_nArrowRoom)
        place.right -= m_nArrowRoom;
    UINT flags = DT_SINGLELINE | DT_NOPREFIX | DT_VCENTER;
    // A text that is too wide shows its start, not its middle or end.
    if (size.cx <= place.Width()) {
        flags |= m_nTextFlags;
        if (m_nTextFlags != DT_CENTER)
            place.DeflateRect(kSideGap, 0);
    }
    dc->DrawText(heading, place, flags);
}

void CListBoxExHeadings::DrawArrow(CDC* dc, const CRect& rect, BOOL ascending) {
    const int right = rect.right - 6;
    const int left = right - 2 * kArrowHeight + 1;
    if (left < rect.left + 4)
        return;
    const int top = (rect.top + rect.bottom - kArrowHeight) / 2 + 1;
    dc->FillRect(CRect(left - 2, rect.top + 2, right + 2, rect.bottom), &m_brBackground);
    for (int line = 0; line < kArrowHeight; ++line) {
        const int inset = ascending ? kArrowHeight - 1 - line : line;
        dc->FillSolidRect(CRect(left + inset, top + line, right - inset, top + line + 1),
                          GetSysColor(COLOR_BTNTEXT));
    }
}

void CListBoxExHeadings::OnPaint() {
    CPaintDC dc(this);
    MakeDrawingObjects();
    CRect client;
    GetClientRect(client);
    dc.FillRect(client, &m_brBackground);
    if (m_pList == nullptr)
        return;
    Owner().SetWidths();
    CFont* font = GetActiveFont();
    CFont* old = font != nullptr ? dc.SelectObject(font) : nullptr;
    dc.SetBkMode(TRANSPARENT);
    dc.SetTextColor(GetSysColor(IsWindowEnabled() ? COLOR_BTNTEXT : COLOR_GRAYTEXT));
    CRect rect;
    const ColumnView view = Owner().GetColumnView();
    for (int position = 0; position < view.Count(); ++position) {
        const int column = view.ColumnOf(position);
        if (!GetRect(column, &rect))
            break;
        if (rect.right <= 0 ||
            (position >= view.Frozen() && rect.right <= rect.left && view.Frozen() > 0))
            continue; // scrolled out at the left
        m_nTextFlags = Owner().HeadingTextFlags(column);
        const bool hasArrow = m_bSortArrow && column == Owner().GetSortColumn();
        m_nArrowRoom = hasArrow ? kArrowRoom : 0;
        DrawHeading(&dc, Owner().GetColumns()[static_cast<std::size_t>(column)].m_strHeading, rect,
                    m_pTracking->pressedLook && column == m_pTracking->pressedHeading);
        if (hasArrow)
            DrawArrow(&dc, rect, Owner().GetSortState() == kSortedAscending);
        if (m_bKeyboard && column == m_nFocusColumn && GetFocus() == this) {
            rect.DeflateRect(2, 2);
            dc.DrawFocusRect(rect);
        }
    }
    if (old != nullptr)
        dc.SelectObject(old);
}

void CListBoxExHeadings::DrawSizer() {
    CWnd* parent = GetSafeHwnd() != nullptr ? GetParent() : nullptr;
    if (parent == nullptr || m_pList == nullptr || m_pList->GetSafeHwnd() == nullptr)
        return;
    CRect line(m_pTracking->sizerPosition, 0, m_pTracking->sizerPosition + 1, 1);
    MapWindowPoints(parent, line);
    CRect list;
    m_pList->GetWindowRect(list);
    parent->ScreenToClient(list);
    line.bottom = list.bottom;
    CClientDC dc(parent);
    dc.InvertRect(line);
}

void CListBoxExHeadings::OnSysColorChange() {
    CWnd::OnSysColorChange();
    DeleteDrawingObjects();
    Invalidate();
}

void CListBoxExHeadings::ShowSortArrow(BOOL on) {
    m_bSortArrow = on;
    if (GetSafeHwnd() != nullptr)
        Invalidate();
}

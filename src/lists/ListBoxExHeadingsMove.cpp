// CListBoxExHeadings: headers dragged to other places, the menu of columns, tips.
#include "vnbytstr/ListBoxExHeadings.h"

#include "src/lists/HeadingGeometry.h"
#include "src/lists/HeadingTracking.h"
#include "vnbytstr/ListBoxEx.h"
#include "vnbytstr/window/ToolTip.h"

#include <cstdlib>

using namespace vnbytstr::detail;

namespace {

constexpr int kDragStart = 6; ///< pixels that the pointer moves before a header is dragged
constexpr std::uintptr_t kTipTimer = 1;
constexpr UINT kTipDelay = 600; ///< milliseconds

} // namespace

/// The pointer moved with a header pressed. TRUE while the header is dragged.
bool CListBoxExHeadings::DragHeading(CPoint point) {
    if (!m_bMove || (m_drag.position < 0 && std::abs(point.x - m_drag.startX) < kDragStart))
        return false;
    const int position = Geometry().DropPosition(point.x);
    if (position == m_drag.position)
        return true;
    if (m_pTracking->MoveOver(-1))
        Invalidate();
    UpdateWindow(); // before the mark, which inverts what is there
    DrawDropMark();
    m_drag.position = position;
    DrawDropMark();
    return true;
}

/// Inverts a line where the header would be dropped, down to the list's bottom; a second time
/// removes it.
void CListBoxExHeadings::DrawDropMark() {
    CWnd* parent = GetSafeHwnd() != nullptr ? GetParent() : nullptr;
    if (parent == nullptr || m_drag.position < 0 || m_pList == nullptr ||
        m_pList->GetSafeHwnd() == nullptr)
        return;
    const int x = Geometry().DropEdge(m_drag.position);
    CRect line(x - 1, 0, x + 1, 1);
    MapWindowPoints(parent, line);
    CRect list;
    m_pList->GetWindowRect(list);
    parent->ScreenToClient(list);
    line.bottom = list.bottom;
    CClientDC dc(parent);
    dc.InvertRect(line);
    m_drag.isMarked = !m_drag.isMarked;
}

void CListBoxExHeadings::EndHeadingDrag() {
    if (m_drag.isMarked)
        DrawDropMark();
    m_drag = {};
}

/// The button went up. TRUE when that dropped a header, which does not sort then.
bool CListBoxExHeadings::DropHeading() {
    const int position = m_drag.position;
    const int column = m_pTracking->pressedHeading;
    EndHeadingDrag();
    if (position < 0 || column < 0)
        return false;
    m_pTracking->Release(-1);
    ReleaseCapture();
    Invalidate();
    if (m_pList != nullptr)
        Owner().DropColumn(column, position);
    return true;
}

void CListBoxExHeadings::OnContextMenu(CWnd* window, CPoint screen) {
    if (m_bTips) { // else it would stand above the menu
        KillTimer(kTipTimer);
        HideTip();
    }
    if (!m_bColumnMenu || m_pList == nullptr || m_pTracking->tracking) {
        CWnd::OnContextMenu(window, screen);
        return;
    }
    CPoint point(screen);
    ScreenToClient(&point);
    int column = HitTest(point);
    if (screen.x == -1 && screen.y == -1) { // by the keyboard
        column = GetFocusColumn();
        CRect rect;
        GetRect(column, &rect);
        point = CPoint(rect.left, rect.bottom);
        screen = point;
        ClientToScreen(&screen);
    }
    Owner().ChooseColumns(column, screen);
}

// --- tips ----------------------------------------------------------------------------------------

void CListBoxExHeadings::EnableTips(BOOL on) {
    m_bTips = on;
    if (!on && GetSafeHwnd() != nullptr)
        KillTimer(kTipTimer);
}

/// The tip appears when the pointer stays on a header for a while.
void CListBoxExHeadings::WaitForTip(CPoint point) {
    if (!m_bTips || GetSafeHwnd() == nullptr)
        return;
    const int column = HitTest(point);
    m_tipPoint = point;
    if (column == m_nTipColumn)
        return;
    m_nTipColumn = column;
    KillTimer(kTipTimer);
    HideTip();
    if (column >= 0)
        SetTimer(kTipTimer, kTipDelay);
}

void CListBoxExHeadings::OnTimer(std::uintptr_t id) {
    if (id != kTipTimer) {
        CWnd::OnTimer(id);
        return;
    }
    KillTimer(kTipTimer);
    if (!m_bTips || m_pList == nullptr || m_nTipColumn < 0 || m_pTracking->tracking)
        return;
    CRect rect;
    const CString text = m_pList->GetColumnTip(m_nTipColumn);
    if (!text.IsEmpty() && GetRect(m_nTipColumn, &rect))
        ShowTip(m_hWnd, m_tipPoint, text, rect);
}

void CListBoxExHeadings::OnMouseLeave() {
    CWnd::OnMouseLeave();
    m_nTipColumn = -1;
    if (m_bTips)
        KillTimer(kTipTimer);
}

// CListBoxExHeadings: mouse and keyboard.
#include "vnbytstr/ListBoxExHeadings.h"

#include "src/lists/HeadingGeometry.h"
#include "src/lists/HeadingTracking.h"
#include "vnbytstr/ListBoxEx.h"

#include <algorithm>

using namespace vnbytstr::detail;

namespace {

constexpr int kKeyStep = 8; ///< pixels that a key resizes by

} // namespace

// --- mouse ---------------------------------------------------------------------------------------

BOOL CListBoxExHeadings::CanFocusList() const {
    return m_pList != nullptr && m_pList->GetSafeHwnd() != nullptr && m_pList->IsWindowEnabled() &&
           (m_pList->GetStyle() & WS_TABSTOP) != 0;
}

void CListBoxExHeadings::FocusList() {
    if (CanFocusList())
        m_pList->SetFocus();
}

/// Gives the list the focus, which stores an open editor: the parent may show a message box, which
/// gets the release, or destroy everything. FALSE when nothing is to come of the press.
BOOL CListBoxExHeadings::FocusListForPress() {
    const Life life = m_pTracking;
    const bool wasDown = GetKeyState(VK_LBUTTON) < 0;
    const bool wasEditing = m_pList != nullptr && Owner().HasOpenEditor() && CanFocusList();
    FocusList();
    if (life.expired() || GetSafeHwnd() == nullptr)
        return FALSE;
    if (wasEditing && m_pList != nullptr && Owner().HasOpenEditor())
        return FALSE; // the value was refused
    return !wasDown || GetKeyState(VK_LBUTTON) < 0;
}

void CListBoxExHeadings::OnLButtonDown(UINT flags, CPoint point) {
    static_cast<void>(flags);
    if (!FocusListForPress() || m_pList == nullptr || GetCapture() == this)
        return;
    if (const int column = SizerHitTest(point); column >= 0) {
        BeginResize(column, point);
        return;
    }
    const int heading = HitTest(point);
    if ((!Owner().IsSortEnabled() && !m_bMove) || heading < 0)
        return;
    m_drag = {point.x};
    m_pTracking->PressHeading(heading);
    SetCapture();
    Invalidate();
}

void CListBoxExHeadings::BeginResize(int column, CPoint point) {
    CRect rect;
    GetRect(column, &rect);
    m_pTracking->PressBoundary(column, rect.right, point.x);

    const int room =
        (m_pList->GetStyle() & WS_VSCROLL) != 0 ? GetSystemMetrics(SM_CXVSCROLL) + 1 : 0;
    CRect client;
    GetClientRect(client);
    CRect span(rect.left, 0, client.right - room - m_pTracking->grabOffset, 1);
    ClientToScreen(span);
    CRect rows;
    m_pList->GetClientRect(rows);
    m_pList->ClientToScreen(rows);
    CRect confined(span.left, rows.top, span.right, rows.bottom);
    confined.NormalizeRect();
    ClipCursor(confined);
    SetCapture();
    DrawSizer();
}

void CListBoxExHeadings::ResizeTo(CPoint point, BOOL erase) {
    CRect rect;
    const int column = m_pTracking->sizingColumn;
    GetRect(column, &rect);
    if (const ColumnView view = Owner().GetColumnView(); view.Frozen() > 0)
        rect.left = Geometry().Left() + view.Place(column).left; // may be covered
    Owner().ResizeColumn(column, m_pTracking->MoveBoundary(point.x, rect.left));
    FixLastColWidth();
    Invalidate();
    Owner().ColumnsMoved(std::max<int>(0, rect.left - HeadingGeometry::kFirstLeft), erase);
}

void CListBoxExHeadings::OnMouseMove(UINT flags, CPoint point) {
    static_cast<void>(flags);
    if (m_pTracking->GetPhase() == HeadingTracking::Phase::Idle || m_pList == nullptr) {
        WaitForTip(point);
        SetCursor(SizerHitTest(point) >= 0 ? m_hSize : m_hArrow);
        return;
    }
    if (m_pTracking->GetPhase() == HeadingTracking::Phase::HeadingPressed) {
        SetCursor(m_hArrow);
        if (DragHeading(point))
            return;
        if (m_pTracking->MoveOver(HitTest(point)))
            Invalidate();
        return;
    }
    const Life life = m_pTracking;
    const bool wasDown = GetKeyState(VK_LBUTTON) < 0;
    m_pList->SetFocus();
    if (life.expired() || GetSafeHwnd() == nullptr || !m_pTracking->tracking ||
        m_pTracking->sizingColumn >= ColumnCount())
        return; // the focus change ended the drag, or destroyed the list or its columns
    if (wasDown && GetKeyState(VK_LBUTTON) >= 0) {
        OnCancelMode();
        return;
    }
    SetCursor(m_hSize);
    DrawSizer();
    ResizeTo(point, FALSE);
    UpdateWindow(); // the list follows the drag
    if (!life.expired() && m_pList != nullptr)
        m_pList->UpdateWindow();
    if (!life.expired() && m_pTracking->tracking)
        DrawSizer();
}

void CListBoxExHeadings::OnLButtonUp(UINT flags, CPoint point) {
    static_cast<void>(flags);
    if (!m_pTracking->tracking || DropHeading())
        return;
    if (m_pTracking->GetPhase() == HeadingTracking::Phase::Resizing) {
        DrawSizer();
        ClipCursor(nullptr);
        if (m_pTracking->sizingColumn < ColumnCount()) {
            ResizeTo(point, TRUE);
            NotifyAccessibility(m_pList->m_hWnd, AccessibleChange::Columns);
        }
    }
    const HeadingTracking::Released released = m_pTracking->Release(HitTest(point));
    ReleaseCapture();
    const Life life = m_pTracking;
    const BOOL sorted = released.sortColumn >= 0 && m_pList != nullptr && Owner().IsSortEnabled() &&
                        Owner().Sort(released.sortColumn);
    if (!life.expired() && GetSafeHwnd() != nullptr && (sorted || released.hadLook))
        Invalidate();
}

void CListBoxExHeadings::OnLButtonDblClk(UINT flags, CPoint point) {
    static_cast<void>(flags);
    if (!FocusListForPress())
        return;
    Default();
    if (const int column = SizerHitTest(point); column >= 0)
        Owner().AutoFitCol(column);
}

BOOL CListBoxExHeadings::OnSetCursor(CWnd* window, UINT hitTest, UINT message) {
    static_cast<void>(window);
    static_cast<void>(hitTest);
    static_cast<void>(message);
    CPoint point;
    GetCursorPos(&point);
    ScreenToClient(&point);
    SetCursor(m_pTracking->pressedHeading < 0 && SizerHitTest(point) >= 0 ? m_hSize : m_hArrow);
    return TRUE;
}

void CListBoxExHeadings::OnCancelMode() {
    if (!m_pTracking->tracking)
        return;
    EndHeadingDrag();
    if (m_pTracking->Cancel() == HeadingTracking::Phase::Resizing) {
        DrawSizer();
        ClipCursor(nullptr);
    }
    ReleaseCapture();
    if (GetSafeHwnd() != nullptr)
        Invalidate(TRUE);
}

// --- keyboard ------------------------------------------------------------------------------------

void CListBoxExHeadings::EnableKeyboard(BOOL on) {
    m_bKeyboard = on;
    if (GetSafeHwnd() == nullptr)
        return;
    ModifyStyle(on ? 0 : WS_TABSTOP, on ? WS_TABSTOP : 0);
    Invalidate();
}

UINT CListBoxExHeadings::OnGetDlgCode() {
    return m_bKeyboard ? static_cast<UINT>(DLGC_WANTARROWS | DLGC_WANTCHARS | DLGC_WANTALLKEYS)
                       : CWnd::OnGetDlgCode();
}

int CListBoxExHeadings::FocusPosition() const {
    return m_pList != nullptr ? Owner().GetColumnView().PositionOf(m_nFocusColumn) : 0;
}

/// The header at a position from the left, or the nearest.
void CListBoxExHeadings::SelectHeading(int position) {
    if (ColumnCount() == 0)
        return;
    const ColumnView view = Owner().GetColumnView();
    const int column = view.ColumnOf(std::clamp(position, 0, view.Count() - 1));
    m_nFocusColumn = column;
    Invalidate();
    NotifyAccessibility(m_pList->m_hWnd, AccessibleChange::Focus, -1, m_nFocusColumn);
}

void CListBoxExHeadings::ResizeByKey(int column, int pixels) {
    if (column >= ColumnCount())
        return;
    m_pList->SetColumnWidth(column, m_pList->GetColumnWidth(column) + pixels);
    FixLastColWidth();
    NotifyAccessibility(m_pList->m_hWnd, AccessibleChange::Columns);
}

void CListBoxExHeadings::OnKeyDown(UINT key, UINT repeat, UINT flags) {
    if (!m_bKeyboard || m_pList == nullptr || m_pTracking->tracking) {
        CWnd::OnKeyDown(key, repeat, flags);
        return;
    }
    const bool shift = GetKeyState(VK_SHIFT) < 0;
    const bool control = GetKeyState(VK_CONTROL) < 0;
    switch (key) {
    case VK_LEFT:
    case VK_RIGHT: {
        const int step = key == VK_RIGHT ? 1 : -1;
        if (shift)
            ResizeByKey(m_nFocusColumn, step * kKeyStep);
        else
            SelectHeading(FocusPosition() + step);
        break;
    }
    case VK_HOME:
        SelectHeading(0);
        break;
    case VK_END:
        SelectHeading(ColumnCount() - 1);
        break;
    case VK_RETURN:
    case VK_SPACE:
        if (control)
            Owner().AutoFitCol(m_nFocusColumn);
        else if (Owner().IsSortEnabled())
            Owner().Sort(m_nFocusColumn);
        break;
    case VK_TAB: {
        // DLGC_WANTALLKEYS brings Tab here, too: leave the control with it.
        CWnd* top = GetTopLevelParent();
        if (CWnd* next = top != nullptr ? top->GetNextDlgTabItem(this, shift) : nullptr)
            next->SetFocus();
        break;
    }
    default:
        CWnd::OnKeyDown(key, repeat, flags);
        break;
    }
}

void CListBoxExHeadings::OnSetFocus(CWnd* old) {
    CWnd::OnSetFocus(old);
    if (m_bKeyboard)
        SelectHeading(FocusPosition());
}

void CListBoxExHeadings::OnKillFocus(CWnd* next) {
    CWnd::OnKillFocus(next);
    if (m_bKeyboard)
        Invalidate();
}

// CListBoxEx: horizontal scrolling.
#include "src/lists/ListBoxExInternal.h"
#include "src/lists/ListColumns.h"

#include "vnbytstr/window/ListBox.h"

#include <algorithm>

using namespace vnbytstr::detail;

void CListBoxEx::EnableSideScroll(BOOL on) {
    m_bSideScroll = on;
    m_nLastOwnWidth = GetColumnWidth(LastColumn());
    if (GetSafeHwnd() == nullptr)
        return;
    if (!on)
        SendMessage(LB_SETHORIZONTALEXTENT, 0);
    UpdateExtent();
    SideShiftChanged();
}

int CListBoxEx::GetSideShift() const {
    return m_bSideScroll && GetSafeHwnd() != nullptr ? ListBoxSideShift(m_hWnd) : 0;
}

int CListBoxEx::GetOwnColumnWidth(int column) const {
    const bool isGrown = m_bSideScroll && IsColumn(column) && column == LastColumn();
    return isGrown ? m_nLastOwnWidth : GetColumnWidth(column);
}

void CListBoxEx::ShowColumn(int column) {
    const int position = GetColumnView().PositionOf(column);
    if (!m_bSideScroll || position < m_nFrozen || GetSafeHwnd() == nullptr)
        return;
    SetWidths();
    CRect client;
    GetClientRect(client);
    const ColumnView view = GetColumnView();
    client.right -= view.FrozenWidth();
    const int left = view.WidthBefore(position) - view.FrozenWidth();
    const int end = left + GetOwnColumnWidth(column);
    const int before = GetSideShift();
    int shift = before;
    if (left < shift || end - left > client.Width())
        shift = left;
    else if (end - client.Width() > shift)
        shift = end - client.Width();
    ListBoxSetSideShift(m_hWnd, shift);
    if (GetSideShift() != before)
        SideShiftChanged();
}

void CListBoxEx::FillLastColumn(int width) {
    if (m_nColumns == 0)
        return;
    int& last = m_pColumns[static_cast<std::size_t>(LastColumn())].m_nWidth;
    if (m_bSideScroll)
        last = std::max(m_nLastOwnWidth, width);
    else if (width >= 0)
        last = width;
    UpdateExtent();
}

/// Column widths have changed, and with them the range of the scroll bar.
void CListBoxEx::UpdateExtent() {
    if (!m_bSideScroll || GetSafeHwnd() == nullptr)
        return;
    const ColumnView view = GetColumnView();
    const int extent = view.WidthBefore(view.Count() - 1) + GetOwnColumnWidth(LastColumn());
    if (SendMessage(LB_GETHORIZONTALEXTENT) == extent)
        return;
    const int shift = GetSideShift();
    SendMessage(LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(extent));
    if (GetSideShift() != shift)
        SideShiftChanged();
}

void CListBoxEx::SideShiftChanged() {
    if (m_pHeadings != nullptr && m_pHeadings->GetSafeHwnd() != nullptr)
        m_pHeadings->Invalidate();
    PlaceFilterFields();
    FollowEditedRow();
}

void CListBoxEx::OnHScroll(UINT code, UINT position, CWnd* bar) {
    static_cast<void>(code);
    static_cast<void>(position);
    if (bar != nullptr)
        return; // sent by an editor's spinner
    const Lifeline life(this);
    if (!LeaveCell() || !life.Holds())
        return;
    Default();
    SideShiftChanged();
}

#include "vnbytstr/VNListBox.h"
#include "vnbytstr/window/ListBox.h"

#include "src/lists/ListColumns.h"
#include "src/lists/RowMap.h"

#include <memory>
#include <vector>

using namespace vnbytstr::detail;

IMPLEMENT_DYNAMIC(CVNListBox, CListBoxEx)

BEGIN_MESSAGE_MAP(CVNListBox, CListBoxEx)
ON_WM_MOUSEMOVE()
ON_WM_MOUSELEAVE()
END_MESSAGE_MAP()

CVNListBox::CVNListBox() { m_DataTip.Create(this); }

void CVNListBox::SetItemTip(int row, LPCTSTR text) {
    if (row < 0 || row >= GetCount() || GetRowSource() != nullptr)
        return;
    row = GetUnfilteredRow(row);
    InsertMappedRow(m_RowMap, row);
    m_Tips.InsertAt(row, CString(text));
}

void CVNListBox::RemoveItemTip(int row) {
    const int index = MappedIndex(m_RowMap, row);
    if (index < 0 || index >= m_Tips.GetSize())
        return;
    m_Tips.RemoveAt(index);
    RemoveMappedRow(m_RowMap, row);
}

void CVNListBox::ResetTips() {
    m_Tips.RemoveAll();
    m_RowMap.RemoveAll();
    m_bTipShown = FALSE;
    m_DataTip.Hide();
}

int CVNListBox::GetItemIndex(int row) const { return MappedIndex(m_RowMap, row); }

CString CVNListBox::GetItemTip(int index) const {
    return index >= 0 && index < m_Tips.GetSize() ? m_Tips[index] : CString();
}

void CVNListBox::SetDataTip(CPoint point) {
    m_bTipShown = FALSE;
    if (GetSafeHwnd() == nullptr)
        return;
    const int count = GetCount();
    const int row = RowAt(point.y, static_cast<int>(SendMessage(LB_GETTOPINDEX)),
                          static_cast<int>(SendMessage(LB_GETITEMHEIGHT)), count);
    const bool hasTips = GetRowSource() == nullptr && m_Tips.GetSize() == GetUnfilteredCount();
    const int index = row >= 0 && hasTips ? GetItemIndex(GetUnfilteredRow(row)) : -1;
    if (index < 0) {
        m_DataTip.Hide();
        return;
    }
    const CString tip = GetItemTip(index);
    m_bTipShown = !tip.IsEmpty();
    m_DataTip.Set(point, tip);
}

void CVNListBox::DoMouseMove(CPoint point) { SetDataTip(point); }

void CVNListBox::OnMouseMove(UINT flags, CPoint point) {
    CListBoxEx::OnMouseMove(flags, point);
    if (point.x == m_nLastX && point.y == m_nLastY)
        return;
    m_nLastX = point.x;
    m_nLastY = point.y;
    DoMouseMove(point);
}

void CVNListBox::OnMouseLeave() {
    CListBoxEx::OnMouseLeave();
    m_nLastX = m_nLastY = -1;
    m_bTipShown = FALSE;
    m_DataTip.Hide();
}

BOOL CVNListBox::Sort(int column) {
    if (GetRowSource() != nullptr)
        return CListBoxEx::Sort(column); // its rows have no tooltips
    const std::unique_ptr<SSortItem[]> items(SortForOrder(column));
    if (items == nullptr)
        return FALSE;
    std::vector<int> order(static_cast<std::size_t>(GetUnfilteredCount()));
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = items[i].m_nIndex;
    ReorderMappedRows(m_RowMap, order);
    return TRUE;
}

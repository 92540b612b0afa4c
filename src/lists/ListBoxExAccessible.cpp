// CListBoxEx: what screen readers see.
#include "messages/ResourceIds.h"
#include "src/lists/ListColumns.h"
#include "src/lists/ListFinder.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>

using namespace vnbytstr::detail;

int CListBoxEx::Accessible::GetAccessibleRowCount() const { return m_list.GetCount(); }

int CListBoxEx::Accessible::GetAccessibleColumnCount() const {
    return std::max(1, m_list.m_nColumns);
}

CString CListBoxEx::Accessible::GetAccessibleCellText(int row, int column) const {
    CString text;
    m_list.GetStringItem(row, column, text);
    return text;
}

CString CListBoxEx::Accessible::GetAccessibleHeading(int column) const {
    return m_list.GetColumnName(column);
}

CString CListBoxEx::Accessible::GetAccessibleCellDescription(int row, int column) const {
    std::string buffer;
    CString text;
    if (m_list.m_pFinder != nullptr && m_list.IsCell(row, column) &&
        !m_list.IsColumnHidden(column) &&
        m_list.m_pFinder->IsMarked(column, m_list.m_pRows->Cell(row, column, buffer)) &&
        LoadStringA(text, IDS_FOUND_CELL, nullptr) == 0)
        return "contains the text searched for";
    return text;
}

/// The first one that is shown, as people read it.
int CListBoxEx::Accessible::GetAccessibleRowHeaderColumn() const {
    const ColumnView view = m_list.GetColumnView();
    return view.Count() > 1 ? view.ColumnOf(0) : -1;
}

CAccessibleTable::Sort CListBoxEx::Accessible::GetAccessibleSort(int column) const {
    if (column != m_list.m_nSortColumn || m_list.m_nSortState == kNotSorted)
        return Sort::None;
    return m_list.m_nSortState == kSortedAscending ? Sort::Ascending : Sort::Descending;
}

CString CListBoxEx::Accessible::GetAccessibleSortText(Sort sort) const {
    CString text;
    const UINT id = sort == Sort::Ascending ? IDS_SORTED_ASCENDING : IDS_SORTED_DESCENDING;
    if (sort == Sort::None || LoadStringA(text, id, nullptr) > 0)
        return text;
    return CAccessibleTable::GetAccessibleSortText(sort);
}

bool CListBoxEx::Accessible::IsAccessibleRowSelected(int row) const {
    return m_list.IsRow(row) && m_list.SendMessage(LB_GETSEL, static_cast<WPARAM>(row)) > 0;
}

bool CListBoxEx::Accessible::SelectAccessibleRow(int row, bool on) {
    if (!m_list.IsRow(row) || !m_list.IsWindowEnabled())
        return false;
    const Lifeline life(&m_list);
    if (!m_list.CellEnter(TRUE) || !life.Holds())
        return false;
    if (m_list.HasManySelected())
        m_list.SendMessage(LB_SETSEL, on, row);
    else
        m_list.SendMessage(LB_SETCURSEL, static_cast<WPARAM>(on ? row : -1));
    m_list.NotifySelChange();
    return true;
}

int CListBoxEx::Accessible::GetAccessibleFocusRow() const {
    if (m_list.m_pActiveEditor != nullptr)
        return m_list.m_nCurRow;
    return static_cast<int>(m_list.SendMessage(LB_GETCARETINDEX));
}

int CListBoxEx::Accessible::GetAccessibleFocusColumn() const {
    return m_list.m_pActiveEditor != nullptr ? m_list.m_nCurColumn : m_list.GetFoundColumn();
}

CRect CListBoxEx::Accessible::GetAccessibleCellRect(int row, int column) const {
    CRect rect;
    if (!m_list.IsRow(row) ||
        m_list.SendMessage(LB_GETITEMRECT, static_cast<WPARAM>(row),
                           reinterpret_cast<LPARAM>(static_cast<LPRECT>(rect))) == LB_ERR)
        return {};
    CRect client;
    m_list.GetClientRect(client);
    if (m_list.m_nColumns > 0) {
        const PixelSpan span = m_list.GetColumnView().VisiblePlace(column);
        rect.left = span.left;
        rect.right = span.right;
    }
    CRect visible;
    visible.IntersectRect(rect, client);
    return visible;
}

CRect CListBoxEx::Accessible::GetAccessibleHeadingRect(int column) const {
    CListBoxExHeadings* headings = m_list.m_pHeadings;
    CRect rect;
    if (headings == nullptr || headings->GetSafeHwnd() == nullptr ||
        !headings->GetRect(column, &rect))
        return {};
    headings->MapWindowPoints(&m_list, rect);
    return rect;
}

bool CListBoxEx::Accessible::IsAccessibleCellEditable(int row, int column) const {
    return m_list.m_bEditing && !m_list.m_bReadOnly &&
           m_list.EffectiveEditorType(row, column) != kEditorNone;
}

// CListBoxEx: the filter.
#include "src/lists/ListFinder.h"
#include "src/lists/ListRows.h"

#include "vnbytstr/ListFilterRow.h"

#include <algorithm>

using namespace vnbytstr::detail;

CRowFilter& CListBoxEx::Filter() {
    if (m_pFilter == nullptr)
        m_pFilter = std::make_unique<CRowFilter>();
    return *m_pFilter;
}

BOOL CListBoxEx::SetColumnFilter(int column, LPCTSTR condition) {
    if (!IsColumn(column) && !(m_nColumns == 0 && column == 0))
        return FALSE;
    CRowFilter filter = Filter();
    filter.SetNullText(ViewOf(m_strNull));
    const bool isNumber =
        m_nColumns > 0 && m_pColumns[static_cast<std::size_t>(column)].m_nSortType != 0;
    filter.SetCondition(column, condition != nullptr ? condition : "", isNumber);
    return UseFilter(filter);
}

BOOL CListBoxEx::ClearFilter() { return UseFilter(CRowFilter()); }

/// An open editor is stored first: its row may vanish.
BOOL CListBoxEx::UseFilter(const CRowFilter& filter) {
    const Lifeline life(this);
    if (m_pActiveEditor != nullptr && (!CellEnter(TRUE) || !life.Holds()))
        return FALSE;
    const bool isSame = filter == Filter();
    Filter() = filter;
    if (!isSame && GetSafeHwnd() != nullptr)
        ApplyFilter();
    if (life.Holds() && m_pFilterRow != nullptr)
        m_pFilterRow->UpdateFields();
    return TRUE;
}

void CListBoxEx::ApplyFilter() {
    m_bFilterStale = FALSE;
    const Lifeline life(this);
    CellCancel();
    if (!life.Holds())
        return;
    if (m_pFinder != nullptr)
        m_pFinder->RowsReplaced();
    SendMessage(WM_SETREDRAW, FALSE);
    m_pRows->ApplyFilter(Filter());
    if (!life.Holds())
        return;
    SendMessage(WM_SETREDRAW, TRUE);
    FilterChanged();
    CheckInvariants();
}

void CListBoxEx::RefreshFilter() {
    if (GetSafeHwnd() == nullptr || !IsFiltered())
        return;
    const Lifeline life(this);
    if (m_pActiveEditor != nullptr && (!CellEnter(TRUE) || !life.Holds()))
        return;
    m_pRows->LiftFilter();
    if (CListRowSource* const source = GetRowSource(); source != nullptr && IsFiltering())
        static_cast<SourceRows&>(*m_pRows).SourceRowsMoved([](int row) { return row; });
    else
        ApplyFilter();
}

/// Rows have been added while a filter is set: it is applied to them when the program is done.
void CListBoxEx::RowsAddedToFilter() {
    if (m_bFilterStale || !IsFiltered() || GetRowSource() != nullptr)
        return;
    m_bFilterStale = TRUE;
    PostMessage(kApplyFilter);
}

/// The rows that are shown have changed.
void CListBoxEx::FilterChanged() {
    if (m_pFinder != nullptr)
        m_pFinder->RowsChanged();
    NotifyAccessibility(m_hWnd, AccessibleChange::Rows);
    if (CWnd* parent = GetParent(); parent != nullptr)
        parent->PostMessage(VNM_FILTERCHANGED);
}

CString CListBoxEx::GetColumnFilter(int column) const {
    return m_pFilter != nullptr ? StringOf(m_pFilter->GetCondition(column)) : CString();
}

BOOL CListBoxEx::IsColumnFilterValid(int column) const {
    return m_pFilter == nullptr || m_pFilter->IsValid(column);
}

BOOL CListBoxEx::IsFiltered() const { return m_pFilter != nullptr && !m_pFilter->IsEmpty(); }

BOOL CListBoxEx::IsFilterDone() const { return m_pRows->IsFilterDone(); }

int CListBoxEx::GetUnfilteredCount() const {
    return GetSafeHwnd() != nullptr ? m_pRows->UnfilteredCount() : 0;
}

int CListBoxEx::GetUnfilteredRow(int row) const { return m_pRows->UnfilteredRow(row); }

int CListBoxEx::GetFilteredRow(int row) const { return m_pRows->FilteredRow(row); }

/// Whether this list leaves out rows of its source; a source may do so itself.
bool CListBoxEx::IsFiltering() const {
    return GetRowSource() != nullptr && static_cast<SourceRows&>(*m_pRows).IsFiltering();
}

void CListBoxEx::PlaceFilterFields() {
    if (m_pFilterRow != nullptr)
        m_pFilterRow->PlaceFields();
}

/// The list gives its upper part to the fields, so that what is above it stays where it is.
BOOL CListBoxEx::EnableFilterRow(BOOL on) {
    const bool isOn = m_pFilterRow != nullptr && m_pFilterRow->GetSafeHwnd() != nullptr;
    CWnd* parent = GetSafeHwnd() != nullptr ? GetParent() : nullptr;
    if ((on != FALSE) == isOn)
        return TRUE;
    if (parent == nullptr)
        return FALSE;
    CRect rect;
    GetWindowRect(rect);
    parent->ScreenToClient(rect);
    const Lifeline life(this);
    if (!on) {
        if (!ClearFilter() || !life.Holds())
            return FALSE;
        rect.top -= m_pFilterRow->GetDesiredHeight();
        m_pFilterRow.reset();
    } else {
        m_pFilterRow = std::make_unique<CListFilterRow>();
        if (!m_pFilterRow->Create(this, parent)) {
            m_pFilterRow.reset();
            return FALSE;
        }
        rect.top += m_pFilterRow->GetDesiredHeight();
        rect.bottom = std::max(rect.bottom, rect.top);
    }
    SetWindowPos(nullptr, rect.left, rect.top, rect.Width(), rect.Height(),
                 SWP_NOZORDER | SWP_NOACTIVATE);
    if (life.Holds())
        PositionHeadings();
    return TRUE;
}

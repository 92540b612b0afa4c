// CListBoxEx: sorting.
#include "src/lists/ListRows.h"
#include "src/lists/ListSort.h"

#include "src/charset/SortOrder.h"
#include "vnbytstr/VNListBox.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <memory>
#include <typeinfo>
#include <utility>
#include <vector>

using namespace vnbytstr::detail;

SSortItem* CListBoxEx::SortInternal(int column) {
    if (GetSafeHwnd() == nullptr || GetRowSource() != nullptr || (GetStyle() & LBS_SORT) != 0 ||
        !(IsColumn(column) || (m_nColumns == 0 && column == 0)))
        return nullptr;
    if (m_pActiveEditor != nullptr) { // its row would move
        const Lifeline life(this);
        if (!CellEnter(TRUE) || !life.Holds())
            return nullptr;
        // The parent may have changed the columns when it was asked.
        if (GetRowSource() != nullptr || !(IsColumn(column) || (m_nColumns == 0 && column == 0)))
            return nullptr;
    }
    m_pRows->LiftFilter();
    const bool isPlain = m_nColumns == 0;
    const int count = GetCount();
    const auto rows = static_cast<std::size_t>(count);
    const bool descending = column == m_nSortColumn && m_nSortState == kSortedAscending;

    std::vector<DWORD> order;
    auto items = std::make_unique<SSortItem[]>(rows);
    {
        std::string buffer; // stays empty: the texts are those of the list box
        std::vector<std::string_view> values(rows);
        for (std::size_t row = 0; row < rows; ++row)
            values[row] = m_pRows->Cell(static_cast<int>(row), column, buffer);
        const bool isText =
            isPlain || m_pColumns[static_cast<std::size_t>(column)].m_nSortType == 0;
        order = isText
                    ? vnbytstr::SortOrder(values, descending ? vnbytstr::SortDirection::Descending
                                                             : vnbytstr::SortDirection::Ascending)
                    : IntegerOrder(values, descending);
        const std::vector<bool> selected = SelectedRows();
        for (std::size_t i = 0; i < rows; ++i) {
            const std::uint32_t from = order[i];
            if (m_bSortValues) // copying a million strings takes longer than sorting them
                items[i].m_strValue = StringOf(values[from]);
            items[i].m_nSelected = selected[from];
            items[i].m_nIndex = static_cast<int>(from);
        }
    }
    m_nSortState = descending ? kSortedDescending : kSortedAscending;
    m_nSortColumn = column;
    ApplyOrder(order, items.get());
    if (IsFiltered())
        ApplyFilter();
    CheckInvariants();
    return items.release();
}

/// Reorders the rows. Then the list is scrolled to its first row, or to its selection.
void CListBoxEx::ApplyOrder(const std::vector<DWORD>& order, const SSortItem* items) {
    SendMessage(WM_SETREDRAW, FALSE);
    ListBoxReorder(m_hWnd, order);
    ReorderRowData(order.data(), static_cast<int>(order.size()));
    SendMessage(LB_SETTOPINDEX, 0);
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (items[i].m_nSelected <= 0)
            continue;
        if (HasManySelected())
            SendMessage(LB_SETSEL, TRUE, static_cast<LPARAM>(i));
        else
            SendMessage(LB_SETCURSEL, i);
        break;
    }
    SendMessage(WM_SETREDRAW, TRUE);
    RedrawAll();
    NotifyAccessibility(m_hWnd, AccessibleChange::Sort, -1, m_nSortColumn);
}

std::vector<bool> CListBoxEx::SelectedRows() const {
    std::vector<bool> selected(static_cast<std::size_t>(GetCount()));
    std::vector<int> rows(1);
    if (HasManySelected()) {
        rows.resize(static_cast<std::size_t>(std::max<LRESULT>(0, SendMessage(LB_GETSELCOUNT))));
        if (!rows.empty())
            SendMessage(LB_GETSELITEMS, rows.size(), reinterpret_cast<LPARAM>(rows.data()));
    } else {
        rows.front() = static_cast<int>(SendMessage(LB_GETCURSEL));
    }
    for (const int row : rows)
        if (row >= 0 && static_cast<std::size_t>(row) < selected.size())
            selected[static_cast<std::size_t>(row)] = true;
    return selected;
}

SSortItem* CListBoxEx::SortForOrder(int column) {
    const Lifeline life(this);
    // A class that has an override is not one of these two.
    const bool isOwn = typeid(*this) == typeid(CListBoxEx) || typeid(*this) == typeid(CVNListBox);
    const BOOL before = std::exchange(m_bSortValues, m_bSortValuesWanted && !isOwn);
    SSortItem* items = SortInternal(column);
    if (life.Exists())
        m_bSortValues = before;
    return items;
}

BOOL CListBoxEx::Sort(int column) { return m_pRows->Sort(column); }

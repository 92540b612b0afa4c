// CListBoxEx: which columns are shown, in which order, and how they are aligned.
#include "src/lists/ListBoxExInternal.h"
#include "src/lists/ListColumns.h"

#include "messages/ResourceIds.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/window/Menu.h"

#include <algorithm>
#include <numeric>

using namespace vnbytstr::detail;

namespace {

/// A menu lists no more columns than fit on a screen; with more of them it only hides one.
constexpr int kMaxListed = 40;
constexpr UINT kHideCommand = 1;
constexpr UINT kShowAllCommand = 2;
constexpr UINT kFirstColumnCommand = 10;

CString TextOr(UINT id, LPCTSTR english) {
    CString text;
    return LoadStringA(text, id, nullptr) > 0 ? text : CString(english);
}

} // namespace

ColumnView CListBoxEx::GetColumnView() const {
    return {GetColumns(), m_shown, m_bSideScroll ? m_nFrozen : 0, GetSideShift()};
}

/// -1 without columns.
int CListBoxEx::LastColumn() const { return m_shown.empty() ? m_nColumns - 1 : m_shown.back(); }

// --- order, hidden and frozen columns ------------------------------------------------------------

std::vector<int> CListBoxEx::GetColumnOrder() const {
    if (!m_order.empty())
        return m_order;
    std::vector<int> order(static_cast<std::size_t>(m_nColumns));
    std::iota(order.begin(), order.end(), 0);
    return order;
}

BOOL CListBoxEx::SetColumnOrder(std::span<const int> order) {
    std::vector<int> sorted(order.begin(), order.end());
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t i = 0; i < sorted.size(); ++i)
        if (sorted[i] != static_cast<int>(i))
            return FALSE;
    if (std::ssize(order) != m_nColumns)
        return FALSE;
    const int last = LastColumn();
    m_order.assign(order.begin(), order.end());
    ColumnsRearranged(last);
    return TRUE;
}

BOOL CListBoxEx::HideColumn(int column, BOOL hide) {
    if (!IsColumn(column))
        return FALSE;
    bool& isHidden = m_pColumns[static_cast<std::size_t>(column)].m_bHidden;
    if (isHidden == (hide != FALSE))
        return TRUE;
    if (hide && GetColumnView().Count() == 1)
        return FALSE;
    SetWidths(); // while it counts
    const int last = LastColumn();
    isHidden = hide != FALSE;
    ColumnsRearranged(last);
    return TRUE;
}

BOOL CListBoxEx::IsColumnHidden(int column) const {
    return IsColumn(column) && m_pColumns[static_cast<std::size_t>(column)].m_bHidden;
}

void CListBoxEx::SetFrozenColumns(int count) {
    m_nFrozen = std::max(count, 0);
    SideShiftChanged();
    RedrawAll();
}

/// The order has changed, or which columns are hidden. The column that was the last gets the width
/// back that it had before it grew.
void CListBoxEx::ColumnsRearranged(int lastBefore) {
    const std::vector<int> order = GetColumnOrder();
    m_shown.clear();
    for (const int column : order)
        if (!m_pColumns[static_cast<std::size_t>(column)].m_bHidden)
            m_shown.push_back(column);
    if (std::is_sorted(m_shown.begin(), m_shown.end()) && std::ssize(m_shown) == m_nColumns)
        m_shown.clear(); // plain
    const int last = LastColumn();
    if (last != lastBefore && IsColumn(lastBefore)) {
        if (m_nLastOwnWidth > 0)
            m_pColumns[static_cast<std::size_t>(lastBefore)].m_nWidth = m_nLastOwnWidth;
        m_nLastOwnWidth = GetColumnWidth(last);
    }
    if (IsColumnHidden(m_nCurColumn))
        CellCancel();
    if (GetSafeHwnd() == nullptr)
        return;
    UpdateExtent();
    if (m_bWidthsComputed && m_pHeadings != nullptr)
        m_pHeadings->FixLastColWidth();
    FollowEditedRow();
    RedrawAll();
    NotifyAccessibility(m_hWnd, AccessibleChange::Columns);
    CheckInvariants();
}

void CListBoxEx::DropColumn(int column, int position) {
    const ColumnView view = GetColumnView();
    const int from = view.PositionOf(column);
    if (from < 0 || position == from || position == from + 1)
        return; // it stays where it is
    std::vector<int> order = GetColumnOrder();
    std::erase(order, column);
    const auto before = position < view.Count()
                            ? std::find(order.begin(), order.end(), view.ColumnOf(position))
                            : std::find(order.begin(), order.end(), view.Last()) + 1;
    order.insert(before, column);
    const Lifeline life(this);
    if (m_pActiveEditor != nullptr && (!CellEnter(TRUE) || !life.Holds()))
        return;
    SetColumnOrder(order);
    ColumnsChangedByUser();
}

void CListBoxEx::ColumnsChangedByUser() {
    if (CWnd* parent = GetSafeHwnd() != nullptr ? GetParent() : nullptr; parent != nullptr)
        parent->PostMessage(VNM_COLUMNSCHANGED);
}

/// The menu of the header control; `column` is the one under the pointer, or -1.
void CListBoxEx::ChooseColumns(int column, CPoint screen) {
    const int shown = GetColumnView().Count();
    CMenu menu;
    if (!menu.CreatePopupMenu())
        return;
    menu.AppendMenu(MF_STRING | (IsColumn(column) && shown > 1 ? 0 : MF_GRAYED), kHideCommand,
                    TextOr(IDS_COLUMN_HIDE, "&Hide this column"));
    menu.AppendMenu(MF_STRING | (shown < m_nColumns ? 0 : MF_GRAYED), kShowAllCommand,
                    TextOr(IDS_COLUMNS_SHOW_ALL, "Show &all columns"));
    if (m_nColumns <= kMaxListed) {
        menu.AppendMenu(MF_SEPARATOR);
        for (const int listed : GetColumnOrder()) {
            CString name = GetColumnName(listed);
            name.Replace("&", "&&");
            const UINT state = IsColumnHidden(listed) ? 0 : MF_CHECKED;
            menu.AppendMenu(MF_STRING | state, kFirstColumnCommand + static_cast<UINT>(listed),
                            name);
        }
    }
    const Lifeline life(this);
    const auto chosen = static_cast<UINT>(
        menu.TrackPopupMenu(TPM_LEFTALIGN | TPM_RETURNCMD, screen.x, screen.y, this));
    if (chosen == 0 || !life.Holds() || !CellEnter(TRUE) || !life.Holds())
        return;
    if (chosen == kHideCommand) {
        HideColumn(column);
    } else if (chosen == kShowAllCommand) {
        for (int each = 0; each < m_nColumns; ++each)
            HideColumn(each, FALSE);
    } else {
        const int each = static_cast<int>(chosen - kFirstColumnCommand);
        HideColumn(each, !IsColumnHidden(each));
    }
    if (life.Holds())
        ColumnsChangedByUser();
}

// --- alignment -----------------------------------------------------------------------------------

void CListBoxEx::SetColumnAlignment(int column, int alignment) {
    const bool isKnown = alignment >= kAlignDefault && alignment <= kAlignByType;
    for (int i = 0; i < m_nColumns; ++i)
        if (i == column || column == -1)
            m_pColumns[static_cast<std::size_t>(i)].m_nAlignment =
                isKnown ? alignment : int{kAlignDefault};
    RedrawAll();
}

int CListBoxEx::GetColumnAlignment(int column) const {
    return IsColumn(column) ? m_pColumns[static_cast<std::size_t>(column)].m_nAlignment
                            : int{kAlignDefault};
}

bool CListBoxEx::IsRightAligned(int column) const {
    if (!IsColumn(column))
        return m_bRightAligned != FALSE;
    const SListColumn& record = m_pColumns[static_cast<std::size_t>(column)];
    switch (record.m_nAlignment) {
    case kAlignLeft:
        return false;
    case kAlignRight:
        return true;
    case kAlignByType:
        return record.m_nSortType != 0;
    default:
        return m_bRightAligned != FALSE;
    }
}

UINT CListBoxEx::HeadingTextFlags(int column) const {
    if (GetColumnAlignment(column) == kAlignDefault)
        return DT_CENTER;
    return IsRightAligned(column) ? DT_RIGHT : DT_LEFT;
}

// --- tips ----------------------------------------------------------------------------------------

void CListBoxEx::SetColumnTip(int column, LPCTSTR text) {
    if (IsColumn(column))
        m_pColumns[static_cast<std::size_t>(column)].m_strTip = text;
}

void CListBoxEx::SetColumnTypeText(int column, LPCTSTR text) {
    if (IsColumn(column))
        m_pColumns[static_cast<std::size_t>(column)].m_strType = text;
}

CString CListBoxEx::GetColumnTip(int column) const {
    if (!IsColumn(column))
        return {};
    const SListColumn& record = m_pColumns[static_cast<std::size_t>(column)];
    if (!record.m_strTip.IsEmpty())
        return record.m_strTip;
    return record.m_strType.IsEmpty() ? record.m_strHeading
                                      : record.m_strHeading + "\n" + record.m_strType;
}

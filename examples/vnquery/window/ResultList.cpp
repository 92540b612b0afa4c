#include "vnquery/window/ResultList.h"

#include "vnquery/messages/Messages.h"

#include "vnbytstr/window/Gdi.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <climits>

namespace vnquery {

namespace {

constexpr int kMinWidth = 48;
constexpr int kArrow = 20;     ///< room for the sort arrow
constexpr int kMaxWidth = 320; ///< of a column that the user has not sized
constexpr int kNumbers = 0;    ///< the list's column with the rows' numbers

} // namespace

BEGIN_MESSAGE_MAP(ResultList, CListBoxEx)
ON_WM_LBUTTONDOWN()
ON_WM_LBUTTONDBLCLK()
ON_WM_RBUTTONDOWN()
END_MESSAGE_MAP()

BOOL ResultList::CreateList(CWnd* parent, UINT id, UINT headingsId) {
    const DWORD style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | LBS_NOTIFY |
                        LBS_OWNERDRAWFIXED | LBS_EXTENDEDSEL | LBS_NOINTEGRALHEIGHT;
    if (!Create("LISTBOX", Text(IDS_VQ_W_RESULT).c_str(), style, CRect(0, 0, 0, 0), parent, id) ||
        !CreateHeadingsControl(headingsId) || !SetRowSource(&m_rows))
        return FALSE;
    SetSeparator(kCellSeparator);
    EnableEditing();
    EnableSort();
    EnableSideScroll();
    EnableZebra();
    EnableGreyNulls();
    SetPrintInput(TRUE);
    GetHeadings()->ShowSortArrow();
    GetHeadings()->EnableKeyboard();
    GetHeadings()->EnableMove();
    GetHeadings()->EnableTips();
    return TRUE;
}

void ResultList::ShowColumns() {
    ResetContent();
    const auto count = static_cast<int>(m_document.GetResult().GetColumnCount());
    SetNumColumns(count == 0 ? 0 : count + 1);
    if (count == 0)
        return;
    const QueryLayout& layout = m_document.GetLayout();
    SetColumnName(kNumbers, "#");
    SetColumnWidth(kNumbers, kMinWidth);
    SetColumnAlignment(kNumbers, kAlignRight);
    SetColumnSpacing(kNumbers, 4);
    SetColumnType(kNumbers, 1);
    SetColumnTip(kNumbers, Text(IDS_VQ_N_ROW_NUMBER).c_str());
    std::vector<int> order = {kNumbers};
    for (int i = 1; i <= count; ++i) {
        const auto column = static_cast<std::size_t>(i - 1);
        SetColumnName(i, MakeVisible(m_document.GetHeading(column)).c_str());
        SetColumnSpacing(i, 4);
        SetColumnWidth(i, layout.widths[column]);
        order.push_back(ListColumnOf(static_cast<int>(layout.order[column])));
    }
    SetColumnOrder(order);
    for (const std::size_t column : layout.hidden)
        HideColumn(ListColumnOf(static_cast<int>(column)));
    SetFrozenColumns(1 + layout.frozen);
    for (const auto& [column, condition] : layout.filters)
        SetColumnFilter(ListColumnOf(static_cast<int>(column)), condition.c_str());
    ShowKinds();
    ShowEditors();
    m_column = std::clamp(m_column, 1, count);
    ShowSortArrow();
    if (GetHeadings()->GetSafeHwnd())
        GetHeadings()->Invalidate();
}

void ResultList::ShowKinds() {
    for (int i = 1; i < GetNumColumns(); ++i) {
        const ColumnKind kind = m_document.GetKind(static_cast<std::size_t>(i - 1));
        const bool isNumber = kind == ColumnKind::Integer || kind == ColumnKind::Decimal;
        SetColumnType(i, isNumber);
        SetColumnAlignment(i, isNumber ? kAlignRight : kAlignLeft);
    }
    const CString widest =
        std::to_string(std::max<std::size_t>(m_document.GetShownRows(), 99)).c_str();
    CClientDC dc(this);
    CFont* const font = GetFont();
    CFont* const old = font ? dc.SelectObject(font) : nullptr;
    SetColumnWidth(kNumbers, static_cast<int>(dc.GetTextExtent(widest).cx) + kArrow);
    if (old)
        dc.SelectObject(old);
}

void ResultList::FreezeUpTo(int listColumn) {
    const std::vector<int> order = GetColumnOrder();
    int count = 0;
    for (const int column : order) {
        count += IsColumnHidden(column) ? 0 : 1;
        if (column == listColumn)
            break;
    }
    SetFrozenColumns(count);
}

void ResultList::TakeFoundColumn() {
    if (GetFoundColumn() < 0)
        return;
    m_column = GetFoundColumn();
    Invalidate();
    NotifyParent();
}

void ResultList::ShowEditors() {
    for (int i = 1; i < GetNumColumns(); ++i)
        SetEditorType(i, m_document.GetReadOnlyReason(static_cast<std::size_t>(i - 1)) ==
                                 ReadOnlyReason::None
                             ? kEditorText
                             : kEditorNone);
}

void ResultList::FitNewColumns() {
    FitAllColumns(); // of all at once, since that takes no longer than of two
    for (int i = 1; i < GetNumColumns(); ++i) {
        const int width = m_document.GetLayout().widths[static_cast<std::size_t>(i - 1)];
        SetColumnWidth(i, width != 0
                              ? width
                              : std::clamp(GetOwnColumnWidth(i) + kArrow, kMinWidth, kMaxWidth));
    }
    GetHeadings()->FixLastColWidth();
    GetHeadings()->Invalidate();
    Invalidate();
}

void ResultList::StoreLayout() {
    QueryLayout& layout = m_document.GetLayout();
    const int count = GetNumColumns() - 1;
    if (count != static_cast<int>(layout.order.size()))
        return;
    layout.order.clear();
    layout.hidden.clear();
    layout.filters.clear();
    for (const int column : GetColumnOrder())
        if (column != kNumbers)
            layout.order.push_back(static_cast<std::size_t>(column - 1));
    for (int i = 1; i <= count; ++i) {
        const auto column = static_cast<std::size_t>(i - 1);
        layout.widths[column] = std::clamp(GetOwnColumnWidth(i), 0, 32767);
        if (IsColumnHidden(i))
            layout.hidden.insert(column);
        if (const CString condition = GetColumnFilter(i); !condition.IsEmpty())
            layout.filters[column] = static_cast<const char*>(condition);
    }
    layout.frozen = std::max(GetFrozenColumns() - 1, 0);
}

void ResultList::ResetColumns() {
    ClearFilter();
    m_document.GetLayout() = DefaultLayout(m_document.GetResult().GetColumnCount());
    ShowColumns();
    FitNewColumns();
    SetCurrentCell(0, 0);
}

// --- the current cell ----------------------------------------------------------------------------

int ResultList::GetCurrentRow() const {
    const auto caret = static_cast<int>(SendMessage(LB_GETCARETINDEX));
    if (caret >= 0 && SendMessage(LB_GETSEL, static_cast<WPARAM>(caret)) > 0)
        return caret;
    return GetFirstSel();
}

void ResultList::SetCurrentCell(int row, int column) {
    m_column = std::clamp(ListColumnOf(column), 1, std::max(GetNumColumns() - 1, 1));
    ShowColumn(m_column);
    if (row >= 0 && row < GetCount()) {
        SetOnlySel(row);
        SendMessage(LB_SETCARETINDEX, static_cast<WPARAM>(row));
    }
    Invalidate();
    NotifyParent();
}

std::vector<std::size_t> ResultList::GetShownColumns() const {
    std::vector<std::size_t> shown;
    for (const int column : GetColumnOrder())
        if (column != kNumbers && !IsColumnHidden(column))
            shown.push_back(static_cast<std::size_t>(column - 1));
    return shown;
}

std::vector<int> ResultList::GetSelectedRows() const {
    const auto count = std::max<LRESULT>(SendMessage(LB_GETSELCOUNT), 0);
    std::vector<int> rows(static_cast<std::size_t>(count));
    const auto given =
        SendMessage(LB_GETSELITEMS, rows.size(), reinterpret_cast<LPARAM>(rows.data()));
    rows.resize(static_cast<std::size_t>(std::max<LRESULT>(given, 0)));
    return rows;
}

CRect ResultList::CellRect(int column, const RECT& row) const {
    CRect rect;
    if (IsColumnHidden(column) || !GetHeadings()->GetRect(column, &rect))
        return {};
    const std::vector<int> order = GetColumnOrder();
    const auto place = std::ranges::find(order, column) - order.begin();
    CRect frozen;
    if (place >= GetFrozenColumns() && GetFrozenColumns() > 0 &&
        GetHeadings()->GetRect(order[static_cast<std::size_t>(GetFrozenColumns()) - 1], &frozen))
        rect.left = std::max(rect.left, frozen.right);
    return rect.left < rect.right ? CRect(rect.left, row.top, rect.right, row.bottom) : CRect();
}

void ResultList::StepColumn(int by) {
    std::vector<int> shown;
    for (const std::size_t column : GetShownColumns())
        shown.push_back(ListColumnOf(static_cast<int>(column)));
    if (shown.empty())
        return;
    const auto here = std::clamp(std::ranges::find(shown, m_column) - shown.begin() + by,
                                 std::ptrdiff_t{0}, std::ssize(shown) - 1);
    m_column = shown[static_cast<std::size_t>(here)];
    ShowColumn(m_column);
    if (GetCurrentRow() < 0 && GetCount() > 0)
        SetCurrentCell(0, GetCurrentColumn());
    Invalidate();
    NotifyParent();
}

void ResultList::MoveColumn(int by) {
    std::vector<int> order = GetColumnOrder();
    const auto from = std::ranges::find(order, m_column) - order.begin();
    auto to = from + by;
    while (to > 0 && to < std::ssize(order) && IsColumnHidden(order[static_cast<std::size_t>(to)]))
        to += by;
    if (to <= 0 || to >= std::ssize(order)) // the numbers stay first
        return;
    std::swap(order[static_cast<std::size_t>(from)], order[static_cast<std::size_t>(to)]);
    SetColumnOrder(order);
    ShowColumn(m_column);
}

void ResultList::NotifyParent() const {
    GetParent()->SendMessage(WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(), LBN_SELCHANGE),
                             reinterpret_cast<LPARAM>(m_hWnd));
}

void ResultList::TakeColumn(CPoint point) {
    int row = -1;
    int column = -1;
    HitTest(point, row, column);
    if (column > kNumbers && column != m_column) {
        m_column = column;
        Invalidate();
        NotifyParent();
    }
}

/// A click selects a cell, also in the selected row; only a double click opens it.
void ResultList::OnLButtonDown(UINT flags, CPoint point) {
    TakeColumn(point);
    EnableEditing(FALSE);
    CListBoxEx::OnLButtonDown(flags, point);
    if (m_hWnd != nullptr)
        EnableEditing();
}

void ResultList::OnLButtonDblClk(UINT flags, CPoint point) {
    TakeColumn(point);
    int row = -1;
    int column = -1;
    HitTest(point, row, column);
    if (row >= 0 && column >= 0 && GetEditorType(column) == kEditorNone)
        GetParent()->SendMessage(kWmShowValue);
    else
        CListBoxEx::OnLButtonDblClk(flags, point);
}

/// A row that is not selected is selected alone; a menu for several selected rows leaves them.
void ResultList::OnRButtonDown(UINT flags, CPoint point) {
    TakeColumn(point);
    int row = -1;
    int column = -1;
    HitTest(point, row, column);
    if (row >= 0 && SendMessage(LB_GETSEL, static_cast<WPARAM>(row)) <= 0)
        SetCurrentCell(row, GetCurrentColumn());
    else
        CWnd::OnRButtonDown(flags, point);
}

BOOL ResultList::PreTranslateMessage(MSG* message) {
    if (message->message != WM_KEYDOWN || message->hwnd != m_hWnd || GetActiveEditor())
        return CListBoxEx::PreTranslateMessage(message);
    switch (message->wParam) {
    case VK_LEFT:
    case VK_RIGHT: {
        // In a mirrored window the first column is on the right.
        const bool isMirrored = (GetExStyle() & WS_EX_LAYOUTRTL) != 0;
        StepColumn((message->wParam == VK_RIGHT) != isMirrored ? 1 : -1);
        return TRUE;
    }
    case VK_HOME:
    case VK_END:
        if (GetKeyState(VK_SHIFT) < 0) // selects rows
            return CListBoxEx::PreTranslateMessage(message);
        StepColumn(message->wParam == VK_END ? INT_MAX : -INT_MAX);
        if (GetKeyState(VK_CONTROL) < 0)
            SetCurrentCell(message->wParam == VK_END ? GetCount() - 1 : 0, GetCurrentColumn());
        return TRUE;
    case VK_F2: // is a command of the window, which says why a cell cannot be edited
        return TRUE;
    case 'A':
        if (GetKeyState(VK_CONTROL) >= 0)
            return CListBoxEx::PreTranslateMessage(message);
        SendMessage(LB_SETSEL, TRUE, -1); // all rows
        NotifyParent();
        return TRUE;
    case VK_RETURN:
        GetParent()->SendMessage(kWmShowValue);
        return TRUE;
    default:
        return CListBoxEx::PreTranslateMessage(message);
    }
}

void ResultList::DrawItem(LPDRAWITEMSTRUCT item) {
    CListBoxEx::DrawItem(item);
    const int row = static_cast<int>(item->itemID);
    if (item->itemID >= static_cast<UINT>(GetCount()) || GetNumColumns() == 0)
        return;
    CDC* const dc = CDC::FromHandle(item->hDC);
    const bool isSelected = (item->itemState & ODS_SELECTED) != 0;
    const COLORREF color = GetSysColor(isSelected ? COLOR_HIGHLIGHTTEXT : COLOR_HIGHLIGHT);
    const std::size_t shownRow = ShownRowOf(row);
    for (int i = 1; i < GetNumColumns() && !m_document.GetEdits().IsEmpty(); ++i) {
        CRect mark = CellRect(i, item->rcItem);
        if (mark.IsRectEmpty() || !m_document.IsChanged(shownRow, static_cast<std::size_t>(i - 1)))
            continue;
        mark.right = std::min(mark.right, mark.left + 3);
        dc->FillSolidRect(mark, color);
    }
    // Else the digits of a number would seem to go on in a cell that is cut off at the left.
    const std::vector<int> order = GetColumnOrder();
    const CRect frozen = CellRect(
        order[static_cast<std::size_t>(std::max(GetFrozenColumns(), 1)) - 1], item->rcItem);
    dc->FillSolidRect(CRect(frozen.right - 1, frozen.top, frozen.right, frozen.bottom),
                      GetSysColor(COLOR_BTNSHADOW));
    if (m_document.IsDeleted(shownRow)) {
        const int middle = static_cast<int>(item->rcItem.top + item->rcItem.bottom) / 2;
        dc->FillSolidRect(CRect(item->rcItem.left, middle, item->rcItem.right, middle + 1), color);
    }
    if (row == GetCurrentRow() && isSelected && !GetActiveEditor()) {
        CBrush brush(GetSysColor(COLOR_HIGHLIGHTTEXT));
        CRect cell = CellRect(m_column, item->rcItem);
        cell.DeflateRect(1, 1);
        dc->FrameRect(cell, &brush);
    }
}

// --- sorting -------------------------------------------------------------------------------------

void ResultList::ShowSortArrow() {
    const QueryLayout& layout = m_document.GetLayout();
    if (layout.sort == QueryLayout::Sort::None || m_document.GetShownRows() == 0)
        return;
    SourceSorted(ListColumnOf(static_cast<int>(layout.sortColumn)),
                 layout.sort == QueryLayout::Sort::Descending ? kSortedDescending
                                                              : kSortedAscending);
    m_document.ForgetOldOrder();
}

void ResultList::SortEnded() {
    if (m_document.EndSort())
        ShowSortArrow();
}

void ResultList::SortBy(int column, bool descending) {
    if (CellEnter(TRUE) &&
        m_rows.SortRows(ListColumnOf(column), !descending) == ESortAnswer::Sorted)
        ShowSortArrow();
}

void ResultList::RestoreSort() {
    const QueryLayout& layout = m_document.GetLayout();
    if (layout.sort != QueryLayout::Sort::None)
        SortBy(static_cast<int>(layout.sortColumn), layout.sort == QueryLayout::Sort::Descending);
}

} // namespace vnquery

#include "vnquery/window/ResultList.h"

#include "vnbytstr/window/Gdi.h"
#include "vnbytstr/window/ListBox.h"
#include "vnquery/window/Commands.h"
#include "vnquery/window/WindowText.h"

#include <algorithm>
#include <memory>

namespace vnquery {

namespace {

constexpr int kMinWidth = 48;
constexpr int kArrow = 20;     ///< room for the sort arrow
constexpr int kMaxWidth = 320; ///< of a column that the user has not sized

} // namespace

BEGIN_MESSAGE_MAP(ResultList, CListBoxEx)
ON_WM_LBUTTONDOWN()
ON_WM_LBUTTONDBLCLK()
ON_WM_RBUTTONDOWN()
END_MESSAGE_MAP()

BOOL ResultList::CreateList(CWnd* parent, UINT id, UINT headingsId) {
    const DWORD style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | WS_BORDER |
                        LBS_NOTIFY | LBS_OWNERDRAWFIXED | LBS_EXTENDEDSEL | LBS_NOINTEGRALHEIGHT;
    if (!Create("LISTBOX", Text(IDS_VQ_W_RESULT).c_str(), style, CRect(0, 0, 0, 0), parent, id) ||
        !CreateHeadingsControl(headingsId) || !SetRowSource(&m_rows))
        return FALSE;
    SetSeparator(kCellSeparator);
    EnableEditing();
    EnableSort();
    EnableCopy();
    EnableSideScroll();
    SetPrintInput(TRUE);
    GetHeadings()->ShowSortArrow();
    GetHeadings()->EnableKeyboard();
    return TRUE;
}

void ResultList::ShowColumns() {
    ResetContent();
    const auto count = static_cast<int>(m_document.GetShownColumns());
    SetNumColumns(count);
    for (int i = 0; i < count; ++i) {
        const std::size_t column = m_document.GetLayout().order[static_cast<std::size_t>(i)];
        SetColumnName(i, MakeVisible(m_document.GetHeading(column)).c_str());
        const ColumnKind kind = m_document.GetKind(column);
        SetColumnType(i, kind == ColumnKind::Integer || kind == ColumnKind::Decimal);
        SetColumnSpacing(i, 4);
        const int width = m_document.GetLayout().widths[column];
        SetColumnWidth(i, width);
    }
    ShowEditors();
    m_column = std::clamp(m_column, 0, std::max(count - 1, 0));
    ShowSortArrow();
    if (GetHeadings()->GetSafeHwnd())
        GetHeadings()->Invalidate();
}

void ResultList::ShowEditors() {
    for (int i = 0; i < GetNumColumns() && i < static_cast<int>(m_document.GetShownColumns()); ++i)
        SetEditorType(i, m_document.GetReadOnlyReason(
                             m_document.GetLayout().order[static_cast<std::size_t>(i)]) ==
                                 ReadOnlyReason::None
                             ? kEditorText
                             : kEditorNone);
}

void ResultList::FitNewColumns() {
    FitAllColumns(); // of all at once, since that takes no longer than of two
    for (int i = 0; i < GetNumColumns(); ++i) {
        const std::size_t column = m_document.GetLayout().order[static_cast<std::size_t>(i)];
        const int width = m_document.GetLayout().widths[column];
        SetColumnWidth(i, width != 0
                              ? width
                              : std::clamp(GetOwnColumnWidth(i) + kArrow, kMinWidth, kMaxWidth));
    }
    GetHeadings()->FixLastColWidth();
    GetHeadings()->Invalidate();
    Invalidate();
}

void ResultList::StoreWidths() {
    QueryLayout& layout = m_document.GetLayout();
    for (int i = 0; i < GetNumColumns() && i < static_cast<int>(layout.order.size()); ++i)
        layout.widths[layout.order[static_cast<std::size_t>(i)]] =
            std::clamp(GetOwnColumnWidth(i), 0, 32767);
}

// --- the current cell ----------------------------------------------------------------------------

int ResultList::GetCurrentRow() const {
    const auto caret = static_cast<int>(SendMessage(LB_GETCARETINDEX));
    if (caret >= 0 && SendMessage(LB_GETSEL, static_cast<WPARAM>(caret)) > 0)
        return caret;
    return GetFirstSel();
}

void ResultList::SetCurrentCell(int row, int column) {
    m_column = std::clamp(column, 0, std::max(GetNumColumns() - 1, 0));
    ShowColumn(m_column);
    if (row >= 0 && row < GetCount()) {
        SetOnlySel(row);
        SendMessage(LB_SETCARETINDEX, static_cast<WPARAM>(row));
    }
    Invalidate();
    NotifyParent();
}

CRect ResultList::CellRect(int column, const RECT& row) const {
    int left = static_cast<int>(row.left);
    for (int i = 0; i < column; ++i)
        left += GetColumnWidth(i);
    return {left, static_cast<int>(row.top), left + GetColumnWidth(column),
            static_cast<int>(row.bottom)};
}

void ResultList::MoveColumn(int by) {
    const int column = m_column + by;
    if (column < 0 || column >= GetNumColumns())
        return;
    m_column = column;
    ShowColumn(column);
    if (GetCurrentRow() < 0 && GetCount() > 0)
        SetCurrentCell(0, m_column);
    Invalidate();
    NotifyParent();
}

void ResultList::NotifyParent() const {
    GetParent()->SendMessage(WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(), LBN_SELCHANGE),
                             reinterpret_cast<LPARAM>(m_hWnd));
}

void ResultList::TakeColumn(CPoint point) {
    int row = -1;
    int column = -1;
    HitTest(point, row, column);
    if (column >= 0 && column != m_column) {
        m_column = column;
        Invalidate();
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
        RunCommand(kCmdZoom);
    else
        CListBoxEx::OnLButtonDblClk(flags, point);
}

void ResultList::OnRButtonDown(UINT flags, CPoint point) {
    TakeColumn(point);
    CListBoxEx::OnRButtonDown(flags, point);
}

BOOL ResultList::RunCommand(unsigned command) {
    GetTopLevelParent()->SendMessage(WM_COMMAND, command);
    return TRUE;
}

BOOL ResultList::PreTranslateMessage(MSG* message) {
    if (message->message != WM_KEYDOWN || message->hwnd != m_hWnd || GetActiveEditor())
        return CListBoxEx::PreTranslateMessage(message);
    const bool shift = GetKeyState(VK_SHIFT) < 0;
    const bool control = GetKeyState(VK_CONTROL) < 0;
    switch (message->wParam) {
    case VK_LEFT:
    case VK_RIGHT: {
        // In a mirrored window the first column is on the right.
        const bool isMirrored = (GetExStyle() & WS_EX_LAYOUTRTL) != 0;
        const bool forward = (message->wParam == VK_RIGHT) != isMirrored;
        if (control && shift)
            return RunCommand(forward ? kCmdMoveRight : kCmdMoveLeft);
        MoveColumn(forward ? 1 : -1);
        return TRUE;
    }
    case VK_F2:
        return RunCommand(shift ? kCmdZoom : kCmdEditCell);
    case VK_RETURN:
        return RunCommand(control ? kCmdRun : kCmdZoom);
    case '0':
        return control ? RunCommand(kCmdSetNull) : CListBoxEx::PreTranslateMessage(message);
    default:
        return CListBoxEx::PreTranslateMessage(message);
    }
}

int ResultList::ShowZoom(int, int column, CString&) {
    m_column = column;
    RunCommand(kCmdZoom);
    return IDCANCEL;
}

void ResultList::DrawItem(LPDRAWITEMSTRUCT item) {
    CListBoxEx::DrawItem(item);
    if (item->itemID >= m_document.GetShownRows())
        return;
    CDC* const dc = CDC::FromHandle(item->hDC);
    const bool isSelected = (item->itemState & ODS_SELECTED) != 0;
    for (int i = 0; i < GetNumColumns() && !m_document.GetEdits().IsEmpty(); ++i) {
        if (!m_document.GetEdits().Find(
                m_document.PlaceOf(item->itemID, static_cast<std::size_t>(i))))
            continue;
        CRect mark = CellRect(i, item->rcItem);
        mark.right = mark.left + 3;
        dc->FillSolidRect(mark, GetSysColor(isSelected ? COLOR_HIGHLIGHTTEXT : COLOR_HIGHLIGHT));
    }
    if (static_cast<int>(item->itemID) == GetCurrentRow() && isSelected && !GetActiveEditor()) {
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
    SourceSorted(static_cast<int>(m_document.ShownColumnOf(layout.sortColumn)),
                 layout.sort == QueryLayout::Sort::Descending ? kSortedDescending
                                                              : kSortedAscending);
    m_document.ForgetOldOrder();
}

void ResultList::SortEnded() {
    if (m_document.EndSort())
        ShowSortArrow();
}

void ResultList::RestoreSort() {
    const QueryLayout& layout = m_document.GetLayout();
    if (layout.sort == QueryLayout::Sort::None)
        return;
    const auto column = static_cast<int>(m_document.ShownColumnOf(layout.sortColumn));
    const bool isAscending = layout.sort == QueryLayout::Sort::Ascending;
    if (m_rows.SortRows(column, isAscending) == ESortAnswer::Sorted)
        ShowSortArrow();
}

} // namespace vnquery

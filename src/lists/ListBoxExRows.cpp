// CListBoxEx: rows, cells and per-row data.
#include "src/lists/ListBoxExInternal.h"
#include "src/lists/ListColumns.h"
#include "src/lists/ListFinder.h"
#include "src/lists/ListRows.h"

#include "vnbytstr/Messages.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace vnbytstr::detail;

namespace {

/// Rows are joined in this buffer, so that not every row allocates memory.
thread_local std::string rowBuffer;
constexpr std::size_t kMaxKeptBuffer = 64 * 1024;

template <class Array, class Value>
void InsertRowInto(Array& array, int row, Value fallback) {
    if (row < array.GetSize())
        array.InsertAt(row, fallback);
}

template <class Array>
void DeleteRowFrom(Array& array, int row) {
    if (row < array.GetSize())
        array.RemoveAt(row);
}

template <class Array, class Value>
void ReorderRowsOf(Array& array, const DWORD* order, int count, Value fallback) {
    if (array.IsEmpty())
        return;
    Array sorted;
    sorted.SetSize(count);
    for (int i = 0; i < count; ++i) {
        const int from = static_cast<int>(order[i]);
        sorted[i] = from < array.GetSize() ? array[from] : fallback;
    }
    array.Copy(sorted);
}

} // namespace

int CListBoxEx::GetCount() const { return m_pRows->Count(); }

CListRowSource* CListBoxEx::GetRowSource() const { return m_pRows->Source(); }

BOOL CListBoxEx::HasManySelected() const {
    return (GetStyle() & (LBS_MULTIPLESEL | LBS_EXTENDEDSEL)) != 0;
}

BOOL CListBoxEx::IsCell(int row, int column) const {
    return IsRow(row) && (IsColumn(column) || (m_nColumns == 0 && column == 0));
}

int CListBoxEx::SendJoined(UINT message, int row, LPCTSTR first, std::va_list rest) {
    if (GetSafeHwnd() == nullptr || GetRowSource() != nullptr)
        return LB_ERR;
    // Moved out of the buffer: the list's owner may add more rows when it is notified of this one.
    std::string text = std::exchange(rowBuffer, {});
    const std::string_view separator = ViewOf(m_strSeparator);
    text.assign(first != nullptr ? first : "");
    for (int column = 1; column < m_nColumns; ++column) {
        text.append(separator);
        if (const char* const value = va_arg(rest, const char*); value != nullptr)
            text.append(value);
    }
    // A row at the end moves no per-row data, so WindowProc is skipped, which matters with a
    // million rows.
    const bool isPlainAdd = message == LB_ADDSTRING && (GetStyle() & LBS_SORT) == 0;
    const auto at = static_cast<WPARAM>(static_cast<std::intptr_t>(row));
    const auto string = reinterpret_cast<LPARAM>(text.c_str());
    const bool isFiltered = isPlainAdd && IsFiltered();
    std::optional<Lifeline> life; // which a list without a filter need not pay for
    if (isFiltered)
        life.emplace(this);
    const LRESULT result =
        isPlainAdd ? DefWindowProc(message, at, string) : SendMessage(message, at, string);
    if (isFiltered && life->Holds())
        RowsAddedToFilter();
    if (text.capacity() <= kMaxKeptBuffer)
        rowBuffer = std::move(text);
    return static_cast<int>(result);
}

int CListBoxEx::AddStringItems(LPCTSTR first, ...) {
    std::va_list rest;
    va_start(rest, first);
    const int row = SendJoined(LB_ADDSTRING, 0, first, rest);
    va_end(rest);
    return row;
}

int CListBoxEx::InsertStringItems(int row, LPCTSTR first, ...) {
    std::va_list rest;
    va_start(rest, first);
    const int at = SendJoined(LB_INSERTSTRING, row, first, rest);
    va_end(rest);
    return at;
}

BOOL CListBoxEx::UpdateStringItem(int row, int column, LPCTSTR text) {
    if (!IsCell(row, column))
        return FALSE;
    const Lifeline life(this);
    if (!m_pRows->SetCell(row, column, text != nullptr ? text : ""))
        return FALSE;
    if (!life.Holds())
        return TRUE;
    if (GetRowSource() != nullptr)
        InvalidateRow(row);
    NotifyAccessibility(m_hWnd, AccessibleChange::CellText, row, column);
    return TRUE;
}

BOOL CListBoxEx::GetStringItem(int row, int column, CString& text) const {
    std::string buffer;
    text = StringOf(m_pRows->Cell(row, column, buffer));
    return IsCell(row, column);
}

BOOL CListBoxEx::GetStringItems(int row, CString* first, ...) const {
    std::vector<CString*> targets{first};
    std::va_list rest;
    va_start(rest, first);
    for (int column = 1; column < m_nColumns; ++column)
        targets.push_back(va_arg(rest, CString*));
    va_end(rest);
    m_pRows->ForEachCell(row, [&targets](int column, std::string_view value) {
        if (CString* const target = targets[static_cast<std::size_t>(column)]; target != nullptr)
            *target = StringOf(value);
    });
    return IsRow(row);
}

void CListBoxEx::ResetContent() {
    if (GetSafeHwnd() != nullptr)
        SendMessage(LB_RESETCONTENT);
}

int CListBoxEx::GetFirstSel() const {
    if (GetSafeHwnd() == nullptr)
        return -1;
    if (!HasManySelected())
        return static_cast<int>(SendMessage(LB_GETCURSEL));
    int row = -1;
    const LRESULT found = SendMessage(LB_GETSELITEMS, 1, reinterpret_cast<LPARAM>(&row));
    return found > 0 ? row : -1;
}

void CListBoxEx::SetOnlySel(int row) {
    if (!IsRow(row))
        return;
    if (!HasManySelected()) {
        SendMessage(LB_SETCURSEL, static_cast<WPARAM>(row));
        return;
    }
    int only = -1;
    if (SendMessage(LB_GETSELCOUNT) == 1 &&
        SendMessage(LB_GETSELITEMS, 1, reinterpret_cast<LPARAM>(&only)) == 1 && only == row) {
        SendMessage(LB_SETCARETINDEX, static_cast<WPARAM>(row)); // it may be out of view
        return;
    }
    SendMessage(LB_SETSEL, FALSE, -1);
    SendMessage(LB_SETSEL, TRUE, row);
}

/// The row that was found by typing.
void CListBoxEx::SelectFound(int row) {
    if (HasManySelected()) { // what is selected stays so
        SendMessage(LB_SETCARETINDEX, static_cast<WPARAM>(row));
        return;
    }
    const bool isNew = SendMessage(LB_GETCURSEL) != row;
    SendMessage(LB_SETCURSEL, static_cast<WPARAM>(row));
    if (isNew)
        NotifySelChange();
}

/// As after a click: a list box does not notify its parent when a program selects.
void CListBoxEx::NotifySelChange() {
    CWnd* const parent = (GetStyle() & LBS_NOTIFY) != 0 ? GetParent() : nullptr;
    if (parent != nullptr)
        parent->SendMessage(WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(), LBN_SELCHANGE),
                            reinterpret_cast<LPARAM>(m_hWnd));
}

void CListBoxEx::HitTest(CPoint point, int& row, int& column) {
    row = column = -1;
    if (GetSafeHwnd() == nullptr)
        return;
    SetWidths();
    row = RowAt(point.y, static_cast<int>(SendMessage(LB_GETTOPINDEX)),
                static_cast<int>(SendMessage(LB_GETITEMHEIGHT)), GetCount());
    column = GetColumnView().At(point.x);
}

// --- per-row data --------------------------------------------------------------------------------

void CListBoxEx::AddFileName(int row, LPCTSTR name) {
    if (IsRow(row))
        m_pRows->SetFileName(row, name);
}

LPCTSTR CListBoxEx::GetFileName(int row) const {
    return IsRow(row) ? m_pRows->FileName(row) : nullptr;
}

BOOL CListBoxEx::GetDragDrop(int row) const { return IsRow(row) && m_pRows->TakesFiles(row); }

void CListBoxEx::SetDragDrop(int row, BOOL on) {
    if (IsRow(row))
        m_pRows->SetTakesFiles(row, on);
}

short CListBoxEx::GetEditSubType(int row) const {
    return IsRow(row) ? m_pRows->SubType(row) : short{1};
}

void CListBoxEx::SetEditSubType(int row, short type) {
    if (IsRow(row))
        m_pRows->SetSubType(row, type);
}

short CListBoxEx::GetEditDataType(int row) const {
    return IsRow(row) ? m_pRows->DataType(row) : short{0};
}

void CListBoxEx::SetEditDataType(int row, short type) {
    if (IsRow(row))
        m_pRows->SetDataType(row, type);
}

void CListBoxEx::GetDisplayString(CString& value, int row) const {
    if (value.IsEmpty() || value == m_strNull || value == m_strDefault)
        return;
    switch (GetEditDataType(row)) {
    case kDataBlob:
    case kDataXml:
        value = GetBlobDisplayString();
        break;
    case kDataClob:
        value = GetClobDisplayString();
        break;
    case kDataDBClob:
        value = GetDBClobDisplayString();
        break;
    case kDataBlobLocator:
        value = GetBlobLocatorDisplayString();
        break;
    case kDataClobLocator:
        value = GetClobLocatorDisplayString();
        break;
    case kDataDBClobLocator:
        value = GetDBClobLocatorDisplayString();
        break;
    default:
        break;
    }
}

void CListBoxEx::RowsInserted(int row) {
    m_pRows->RowInserted(row);
    InsertRowInto(m_DragDrop, row, BYTE{0});
    InsertRowInto(m_EditSubTypes, row, BYTE{1});
    InsertRowInto(m_EditDataTypes, row, WORD{0});
    InsertRowInto(m_FileNames, row, CString());
    if (m_nCurRow >= row) {
        ++m_nCurRow;
        FollowEditedRow();
    }
    NotifyAccessibility(m_hWnd, AccessibleChange::Rows);
}

void CListBoxEx::RowDeleted(int row) {
    m_pRows->RowRemoved(row);
    DeleteRowFrom(m_DragDrop, row);
    DeleteRowFrom(m_EditSubTypes, row);
    DeleteRowFrom(m_EditDataTypes, row);
    DeleteRowFrom(m_FileNames, row);
    if (m_nCurRow == row) {
        m_nCurRow = -1;
    } else if (m_nCurRow > row) {
        --m_nCurRow;
        FollowEditedRow();
    }
    NotifyAccessibility(m_hWnd, AccessibleChange::Rows);
}

void CListBoxEx::ForgetRows() {
    m_pRows->ForgetFilter();
    m_DragDrop.RemoveAll();
    m_EditSubTypes.RemoveAll();
    m_EditDataTypes.RemoveAll();
    m_FileNames.RemoveAll();
    m_nCurRow = -1;
    m_nSortColumn = -1;
    m_nSortState = kNotSorted;
    if (m_pFinder != nullptr)
        m_pFinder->RowsReplaced();
    NotifyAccessibility(m_hWnd, AccessibleChange::Rows);
}

void CListBoxEx::ReorderRowData(const DWORD* order, int count) {
    ReorderRowsOf(m_DragDrop, order, count, BYTE{0});
    ReorderRowsOf(m_EditSubTypes, order, count, BYTE{1});
    ReorderRowsOf(m_EditDataTypes, order, count, WORD{0});
    ReorderRowsOf(m_FileNames, order, count, CString());
    if (m_nCurRow >= 0 && m_nCurRow < count)
        m_nCurRow = static_cast<int>(
            std::find(order, order + count, static_cast<DWORD>(m_nCurRow)) - order);
}

// --- rows of a source ----------------------------------------------------------------------------

/// Lists and sources know each other, so that either may end first.
void CListBoxEx::UseRowsOf(CListRowSource* source) {
    CListRowSource* const before = GetRowSource();
    if (before == nullptr && source == nullptr)
        return;
    if (before != nullptr)
        std::erase(before->m_lists, this);
    if (source != nullptr) {
        m_pRows = std::make_unique<SourceRows>(*this, *source);
        source->m_lists.push_back(this);
    } else {
        m_pRows = std::make_unique<TextRows>(*this);
    }
}

BOOL CListBoxEx::SetRowSource(CListRowSource* source) {
    if (GetSafeHwnd() == nullptr || (GetStyle() & LBS_SORT) != 0 ||
        (GetStyle() & (LBS_OWNERDRAWFIXED | LBS_OWNERDRAWVARIABLE)) == 0) {
        UseRowsOf(nullptr);
        return source == nullptr;
    }
    UseRowsOf(source); // first of all: the source of before may be ending
    const Lifeline life(this);
    CloseEditorForGood();
    if (!life.Holds() || GetRowSource() != source)
        return FALSE;
    ListBoxSetNoData(m_hWnd, source != nullptr);
    if (!life.Holds() || GetRowSource() != source)
        return FALSE;
    ForgetRows();
    ReadSourceAgain();
    if (!life.Holds() || GetRowSource() != source)
        return FALSE;
    if (m_bSideScroll)
        SideShiftChanged(); // it is scrolled to the left again
    RedrawAll();
    return TRUE;
}

/// A source may have other rows now.
void CListBoxEx::ReadSourceAgain() {
    const Lifeline life(this);
    RowsChanged();
    if (life.Holds() && GetRowSource() != nullptr && IsFiltered())
        ApplyFilter();
}

void CListBoxEx::RowsChanged() {
    CListRowSource* const source = GetRowSource();
    if (source == nullptr || GetSafeHwnd() == nullptr)
        return;
    const int count = std::max(source->GetRowCount(), 0);
    const Lifeline life(this);
    if (GetUnfilteredRow(m_nCurRow) >= count || (m_nCurRow >= count && !IsFiltering())) {
        m_nCurRow = -1;
        CloseEditorForGood();
        if (!life.Holds() || GetRowSource() != source)
            return;
    }
    if (IsFiltering())
        static_cast<SourceRows&>(*m_pRows).SourceCountChanged();
    else
        SendMessage(LB_SETCOUNT, static_cast<WPARAM>(count));
    if (!life.Holds())
        return;
    if (m_pFinder != nullptr)
        m_pFinder->RowsChanged();
    FollowEditedRow();
}

void CListBoxEx::RowChanged(int unfiltered) {
    const int row = GetRowSource() != nullptr ? GetFilteredRow(unfiltered) : -1;
    if (row < 0)
        return;
    InvalidateRow(row);
    NotifyAccessibility(m_hWnd, AccessibleChange::CellText, row);
}

void CListBoxEx::InvalidateRow(int row) {
    CRect rect;
    if (SendMessage(LB_GETITEMRECT, static_cast<WPARAM>(row),
                    reinterpret_cast<LPARAM>(static_cast<LPRECT>(rect))) != LB_ERR)
        InvalidateRect(rect);
}

/// What the list has posted to itself.
LRESULT CListBoxEx::OnOwnMessage(UINT message) {
    if (message == kRefocusEditor)
        RefocusEditor();
    else if (message == kContinueSearch)
        m_pRows->ContinueSearch();
    else if (message == kContinueFilter)
        m_pRows->ContinueFilter();
    else if (message == kApplyFilter && m_pActiveEditor == nullptr)
        ApplyFilter(); // else when the editor closes
    else if (message == kContinueFind && m_pFinder != nullptr)
        m_pFinder->Continue();
    else if (message == kRowsGone)
        RowsChanged();
    return 0;
}

/// Closes the editor before its row goes. False: the list has gone with that.
bool CListBoxEx::CloseEditorOfGoingRow(UINT message, WPARAM wParam) {
    const bool goes = message == LB_RESETCONTENT ||
                      (message == LB_DELETESTRING && static_cast<int>(wParam) == m_nCurRow);
    if (!goes || m_pActiveEditor == nullptr)
        return true;
    const Lifeline life(this);
    CloseEditorForGood();
    return life.Holds();
}

LRESULT CListBoxEx::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    // Rows are inserted and deleted by message; the per-row data follows.
    if (!CloseEditorOfGoingRow(message, wParam))
        return LB_ERR;
    if (message >= kRefocusEditor && message <= kContinueFind)
        return OnOwnMessage(message);
    if (message < LB_ADDSTRING || message > LB_RESETCONTENT)
        return CWnd::WindowProc(message, wParam, lParam);
    if (GetRowSource() != nullptr &&
        (message == LB_ADDSTRING || message == LB_INSERTSTRING || message == LB_DELETESTRING))
        return LB_ERR; // the source alone adds and deletes rows
    const Lifeline life(this);
    const LRESULT result = CWnd::WindowProc(message, wParam, lParam);
    if (!life.Holds())
        return result;
    const bool isPlaced =
        message == LB_INSERTSTRING || (message == LB_ADDSTRING && (GetStyle() & LBS_SORT) != 0);
    if (message == LB_RESETCONTENT) {
        ForgetRows();
        if (m_bSideScroll)
            SideShiftChanged(); // it is scrolled to the left again
        ReadSourceAgain();
    } else if (message == LB_DELETESTRING && result != LB_ERR) {
        RowDeleted(static_cast<int>(wParam));
    } else if (isPlaced && result >= 0) {
        RowsInserted(static_cast<int>(result));
    }
    if ((message == LB_ADDSTRING || message == LB_INSERTSTRING) && m_pFilter != nullptr)
        RowsAddedToFilter();
    return result;
}

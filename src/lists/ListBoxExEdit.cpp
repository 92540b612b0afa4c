// CListBoxEx: opening, storing and closing cell editors.
#include "src/lists/ListBoxExInternal.h"
#include "src/lists/ListColumns.h"
#include "src/lists/RowText.h"
#include "src/window/core/HandAction.h"

#include "vnbytstr/ListBoxCellEdit.h"
#include "vnbytstr/window/ComboBox.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

using namespace vnbytstr::detail;

int CListBoxEx::EffectiveEditorType(int row, int column) const {
    if (!IsColumn(column))
        return kEditorNone;
    const int type = m_pColumns[static_cast<std::size_t>(column)].m_nEditorType;
    if (type != kEditorText)
        return type;
    const short subtype = GetEditSubType(row);
    return subtype == kEditorFile || subtype == kEditorFolder ? int{subtype} : int{kEditorText};
}

BOOL CListBoxEx::IsFileCell(int row, int column) const {
    return EffectiveEditorType(row, column) == kEditorFile;
}

/// Asks the parent whether it handles the cell itself.
BOOL CListBoxEx::ParentTakesCell(int column) {
    CWnd* parent = GetParent();
    return parent != nullptr &&
           parent->SendMessage(VNM_OPENCELL, static_cast<WPARAM>(column), 0) != 0;
}

BOOL CListBoxEx::PlaceCell(int row, int column, CellPlace& place) {
    place.m_nType = EffectiveEditorType(row, column);
    if (place.m_nType == kEditorNone || !IsRow(row))
        return FALSE;
    CRect client;
    GetClientRect(client);
    const bool scrolls = (GetStyle() & WS_VSCROLL) != 0;
    const ColumnView view = GetColumnView();
    PixelSpan span = view.VisiblePlace(column);
    if (scrolls)
        span.right = std::min(span.right, std::max<int>(client.right, 0));
    if (view.PositionOf(column) < 0 || (scrolls && span.IsEmpty()))
        return FALSE;
    const int height = static_cast<int>(SendMessage(LB_GETITEMHEIGHT));
    // Of a row far out of view it does not matter how far.
    constexpr std::int64_t kFar = 1'000'000'000;
    const std::int64_t rows = std::int64_t{row} - SendMessage(LB_GETTOPINDEX);
    const int top = static_cast<int>(std::clamp(rows * height, -kFar, kFar));
    place.m_rect = CRect(span.left, top, span.right, top + height);
    if (place.m_nType <= kEditorNumber)
        place.m_rect.bottom = top + ((HIWORD(static_cast<DWORD>(GetDialogBaseUnits())) * 10) >> 3);
    else // includes the drop-down list
        place.m_rect.bottom = top + 15 * height;
    return TRUE;
}

void CListBoxEx::EditColumn(int row, int column) {
    const Lifeline life(this);
    CellCancel();
    if (!life.Holds())
        return;
    SetOnlySel(row);
    StartEditing(row, column);
}

void CListBoxEx::StartEditing(int row, int column) {
    if (GetSafeHwnd() == nullptr || !IsRow(row) || !IsColumn(column) || m_bCommitting)
        return;
    const Lifeline life(this);
    CellCancel();
    if (!life.Holds() || m_pActiveEditor != nullptr || !IsRow(row) || !IsColumn(column))
        return;
    SetWidths();
    SetOnlySel(row);
    ShowColumn(column);
    CellPlace place;
    if (!PlaceCell(row, column, place))
        return;
    const bool isFile = place.m_nType == kEditorFile;
    if (isFile || place.m_nType == kEditorText) {
        m_nCurRow = row; // is adjusted if the parent inserts or deletes rows
        if (ParentTakesCell(column) || !life.Holds() || m_pActiveEditor != nullptr)
            return;
        row = m_nCurRow;
        if (!IsRow(row) || !IsColumn(column) || !PlaceCell(row, column, place))
            return;
    }
    CString value;
    if (isFile)
        value = GetFileName(row);
    else
        GetStringItem(row, column, value);

    m_pActiveEditor = place.m_nType <= kEditorNumber
                          ? MakeEdit(column, place.m_nType, value, place.m_rect)
                          : MakeCombo(column, place.m_nType, value, place.m_rect);
    if (m_pActiveEditor == nullptr)
        return;
    m_nCurRow = row;
    m_nCurColumn = column;
    m_bRefused = FALSE;
    m_pActiveEditor->SendMessage(WM_SETFONT, static_cast<WPARAM>(SendMessage(WM_GETFONT)), TRUE);
    m_pActiveEditor->ShowWindow(SW_SHOW);
    if (auto* edit = DYNAMIC_DOWNCAST(CListBoxCellEdit, m_pActiveEditor))
        edit->ShowAll(TRUE);
    m_pActiveEditor->SetFocus(); // the parent learns that the list loses it
    if (!life.Holds())
        return;
    Invalidate();
    CheckInvariants();
}

CWnd* CListBoxEx::MakeEdit(int column, int type, LPCTSTR value, const CRect& rect) {
    auto* edit = new CListBoxCellEdit(type == kEditorFolder ? CBrowser::kFolder : CBrowser::kFile);
    const SListColumn& record = m_pColumns[static_cast<std::size_t>(column)];
    const DWORD side = IsRightAligned(column) ? ES_RIGHT : 0; // where the cell's text is
    if (!edit->CreateCell(WS_CHILD | WS_BORDER | ES_AUTOHSCROLL | side, rect, this,
                          kCellEditorId)) {
        delete edit;
        return nullptr;
    }
    if (type == kEditorFile || type == kEditorFolder) {
        edit->SetType(CEditEx::kBrowse);
        edit->CreateBrowseButton(&edit->GetBrowser(), kBrowseButtonId);
    } else if (type == kEditorNumber) {
        edit->SetType(CEditEx::kInteger);
        edit->SetOtherCharacters(m_strNull + m_strDefault);
        edit->SetRange(record.m_lEditorMin, record.m_lEditorMax);
        edit->CreateSpinner(kSpinnerId);
    }
    edit->SendMessage(EM_LIMITTEXT, static_cast<WPARAM>(record.m_nEditorMaxLength));
    edit->SetWindowText(value);
    edit->SendMessage(EM_SETSEL, 0, -1);
    edit->SendMessage(EM_SCROLLCARET);
    return edit;
}

CWnd* CListBoxEx::MakeCombo(int column, int type, LPCTSTR value, const CRect& rect) {
    const bool canType = type == kEditorCombo || type == kEditorSortedCombo;
    const bool isSorted = type == kEditorSortedCombo || type == kEditorSortedPick;
    const DWORD style = WS_CHILD | WS_BORDER | WS_VSCROLL | CBS_AUTOHSCROLL |
                        (canType ? CBS_DROPDOWN : CBS_DROPDOWNLIST) | (isSorted ? CBS_SORT : 0);
    auto* combo = new CListBoxCellComboBox;
    const DWORD side =
        m_bRightAligned ? WS_EX_RIGHT | WS_EX_RTLREADING : 0; // where the cell's text is
    if (!combo->CreateCell(style, rect, this, kCellEditorId, side)) {
        delete combo;
        return nullptr;
    }
    const SListColumn& record = m_pColumns[static_cast<std::size_t>(column)];
    int chosen = -1;
    for (int i = 0; i < record.m_nEditorStrings; ++i) {
        const CString& text = record.m_pEditorStrings[static_cast<std::size_t>(i)];
        const auto index = static_cast<int>(combo->SendMessage(
            CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(static_cast<const char*>(text))));
        if (chosen >= index && index >= 0 && isSorted)
            ++chosen; // the new item was sorted in before it
        if (text == value)
            chosen = index;
    }
    if (chosen >= 0)
        combo->SendMessage(CB_SETCURSEL, static_cast<WPARAM>(chosen));
    if (canType) {
        combo->SendMessage(CB_LIMITTEXT, static_cast<WPARAM>(record.m_nEditorMaxLength));
        combo->SetWindowText(value);
    }
    return combo;
}

void CListBoxEx::FollowEditedRow() {
    CellPlace place;
    if (m_pActiveEditor == nullptr || !PlaceCell(m_nCurRow, m_nCurColumn, place))
        return;
    if (auto* edit = DYNAMIC_DOWNCAST(CListBoxCellEdit, m_pActiveEditor))
        edit->PlaceAll(place.m_rect);
    else
        m_pActiveEditor->MoveWindow(place.m_rect);
}

// --- storing -------------------------------------------------------------------------------------

BOOL CListBoxEx::CellEnter(BOOL notify) {
    if (m_pActiveEditor == nullptr)
        return TRUE;
    if (m_bCommitting)
        return FALSE;
    const CWnd* const editor = m_pActiveEditor;
    const int column = m_nCurColumn;
    CString value = EditorValue(); // m_nCurRow is adjusted if the parent inserts or deletes rows
    if (IsFileCell(m_nCurRow, column)) {
        AddFileName(m_nCurRow, value);
        GetDisplayString(value, m_nCurRow);
        value = StorableValue(value, true);
    }
    CWnd* parent = GetParent();
    if (notify && parent != nullptr) {
        const Lifeline life(this);
        m_bCommitting = TRUE;
        const LRESULT answer =
            parent->SendMessage(VNM_STOREVALUE, static_cast<WPARAM>(column),
                                reinterpret_cast<LPARAM>(static_cast<const char*>(value)));
        if (!life.Holds())
            return TRUE;
        m_bCommitting = FALSE;
        if (m_pActiveEditor != editor)
            return TRUE; // the parent closed the editor or removed the row: nothing to store
        if (answer != 0)
            return Refuse(value);
    }
    const int target = m_nCurRow;
    const Lifeline life(this);
    const CListRowSource* const source = GetRowSource();
    const BOOL stored = UpdateStringItem(target, column, value);
    if (!life.Holds() || m_pActiveEditor != editor)
        return TRUE; // the source closed the editor
    if (!stored && source != nullptr && source == GetRowSource() && IsRow(target))
        return Refuse(value);
    StopEditing();
    return TRUE;
}

/// The open editor's value, as it would be stored; of a file cell, the file's name.
CString CListBoxEx::EditorValue() const {
    CString before;
    GetStringItem(m_nCurRow, m_nCurColumn, before);
    const int type = EffectiveEditorType(m_nCurRow, m_nCurColumn);
    const bool picks = type == kEditorPick || type == kEditorSortedPick;
    if (picks && m_pActiveEditor->SendMessage(CB_GETCURSEL) < 0)
        return before;
    CString value;
    m_pActiveEditor->GetWindowText(value);
    const bool isKept = value == before || IsFileCell(m_nCurRow, m_nCurColumn);
    return isKept ? value : StorableValue(value, true);
}

/// A value without what would split its row; pasted texts have tabs and line breaks.
CString CListBoxEx::StorableValue(CString value, bool oneLine) const {
    if (oneLine) {
        value.Replace("\r\n", " ");
        value.Replace("\r", " ");
        value.Replace("\n", " ");
    }
    if (GetRowSource() != nullptr || m_nColumns == 0)
        return value; // its cells hold any text
    value = CleanValue(value);
    std::string cell(ViewOf(value));
    CleanCell(cell, 0, ViewOf(m_strSeparator));
    return StringOf(cell);
}

/// The editor stays open with a value that was refused; in a list that was disabled meanwhile the
/// value is given up. Returns whether the editor is closed.
BOOL CListBoxEx::Refuse(const CString& value) {
    if (!IsWindowEnabled()) {
        CellCancel();
        return TRUE;
    }
    m_bRefused = TRUE;
    m_strRefused = value;
    m_nRefusedIn = CurrentHandAction();
    return FALSE;
}

/// CellEnter when the user goes elsewhere: a value that was refused is not asked for again by the
/// same action of the hand, such as each move of a drag.
BOOL CListBoxEx::LeaveCell() {
    const bool isRefused = m_pActiveEditor != nullptr && !m_bCommitting && m_bRefused &&
                           m_nRefusedIn == CurrentHandAction() && EditorValue() == m_strRefused;
    return isRefused ? FALSE : CellEnter(TRUE);
}

void CListBoxEx::OnEnable(BOOL on) {
    const Lifeline life(this);
    CWnd::OnEnable(on);
    // Not while the parent is being asked: then CellEnter closes the editor.
    if (life.Holds() && !on && m_pActiveEditor != nullptr && !m_bCommitting)
        CellEnter(TRUE);
}

void CListBoxEx::CloseEditor() {
    CWnd* const editor = m_pActiveEditor;
    const Lifeline life(this);
    m_bRefused = FALSE;
    m_pActiveEditor = nullptr; // the editor is closing: its losing the focus stores nothing
    if (editor != nullptr && editor->GetSafeHwnd() != nullptr) {
        const HWND window = editor->m_hWnd;
        auto* edit = DYNAMIC_DOWNCAST(CListBoxCellEdit, editor);
        const CWnd* focus = GetFocus();
        if (focus != nullptr &&
            (focus == editor || editor->IsChild(focus) || (edit != nullptr && edit->IsPart(focus))))
            SetFocus();
        if (life.Holds() && IsWindow(window)) {
            if (edit != nullptr)
                edit->ShowAll(FALSE);
            else
                editor->ShowWindow(SW_HIDE);
            ::PostMessage(window, WM_CLOSE, 0, 0);
        }
    }
    if (!life.Holds())
        return;
    if (CWnd* parent = GetParent(); parent != nullptr)
        parent->PostMessage(VNM_EDITORCLOSED);
    if (m_bFilterStale)
        PostMessage(kApplyFilter);
    Invalidate(TRUE);
    UpdateWindow();
}

/// Before rows or columns change: the parent, which learns that the list has the focus again,
/// cannot open the next editor yet.
void CListBoxEx::CloseEditorForGood() {
    if (m_pActiveEditor == nullptr)
        return;
    const Lifeline life(this);
    const BOOL before = std::exchange(m_bCommitting, TRUE);
    CellCancel();
    if (life.Holds())
        m_bCommitting = before;
}

void CListBoxEx::StopEditing() {
    if (GetSafeHwnd() != nullptr)
        CloseEditor();
}

void CListBoxEx::CellCancel() {
    if (m_pActiveEditor != nullptr)
        StopEditing();
}

void CListBoxEx::EditorDestroyed(const CWnd* editor) {
    if (m_pActiveEditor == editor)
        m_pActiveEditor = nullptr;
}

void CListBoxEx::OnKillFocusOfEdit() {
    if (m_pActiveEditor == nullptr || m_bCommitting)
        return;
    const CWnd* focus = GetFocus();
    if (focus == nullptr) // another program has the focus: the editor stays open
        return;
    const auto* edit = DYNAMIC_DOWNCAST(CListBoxCellEdit, m_pActiveEditor);
    if (focus == m_pActiveEditor || m_pActiveEditor->IsChild(focus) ||
        (edit != nullptr && edit->IsPart(focus)))
        return;
    const Lifeline life(this);
    if (!LeaveCell() && life.Holds())
        PostMessage(kRefocusEditor);
}

void CListBoxEx::RefocusEditor() {
    const CWnd* focus = GetFocus();
    if (m_pActiveEditor != nullptr && !m_bCommitting && focus != nullptr &&
        focus->GetTopLevelParent() == GetTopLevelParent())
        m_pActiveEditor->SetFocus();
}

void CListBoxEx::OnBrowserButtonClicked() {
    auto* edit =
        m_pActiveEditor != nullptr ? DYNAMIC_DOWNCAST(CListBoxCellEdit, m_pActiveEditor) : nullptr;
    if (edit == nullptr || m_bCommitting)
        return;
    const Lifeline life(this);
    edit->Browse();
    if (life.Holds() && m_pActiveEditor == edit) {
        edit->SetFocus();
        edit->SendMessage(EM_SETSEL, 0, -1);
    }
}

// CListBoxEx: the window's messages, mouse, keyboard and files dropped.
#include "src/lists/ListBoxExInternal.h"
#include "src/lists/ListColumns.h"
#include "src/lists/ListRows.h"
#include "src/lists/TypeAhead.h"

#include "src/charset/CodePage.h"
#include "vnbytstr/ListFilterRow.h"
#include "vnbytstr/window/Edit.h"
#include "vnbytstr/window/ListBox.h"

#include <algorithm>

using namespace vnbytstr::detail;

namespace {

bool IsDown(int key) { return GetKeyState(key) < 0; }

/// Whether the text ends within a multi-byte character.
bool EndsInCharacter(std::string_view text) {
    const vnbytstr::CodePage& page = vnbytstr::CodePage::Ansi();
    const std::size_t last = page.CharStart(text, text.size() - 1);
    return page.IsCutShort(text.data() + last, text.data() + text.size());
}

} // namespace

// --- the window ----------------------------------------------------------------------------------

int CListBoxEx::OnCreate(LPCREATESTRUCT create) {
    if (CWnd::OnCreate(create) == -1)
        return -1;
    Prepare();
    return 0;
}

void CListBoxEx::PreSubclassWindow() {
    CWnd::PreSubclassWindow();
    Prepare();
}

void CListBoxEx::Prepare() {
    if (m_pAccessible == nullptr)
        m_pAccessible = std::make_unique<Accessible>(*this);
    SetAccessibleTable(m_pAccessible.get());
}

void CListBoxEx::OnDestroy() {
    m_pActiveEditor = nullptr;
    m_bCommitting = FALSE;
    UseRowsOf(nullptr);
    if (m_pFilterRow != nullptr && m_pFilterRow->GetSafeHwnd() != nullptr)
        m_pFilterRow->DestroyWindow();
    SetAccessibleTable(nullptr);
    if (m_DropTarget.m_hWnd != nullptr)
        m_DropTarget.Revoke();
    if (m_pHeadings != nullptr)
        m_pHeadings->SetListBox(nullptr);
    if (m_pHeadings != &m_Headings)
        UseHeadings(nullptr);
    CWnd::OnDestroy();
}

void CListBoxEx::OnPaint() {
    if (GetRowSource() != nullptr && SendMessage(LB_GETCOUNT) != GetCount())
        PostMessage(kRowsGone);
    SetWidths();
    Default();
}

void CListBoxEx::OnSize(UINT type, int cx, int cy) {
    const Lifeline life(this);
    CWnd::OnSize(type, cx, cy);
    if (!life.Holds())
        return;
    PositionHeadings();
    SetWidths();
    if (m_bWidthsComputed && m_pHeadings != nullptr) {
        m_pHeadings->FixLastColWidth();
        m_pHeadings->Invalidate();
    }
    FollowEditedRow();
}

/// The header control moves with the list and needs room above it.
void CListBoxEx::OnWindowPosChanging(WINDOWPOS* place) {
    CWnd::OnWindowPosChanging(place);
    CWnd* parent = GetParent();
    const int height = parent != nullptr ? GetHeadersHeight() : 0;
    if (height == 0)
        return;
    CRect rect;
    GetWindowRect(rect);
    parent->ScreenToClient(rect);
    if ((place->flags & SWP_NOMOVE) == 0) {
        if (place->y < height) {
            const int bottom =
                place->y + ((place->flags & SWP_NOSIZE) == 0 ? place->cy : rect.Height());
            if ((place->flags & SWP_NOSIZE) != 0) {
                place->cx = rect.Width();
                place->flags &= ~SWP_NOSIZE;
            }
            place->y = height;
            place->cy = std::max(0, bottom - height);
        }
        const int width = (place->flags & SWP_NOSIZE) == 0 ? place->cx : rect.Width();
        PlaceHeaders(CRect(place->x, place->y, place->x + width, place->y));
    }
    if ((place->flags & (SWP_SHOWWINDOW | SWP_HIDEWINDOW)) == 0)
        return;
    const int show = (place->flags & SWP_SHOWWINDOW) != 0 ? SW_SHOWNA : SW_HIDE;
    if (m_pHeadings != nullptr && m_pHeadings->GetSafeHwnd() != nullptr)
        m_pHeadings->ShowWindow(show);
    if (m_pFilterRow != nullptr && m_pFilterRow->GetSafeHwnd() != nullptr)
        m_pFilterRow->ShowWindow(show);
}

void CListBoxEx::OnVScroll(UINT code, UINT position, CWnd* bar) {
    static_cast<void>(code);
    static_cast<void>(position);
    if (bar != nullptr)
        return; // sent by an editor's spinner, not by the list's scroll bar
    const Lifeline life(this);
    if (LeaveCell() && life.Holds()) // an editor would not scroll with its row
        Default();
}

BOOL CListBoxEx::OnMouseWheel(UINT flags, short delta, CPoint screen) {
    const Lifeline life(this);
    if (!LeaveCell() || !life.Holds())
        return TRUE;
    return CWnd::OnMouseWheel(flags, delta, screen);
}

// --- mouse ---------------------------------------------------------------------------------------

void CListBoxEx::OnLButtonDown(UINT flags, CPoint point) {
    const Lifeline life(this);
    const bool wasDown = IsDown(VK_LBUTTON);
    const auto isReleased = [wasDown] { return wasDown && !IsDown(VK_LBUTTON); };
    if (!LeaveCell() || !life.Holds() || isReleased())
        return; // the value was refused, or a message box got the release
    int row = -1;
    int column = -1;
    HitTest(point, row, m_nClickedColumn);
    const int before = GetFirstSel();
    Default();
    if (!life.Holds() || before < 0 || isReleased())
        return;
    // Shift and Ctrl extend a selection, which opening a cell would cancel.
    if (HasManySelected() && (flags & (MK_SHIFT | MK_CONTROL)) != 0)
        return;
    HitTest(point, row, column);
    if (row == before)
        EditUnder(row, column);
}

void CListBoxEx::OnLButtonDblClk(UINT flags, CPoint point) {
    static_cast<void>(flags);
    const Lifeline life(this);
    if (!LeaveCell() || !life.Holds())
        return;
    Default();
    if (!life.Holds())
        return;
    int row = -1;
    int column = -1;
    HitTest(point, row, column);
    EditUnder(row, column);
}

void CListBoxEx::EditUnder(int row, int column) {
    if (row >= 0 && GetEditorType(column) != kEditorNone && m_bEditing && !m_bReadOnly &&
        IsWindowEnabled() && (GetStyle() & WS_TABSTOP) != 0)
        StartEditing(row, column);
}

void CListBoxEx::OnRButtonDown(UINT flags, CPoint point) {
    static_cast<void>(flags);
    const Lifeline life(this);
    if (!LeaveCell() || !life.Holds())
        return;
    int row = -1;
    int column = -1;
    HitTest(point, row, column);
    if (row >= 0) {
        if (!HasManySelected())
            SendMessage(LB_SETCURSEL, static_cast<WPARAM>(row));
        else if (SendMessage(LB_GETSEL, static_cast<WPARAM>(row)) <= 0)
            SendMessage(LB_SETSEL, TRUE, row);
    }
    Default();
}

// --- keyboard ------------------------------------------------------------------------------------

void CListBoxEx::OnChar(UINT ch, UINT repeat, UINT flags) {
    static_cast<void>(repeat);
    static_cast<void>(flags);
    if (!m_bPrintInput || ch < ' ') {
        Default();
        return;
    }
    const char typed = static_cast<char>(ch);
    AddTyped(m_strTyped, m_dwTypedTime, GetTickCount(), {&typed, 1});
    if (EndsInCharacter(ViewOf(m_strTyped)))
        return; // the other bytes follow in further messages
    m_pRows->FindTyped(m_strTyped);
}

UINT CListBoxEx::OnGetDlgCode() {
    const MSG* current = GetCurrentMessage();
    auto* key = current != nullptr ? reinterpret_cast<MSG*>(current->lParam) : nullptr;
    const Lifeline life(this);
    UINT code = CWnd::OnGetDlgCode();
    if (key != nullptr && life.Holds() && ProcessInputMessage(key))
        code |= DLGC_WANTALLKEYS;
    return code;
}

BOOL CListBoxEx::PreTranslateMessage(MSG* message) {
    const Lifeline life(this);
    if (ProcessInputMessage(message))
        return TRUE;
    return life.Holds() ? CWnd::PreTranslateMessage(message) : TRUE;
}

BOOL CListBoxEx::ProcessInputMessage(MSG* message) {
    if (message == nullptr || message->message != WM_KEYDOWN || IsDown(VK_MENU))
        return FALSE;
    const bool isEditing = m_pActiveEditor != nullptr;
    if (!isEditing && GetFirstSel() < 0)
        return FALSE;
    switch (message->wParam) {
    case VK_TAB:
        if (!isEditing || IsDown(VK_CONTROL))
            return FALSE;
        MoveToNextCell(!IsDown(VK_SHIFT));
        return TRUE;
    case VK_F2:
        if (IsDown(VK_SHIFT))
            return ZoomCell();
        if (isEditing || !IsEditingEnabled())
            return FALSE;
        EditNextCell({GetFirstSel(), 0}, true);
        return TRUE;
    case VK_RETURN:
        if (!isEditing)
            return FALSE;
        CellEnter(TRUE);
        return TRUE;
    case VK_ESCAPE:
        if (!isEditing)
            return FALSE;
        CellCancel();
        return TRUE;
    case '0':
        if (!isEditing || !m_bSetNull || !IsDown(VK_CONTROL))
            return FALSE;
        m_pActiveEditor->SetWindowText(m_strNull);
        m_pActiveEditor->SendMessage(EM_SETSEL, 0, -1);
        return TRUE;
    case 'C':
        if (isEditing || !m_bCopy || !IsDown(VK_CONTROL))
            return FALSE;
        SetClipboardText(GetSelectionText(TRUE));
        return TRUE;
    default:
        return FALSE;
    }
}

/// Stores the open editor, then opens the next cell to the right (or left) that can be edited.
void CListBoxEx::MoveToNextCell(BOOL forward) {
    const int column = m_nCurColumn;
    const Lifeline life(this);
    if (!CellEnter(TRUE) || !life.Holds())
        return;
    const int position = GetColumnView().PositionOf(column);
    if (IsRow(m_nCurRow)) // its row, wherever that is now
        EditNextCell({m_nCurRow, forward ? position + 1 : position - 1}, forward != FALSE);
}

/// `from.column` is a position among the shown columns.
void CListBoxEx::EditNextCell(const CellAddress& from, bool forward) {
    const auto next = FindEditable(GetColumnView(), from, forward, GetCount());
    if (next)
        StartEditing(next->row, next->column);
}

// --- files dropped -------------------------------------------------------------------------------

DROPEFFECT CListBoxEx::DragOver(CPoint point) {
    int row = -1;
    int column = -1;
    HitTest(point, row, column);
    if (row < 0 || column < 0)
        return DROPEFFECT_NONE;
    const Lifeline life(this);
    // The current cell is about to change. The parent may remove rows while it is asked.
    if (!LeaveCell() || !life.Holds() || !IsRow(row) || !IsColumn(column))
        return DROPEFFECT_NONE;
    if (row != GetFirstSel() || (HasManySelected() && SendMessage(LB_GETSELCOUNT) != 1))
        SetOnlySel(row);
    m_nCurRow = row;
    m_nCurColumn = column;
    return GetDragDrop(row) && !m_bReadOnly ? DROPEFFECT_MOVE : DROPEFFECT_NONE;
}

void CListBoxEx::DropFile(const CString& name) {
    AddFileName(m_nCurRow, name);
    EditColumn(m_nCurRow, m_nCurColumn);
}

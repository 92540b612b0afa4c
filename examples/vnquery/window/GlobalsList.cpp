#include "vnquery/window/GlobalsList.h"

#include "vnbytstr/window/ListBox.h"
#include "vnquery/result/CellText.h"
#include "vnquery/window/WindowText.h"

namespace vnquery {

BOOL GlobalsList::CreateList(CWnd* parent, const RECT& rect, UINT id, UINT headingsId) {
    const DWORD style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_BORDER | LBS_NOTIFY |
                        LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | LBS_NOINTEGRALHEIGHT;
    if (!Create("LISTBOX", Text(IDS_VQ_G_TITLE).c_str(), style, rect, parent, id))
        return FALSE;
    SetSeparator(kCellSeparator);
    SetNumColumns(3);
    SetColumnName(0, Text(IDS_VQ_G_NAME).c_str());
    SetColumnName(1, Text(IDS_VQ_G_VALUE).c_str());
    SetColumnName(2, Text(IDS_VQ_G_MEANING).c_str());
    SetFractionalColumnWidth(0, 34);
    SetFractionalColumnWidth(1, 26);
    SetFractionalColumnWidth(2, 40);
    SetColumnSpacing(-1, 4);
    EnableEditing();
    SetPrintInput(TRUE);
    return CreateHeadingsControl(headingsId);
}

std::string GlobalsList::DisplayValue(const GlobalsRow& row) {
    if (row.kind.form == VariableKind::Form::Switch)
        return Text(row.value == "0" ? IDS_VQ_G_OFF : IDS_VQ_G_ON);
    return MakeVisible(row.value);
}

std::string GlobalsList::ValueOfDisplay(const GlobalsRow& row, const std::string& text) {
    return row.kind.form == VariableKind::Form::Switch ? text.substr(0, 1) : text;
}

void GlobalsList::ShowRows(int selected) {
    ResetContent();
    for (const GlobalsRow& row : m_rows)
        AddStringItems(row.name.c_str(), DisplayValue(row).c_str(),
                       MakeVisible(row.meaning).c_str());
    if (selected >= 0)
        SetOnlySel(selected);
}

/// A list has one kind of editor per column; here the selected row decides it.
void GlobalsList::PrepareEditor(int row) {
    if (row < 0 || row >= static_cast<int>(m_rows.size()) || GetNumColumns() <= kValueColumn)
        return;
    const GlobalsRow& variable = m_rows[static_cast<std::size_t>(row)];
    switch (variable.kind.form) {
    case VariableKind::Form::Switch: {
        CStringArray choices;
        choices.Add(Text(IDS_VQ_G_OFF).c_str());
        choices.Add(Text(IDS_VQ_G_ON).c_str());
        SetEditorStrings(kValueColumn, choices);
        SetEditorType(kValueColumn, kEditorPick);
        break;
    }
    case VariableKind::Form::Number:
        SetEditorRange(kValueColumn, static_cast<LONG>(variable.kind.minimum),
                       static_cast<LONG>(variable.kind.maximum));
        SetEditorType(kValueColumn, kEditorNumber);
        break;
    case VariableKind::Form::Text:
        SetEditorType(kValueColumn, kEditorText);
        break;
    case VariableKind::Form::ReadOnly:
        SetEditorType(kValueColumn, kEditorNone);
        break;
    }
}

LRESULT GlobalsList::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    // A click or key selects the row before it opens an editor.
    if (message == LB_SETCURSEL)
        PrepareEditor(static_cast<int>(wParam));
    const HWND window = m_hWnd;
    const bool isClick = message == WM_LBUTTONDOWN; // selects only; a double click opens the editor
    if (isClick)
        EnableEditing(FALSE);
    const LRESULT result = CListBoxEx::WindowProc(message, wParam, lParam);
    if (!IsWindow(window))
        return result;
    if (isClick)
        EnableEditing();
    if (message == WM_KEYDOWN || message == WM_LBUTTONDOWN)
        PrepareEditor(GetFirstSel());
    return result;
}

void GlobalsList::DrawItem(LPDRAWITEMSTRUCT item) {
    const bool isGrey = item->itemID < m_rows.size() &&
                        m_rows[item->itemID].kind.form == VariableKind::Form::ReadOnly;
    if (isGrey && !(item->itemState & ODS_SELECTED))
        item->itemState |= ODS_DISABLED;
    CListBoxEx::DrawItem(item);
}

} // namespace vnquery

// CListBoxEx: Shift+F2, which zooms in on a value or opens the file of a file cell.
#include "src/lists/ListBoxExInternal.h"
#include "src/lists/ListColumns.h"

#include "messages/ResourceIds.h"
#include "vnbytstr/Interaction.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/Messages.h"
#include "vnbytstr/ZoomDialog.h"
#include "vnbytstr/framework/Module.h"

#include <cerrno>
#include <string>
#include <system_error>

using namespace vnbytstr::detail;

namespace {

/// The answer to VNM_STOREVALUE with which the parent also ends the zoom dialog.
constexpr LRESULT kRefuseAndEndZoom = 2;

/// The system's text for the reason why a file could not be opened.
std::string ShellErrorText(int error) {
    int number = EIO;
    switch (error) {
    case vnbytstr::kShellOutOfMemory:
    case vnbytstr::kShellNoMemory:
        number = ENOMEM;
        break;
    case vnbytstr::kShellFileNotFound:
    case vnbytstr::kShellPathNotFound:
        number = ENOENT;
        break;
    case vnbytstr::kShellAccessDenied:
        number = EACCES;
        break;
    case vnbytstr::kShellBadFormat:
        number = ENOEXEC;
        break;
    case vnbytstr::kShellNoAssociation:
        number = ENOTSUP;
        break;
    default:
        break;
    }
    return std::generic_category().message(number);
}

} // namespace

int CListBoxEx::ShowZoom(int row, int column, CString& value) {
    static_cast<void>(row);
    CZoomDialog dialog(value, GetColumnName(column), this);
    dialog.SetReadOnly(!IsEditingEnabled());
    const int answer = dialog.DoModal();
    if (answer == IDOK)
        value = dialog.GetValue();
    return answer;
}

/// The first cell that can be edited; in a list that is not edited, the one clicked last counts.
/// -1: none.
int CListBoxEx::ColumnToZoom(int row) const {
    if (!IsEditingEnabled() && IsColumn(m_nClickedColumn))
        return m_nClickedColumn;
    const auto cell = FindEditable(GetColumnView(), {row, 0}, true, GetCount());
    if (cell && cell->row == row)
        return cell->column;
    return IsEditingEnabled() ? -1 : 0;
}

/// Handles Shift+F2; TRUE if the key was used.
BOOL CListBoxEx::ZoomCell() {
    if (m_bCommitting)
        return FALSE;
    int row = GetFirstSel();
    int column = m_nCurColumn;
    CString value;
    const Lifeline life(this);
    if (m_pActiveEditor != nullptr) {
        m_pActiveEditor->GetWindowText(value);
        CellCancel();
        if (!life.Holds())
            return TRUE;
    } else {
        column = ColumnToZoom(row);
        if (column < 0)
            return FALSE;
        if (IsFileCell(row, column)) {
            if (ParentTakesCell(column) || !life.Holds())
                return TRUE;
            value = GetFileName(row);
        } else {
            GetStringItem(row, column, value);
        }
    }
    if (IsFileCell(row, column)) {
        OpenFile(value);
        return TRUE;
    }
    m_nCurRow = row; // is adjusted if rows are inserted or deleted meanwhile
    while (ShowZoom(row, column, value) == IDOK && life.Holds() && IsEditingEnabled()) {
        CString before;
        GetStringItem(m_nCurRow, column, before);
        if (value != before)
            value = StorableValue(value, false);
        CWnd* parent = GetParent();
        m_bCommitting = TRUE;
        const LRESULT answer =
            parent == nullptr
                ? 0
                : parent->SendMessage(VNM_STOREVALUE, static_cast<WPARAM>(column),
                                      reinterpret_cast<LPARAM>(static_cast<const char*>(value)));
        if (!life.Holds())
            return TRUE;
        m_bCommitting = FALSE;
        row = m_nCurRow;
        const bool refused = answer == 0 && !UpdateStringItem(row, column, value) && life.Holds() &&
                             GetRowSource() != nullptr && IsRow(row);
        if (!life.Holds())
            return TRUE;
        if ((answer == 0 && !refused) || answer == kRefuseAndEndZoom || row < 0 ||
            !IsColumn(column))
            break;
    }
    return TRUE;
}

/// Opens a file cell's file in the program associated with it.
void CListBoxEx::OpenFile(const CString& name) {
    if (name.IsEmpty()) {
        CString text;
        LoadStringA(text, IDS_NO_FILE_NAME, nullptr);
        AfxMessageBox(text, MB_OK | MB_ICONEXCLAMATION);
        return;
    }
    const int result = vnbytstr::Interaction::Current().ShellExecute(nullptr, name, nullptr,
                                                                     nullptr, SW_SHOWNORMAL);
    if (result <= 32)
        FormattedMessageBox(IDS_FILE_NOT_OPENED, nullptr, MB_OK | MB_ICONEXCLAMATION,
                            ShellErrorText(result).c_str());
}

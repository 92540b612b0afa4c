#include "vnbytstr/ZoomDialog.h"

#include "messages/ResourceIds.h"
#include "src/charset/CodePage.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/window/Button.h"
#include "vnbytstr/window/Edit.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr UINT kValueId = 100;
constexpr int kGap = 8; ///< between the controls, in pixels

CString TextOr(UINT id, LPCTSTR english) {
    CString text;
    return LoadStringA(text, id, nullptr) > 0 ? text : CString(english);
}

/// How much of a value the edit control can lay out in a bearable time, in bytes.
int ShownLength(const CString& value) {
    const std::string_view all(value, static_cast<std::size_t>(value.GetLength()));
    std::size_t end = std::min<std::size_t>(all.size(), CZoomDialog::kMaxBytes);
    for (std::size_t line = 0; line < end;) {
        const std::size_t next = std::min(all.find('\n', line), end);
        if (next - line > CZoomDialog::kMaxLine) {
            end = line + CZoomDialog::kMaxLine;
            break;
        }
        line = next + 1;
    }
    if (end == all.size())
        return value.GetLength();
    const std::string_view around = all.substr(0, end + 8);
    return static_cast<int>(vnbytstr::CodePage::Ansi().CharStart(around, end));
}

} // namespace

IMPLEMENT_DYNAMIC(CZoomDialog, CDialog)

BEGIN_MESSAGE_MAP(CZoomDialog, CDialog)
ON_WM_SIZE()
ON_WM_GETMINMAXINFO()
END_MESSAGE_MAP()

CZoomDialog::CZoomDialog(const CString& value, LPCTSTR name, CWnd* parent)
    : m_strValue(value), m_strName(name), m_pParent(parent), m_nShown(ShownLength(value)) {}

int CZoomDialog::DoModal() {
    const CString ok = TextOr(IDS_BUTTON_OK, "OK");
    const CString cancel = TextOr(IDS_BUTTON_CANCEL, "Cancel");
    CString title = TextOr(IsCut() ? IDS_ZOOM_TITLE_CUT : IDS_ZOOM_TITLE,
                           IsCut() ? "Zoom (the beginning, cannot be changed)" : "Zoom");
    if (!m_strName.IsEmpty())
        title = m_strName + " - " + title;
    const CDialogTemplate::Item items[] = {
        {"EDIT", "", kValueId,
         ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN | WS_VSCROLL | WS_BORDER | WS_TABSTOP |
             (CanChange() ? 0u : ES_READONLY),
         7, 7, 286, 130},
        {"BUTTON", ok, IDOK, BS_DEFPUSHBUTTON | WS_TABSTOP | (CanChange() ? 0u : WS_DISABLED), 189,
         144, 50, 14},
        {"BUTTON", cancel, IDCANCEL, WS_TABSTOP, 243, 144, 50, 14},
    };
    CDialogTemplate description{title, 300, 165, items};
    description.style |= WS_THICKFRAME;
    if (!InitModalIndirect(description, m_pParent))
        return IDCANCEL;
    const int answer = CDialog::DoModal();
    return answer == IDOK ? IDOK : IDCANCEL;
}

BOOL CZoomDialog::OnInitDialog() {
    CDialog::OnInitDialog();
    if (CWnd* edit = GetDlgItem(kValueId); edit != nullptr) {
        edit->SendMessage(EM_LIMITTEXT, 0);
        edit->SetWindowText(m_strValue.Left(m_nShown));
        edit->SendMessage(EM_SETSEL, 0, 0); // a first key adds to the value
        edit->SetFocus();
    }
    Layout();
    return FALSE;
}

void CZoomDialog::OnOK() {
    if (!CanChange())
        return;
    GetDlgItemText(kValueId, m_strValue);
    CDialog::OnOK();
}

BOOL CZoomDialog::PreTranslateMessage(MSG* message) {
    if (message->message == WM_KEYDOWN && message->wParam == VK_RETURN &&
        GetKeyState(VK_CONTROL) < 0) {
        OnOK();
        return TRUE;
    }
    return CDialog::PreTranslateMessage(message);
}

void CZoomDialog::OnSize(UINT type, int cx, int cy) {
    CDialog::OnSize(type, cx, cy);
    Layout();
}

void CZoomDialog::OnGetMinMaxInfo(MINMAXINFO* info) {
    CDialog::OnGetMinMaxInfo(info);
    info->ptMinTrackSize = {280, 160};
}

void CZoomDialog::Layout() {
    CWnd* edit = GetDlgItem(kValueId);
    CWnd* ok = GetDlgItem(IDOK);
    CWnd* cancel = GetDlgItem(IDCANCEL);
    if (edit == nullptr || ok == nullptr || cancel == nullptr)
        return;
    CRect client;
    GetClientRect(client);
    CRect button;
    cancel->GetWindowRect(button);
    const int top = client.bottom - kGap - button.Height();
    const int left = client.right - kGap - button.Width();
    cancel->MoveWindow(left, top, button.Width(), button.Height());
    ok->MoveWindow(left - kGap - button.Width(), top, button.Width(), button.Height());
    edit->MoveWindow(kGap, kGap, std::max(0, client.Width() - 2 * kGap),
                     std::max(0, top - 2 * kGap));
}

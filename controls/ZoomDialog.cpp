#include "vnbytstr/ZoomDialog.h"

#include "platform/system/CodePage.h"
#include "platform/window/Edit.h"
#include "resources/ResourceIds.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/Messages.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr UINT kValueId = 100;
constexpr int kGap = 8; ///< between the controls, in pixels

CString TextOr(UINT id, LPCTSTR english) {
    CString text;
    return LoadStringA(text, id, nullptr) > 0 ? text : CString(english);
}

} // namespace

IMPLEMENT_DYNAMIC(CZoomDialog, CDialog)

BEGIN_MESSAGE_MAP(CZoomDialog, CDialog)
ON_WM_SIZE()
ON_WM_GETMINMAXINFO()
END_MESSAGE_MAP()

CZoomDialog::CZoomDialog(const CString& value, LPCTSTR name, CWnd* parent)
    : m_strValue(value), m_strName(name), m_pParent(parent) {}

int CZoomDialog::DoModal() {
    const CString ok = TextOr(IDS_BUTTON_OK, "OK");
    const CString cancel = TextOr(IDS_BUTTON_CANCEL, "Cancel");
    CString title = TextOr(CanChange() ? IDS_ZOOM_TITLE : IDS_ZOOM_TITLE_CUT,
                           CanChange() ? "Zoom" : "Zoom (first megabyte, not to be changed)");
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
    CString shown = m_strValue;
    if (!CanChange()) {
        const std::string_view all(shown, static_cast<std::size_t>(kMostBytes) + 8);
        shown = shown.Left(static_cast<int>(vnbytstr::CodePage::Ansi().CharStart(all, kMostBytes)));
    }
    if (CWnd* edit = GetDlgItem(kValueId); edit != nullptr) {
        edit->SendMessage(EM_LIMITTEXT, 0);
        edit->SetWindowText(shown);
        edit->SendMessage(EM_SETSEL, 0, -1);
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

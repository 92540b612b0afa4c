#include "vnquery/window/ConnectDialog.h"

#include "vnbytstr/window/ComboBox.h"
#include "vnbytstr/window/Static.h"
#include "vnquery/sources/DataSources.h"
#include "vnquery/window/Commands.h"

namespace vnquery {

namespace {

constexpr int kIdString = 1001;
constexpr int kIdSources = 1002;

} // namespace

BEGIN_MESSAGE_MAP(ConnectDialog, CDialog)
ON_CONTROL(CBN_SELCHANGE, kIdSources, OnSourceChosen)
END_MESSAGE_MAP()

ConnectDialog::ConnectDialog(const std::string& connection, CWnd* parent)
    : TextDialog(IDS_VQ_D_TITLE, 300, 122, kHelpConnect, parent), m_connection(connection) {
    AddLabel(IDS_VQ_D_STRING, 7, 7, 286);
    AddEdit(kIdString, 7, 18, 286);
    AddControl("STATIC", Text(IDS_VQ_D_HINT), 0xFFFF, SS_NOPREFIX, 7, 35, 286, 27);
    AddLabel(IDS_VQ_D_SOURCES, 7, 66, 286);
    AddCombo(kIdSources, 7, 77, 286, CBS_DROPDOWNLIST);
    AddOkCancel(IDS_VQ_D_CONNECT);
}

BOOL ConnectDialog::OnInitDialog() {
    SetDlgItemText(kIdString, m_connection.c_str());
    const std::vector<std::string> sources = ListDataSources();
    for (const std::string& source : sources)
        SendDlgItemMessage(kIdSources, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(source.c_str()));
    if (sources.empty()) {
        const std::string none = Text(IDS_VQ_D_NO_SOURCES);
        SendDlgItemMessage(kIdSources, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(none.c_str()));
        SendDlgItemMessage(kIdSources, CB_SETCURSEL, 0);
        GetDlgItem(kIdSources)->EnableWindow(FALSE);
    }
    return CDialog::OnInitDialog();
}

void ConnectDialog::OnSourceChosen() {
    SetDlgItemText(kIdString, ("DSN=" + GetItemText(*this, kIdSources)).c_str());
    GotoDlgCtrl(GetDlgItem(kIdString));
}

void ConnectDialog::OnOK() {
    m_connection = GetItemText(*this, kIdString);
    if (m_connection.find_first_not_of(' ') == std::string::npos) {
        ShowMessage(Text(IDS_VQ_D_EMPTY));
        GotoDlgCtrl(GetDlgItem(kIdString));
        return;
    }
    CDialog::OnOK();
}

} // namespace vnquery

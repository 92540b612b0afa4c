#include "vnquery/window/LanguageDialog.h"

#include "vnquery/window/Commands.h"

#include "vnbytstr/Language.h"
#include "vnbytstr/LanguageCombo.h"
#include "vnbytstr/Profile.h"

namespace vnquery {

namespace {

constexpr int kIdLanguage = 1001;
constexpr UINT kOptionsRoot = 3;

} // namespace

LanguageDialog::LanguageDialog(CWnd* parent)
    : TextDialog(IDS_VQ_L_TITLE, 200, 64, kHelpSettings, parent) {
    AddLabel(IDS_VQ_L_LANGUAGE, 7, 9, 70);
    AddCombo(kIdLanguage, 80, 7, 113, CBS_DROPDOWNLIST, 150);
    AddOkCancel(IDS_VQ_OK);
}

BOOL LanguageDialog::OnInitDialog() {
    m_combo.Attach(GetDlgItem(kIdLanguage)->GetSafeHwnd());
    FillUILanguageCombo(m_combo, kTextLibraries);
    return CDialog::OnInitDialog();
}

void LanguageDialog::OnOK() {
    const CString code = GetUILanguageOfCombo(m_combo);
    m_combo.Detach();
    if (code.IsEmpty() || code == GetUILanguage()) {
        EndDialog(IDCANCEL);
        return;
    }
    const BOOL isKept = VNWriteProfileString(kOptionsRoot, "Options", "UILanguage", code);
    const std::string trouble = SettingsTrouble();
    LoadTexts();
    if (!isKept)
        ShowMessage(Text(IDS_VQ_L_NOT_SAVED) + trouble);
    EndDialog(IDOK);
}

} // namespace vnquery

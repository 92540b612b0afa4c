// The choice of the interface's language.
#pragma once

#include "vnquery/window/TextDialog.h"

namespace vnquery {

/// IDOK: another language was chosen; it is saved in the profile and its texts are loaded.
class LanguageDialog : public TextDialog {
public:
    explicit LanguageDialog(CWnd* parent);

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;

private:
    CComboBox m_combo;
};

} // namespace vnquery

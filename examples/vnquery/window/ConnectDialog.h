// Asks for an ODBC connection string.
#pragma once

#include "vnquery/window/TextDialog.h"

namespace vnquery {

class ConnectDialog : public TextDialog {
public:
    ConnectDialog(const std::string& connection, CWnd* parent);
    /// After IDOK.
    const std::string& GetConnection() const { return m_connection; }

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnSourceChosen();
    DECLARE_MESSAGE_MAP()

private:
    std::string m_connection;
};

} // namespace vnquery

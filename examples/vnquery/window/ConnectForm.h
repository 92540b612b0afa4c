// Asks which database to connect to.
#pragma once

#include "vnquery/sources/Connection.h"

#include <QDialog>

#include <optional>
#include <string>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;

namespace vnquery {

/// The saved connection with that name, with its password: that of the desktop's secret service,
/// else what the user is asked for. Nothing when there is none, or the user cancelled.
std::optional<Connection> OpenSavedConnection(QWidget* parent, const std::string& name);

/// The SQLite file that the user chooses, beginning in the folder of `from`; "" when cancelled.
QString AskForDatabase(QWidget* parent, const QString& from = {});

/// An SQLite file, a server by an ODBC driver, an ODBC data source, or a connection string; saves
/// and removes connections, and tries them out. A password is never shown: one in a connection
/// string moves to its own field.
class ConnectForm : public QDialog {
    Q_OBJECT

public:
    explicit ConnectForm(QWidget* parent = nullptr);

    void SetConnection(const Connection& connection);
    /// With its name, where it is saved as it is.
    Connection GetConnection() const;

    void accept() override;

private:
    enum Kind { kFile, kServer, kSource, kString };

    void Build();
    Connection ReadFields() const;
    void ShowKind();
    void FillSaved();
    void ShowSaved();
    void Save();
    void Remove();
    void Test();
    void TakePassword();
    bool IsComplete();

    QFormLayout* m_form;
    QComboBox* m_saved;
    QComboBox* m_kind;
    QLineEdit* m_file;
    QComboBox* m_driver;
    QLineEdit* m_server;
    QLineEdit* m_port;
    QLineEdit* m_database;
    QLineEdit* m_more;
    QComboBox* m_source;
    QLineEdit* m_string;
    QLineEdit* m_user;
    QLineEdit* m_password;
    QCheckBox* m_keep;
    QLabel* m_message;
};

} // namespace vnquery

// Edits the global variables.
#pragma once

#include <QDialog>

#include <string>
#include <vector>

class QCheckBox;
class QTableWidget;
class QTableWidgetItem;

namespace vnquery {

/// Shows what is saved now, including what other programs have saved since this one started. OK
/// applies the changes on top of what is saved by then and saves them; without changes it saves
/// nothing. Cancel changes nothing.
class VariablesDialog : public QDialog {
    Q_OBJECT

public:
    explicit VariablesDialog(QWidget* parent = nullptr);

    void accept() override;

private:
    struct Row {
        std::string name;
        std::string value;
        bool isOwn = false; ///< added by the user
        bool isChanged = false;
        bool isReadOnly = false; ///< only the program sets it
    };

    void ReadVariables();
    void ShowRow(int row);
    void TakeValue(const QTableWidgetItem& item);
    void Add();
    void Delete();
    bool HasChanges() const;
    bool ApplyChanges();

    std::vector<Row> m_rows;
    std::vector<std::string> m_deleted;
    QTableWidget* m_table;
    QCheckBox* m_keep;
    bool m_isFilling = false;
};

} // namespace vnquery

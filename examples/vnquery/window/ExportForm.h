// Asks for the file and the form of an export.
#pragma once

#include "vnquery/files/ExportFormat.h"

#include <QDialog>

#include <string>
#include <vector>

class QComboBox;
class QFormLayout;
class QLineEdit;

namespace vnquery {

/// Which rows are exported.
enum class ExportRows {
    AsShown, ///< those on the screen: filtered, sorted, columns in their order
    All      ///< the query's or table's, from the database again
};

/// What was asked for.
struct ExportRequest {
    std::string file;
    ExportFormat format;
    ExportRows rows = ExportRows::AsShown;
};

/// Details that a format does not take are disabled. What was chosen last is remembered in the
/// profile, for each format its own.
class ExportForm : public QDialog {
    Q_OBJECT

public:
    /// `table` is what SQL statements name, and the file's name to begin with.
    explicit ExportForm(const std::string& table, QWidget* parent = nullptr);
    /// After accept.
    const ExportRequest& GetRequest() const { return m_request; }

    void accept() override;

private:
    /// One detail: a text, a choice or a switch.
    struct Field {
        const char* option; ///< its name, as HasOption takes it
        QWidget* widget;
    };

    Format ChosenFormat() const;
    void ShowFormat();
    std::string TextOf(const char* option) const;
    bool Complain(const QString& text, const char* option);
    bool ReadFormat();
    bool ReadFile();

    std::string m_table;
    ExportRequest m_request;
    QFormLayout* m_form;
    QLineEdit* m_file;
    QComboBox* m_format;
    QComboBox* m_rows;
    std::vector<Field> m_fields;
};

} // namespace vnquery

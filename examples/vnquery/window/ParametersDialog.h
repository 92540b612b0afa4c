// Asks for the values of a query's parameters.
#pragma once

#include <QDialog>

#include <map>
#include <optional>
#include <string>
#include <vector>

class QCheckBox;
class QLineEdit;

namespace vnquery {

/// Texts by the parameters' names; nothing is NULL.
using ParameterTexts = std::map<std::string, std::optional<std::string>>;

/// A field and a switch for NULL for each name. The last values of a name come back as long as the
/// program runs.
class ParametersDialog : public QDialog {
    Q_OBJECT

public:
    explicit ParametersDialog(const std::vector<std::string>& names, QWidget* parent = nullptr);
    /// After accept.
    ParameterTexts GetTexts() const;

    void accept() override;

private:
    struct Field {
        std::string name;
        QLineEdit* text;
        QCheckBox* isNull;
    };
    std::vector<Field> m_fields;
};

} // namespace vnquery

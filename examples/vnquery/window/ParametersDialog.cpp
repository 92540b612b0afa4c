#include "vnquery/window/ParametersDialog.h"

#include "vnquery/window/Help.h"
#include "vnquery/window/Label.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QScrollArea>

namespace vnquery {

namespace {

ParameterTexts& LastTexts() {
    static ParameterTexts texts;
    return texts;
}

} // namespace

ParametersDialog::ParametersDialog(const std::vector<std::string>& names, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(PlainLabel(IDS_VQ_P_PARAMETERS));
    AddHelp(this, 8);
    auto* const fields = new QWidget;
    auto* const form = new QFormLayout(fields);
    for (const std::string& name : names) {
        const Field field{name, new QLineEdit, new QCheckBox(QStringLiteral("NULL"))};
        const QString shown = QString::fromStdString(name);
        auto* const row = new QHBoxLayout;
        row->addWidget(field.text, 1);
        row->addWidget(field.isNull);
        form->addRow(QString(shown).replace(u'&', QLatin1String("&&")), row);
        field.text->setAccessibleName(shown);
        field.isNull->setAccessibleName(shown + QStringLiteral(" NULL"));
        connect(field.isNull, &QCheckBox::toggled, field.text, &QWidget::setDisabled);
        if (const auto last = LastTexts().find(name); last != LastTexts().end()) {
            field.text->setText(QString::fromStdString(last->second.value_or("")));
            field.isNull->setChecked(!last->second);
        }
        m_fields.push_back(field);
    }
    auto* const area = new QScrollArea;
    area->setWidget(fields);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* const all = new QVBoxLayout(this);
    all->addWidget(area);
    all->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &ParametersDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ParametersDialog::reject);
}

ParameterTexts ParametersDialog::GetTexts() const {
    ParameterTexts texts;
    for (const Field& field : m_fields)
        texts[field.name] = field.isNull->isChecked()
                                ? std::nullopt
                                : std::optional(field.text->text().toStdString());
    return texts;
}

void ParametersDialog::accept() {
    for (const auto& [name, text] : GetTexts())
        LastTexts()[name] = text;
    QDialog::accept();
}

} // namespace vnquery

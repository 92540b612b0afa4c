#include "vnquery/window/ExportForm.h"

#include "vnquery/sources/ConnectionText.h"
#include "vnquery/window/Help.h"
#include "vnquery/window/Label.h"

#include "vnbytstr/Ccsid.h"
#include "vnbytstr/Profile.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>

namespace vnquery {

namespace {

constexpr UINT kRoot = 1;
constexpr char kSection[] = "Export";
constexpr int kMaxRecord = 1 << 24;
constexpr WORD kUtf8 = 1208;
constexpr const char* kEndings[] = {"txt",  "txt",   "txt", "txt", "csv",  "tsv",
                                    "json", "jsonl", "md",  "sql", "html", "xml"};

QStringList Labels(std::initializer_list<UINT> texts) {
    QStringList labels;
    for (const UINT text : texts)
        labels.push_back(Label(text));
    return labels;
}

/// In the order of Format.
QStringList FormatLabels() {
    return Labels({IDS_VQ_P_F_TABLE, IDS_VQ_P_F_VERTICAL, IDS_VQ_V_TEXT, IDS_VQ_P_F_RECORDS}) +
           QStringList{"CSV", "TSV", "JSON", "JSON Lines", "Markdown", "SQL INSERT", "HTML", "XML"};
}

QString GetField(const QWidget* field) {
    if (const auto* const combo = qobject_cast<const QComboBox*>(field))
        return combo->isEditable() ? combo->currentText() : QString::number(combo->currentIndex());
    if (const auto* const check = qobject_cast<const QCheckBox*>(field))
        return QString::number(check->isChecked());
    return qobject_cast<const QLineEdit*>(field)->text();
}

void SetField(QWidget* field, const QString& text) {
    if (auto* const combo = qobject_cast<QComboBox*>(field))
        combo->isEditable() ? combo->setEditText(text) : combo->setCurrentIndex(text.toInt());
    else if (auto* const check = qobject_cast<QCheckBox*>(field))
        check->setChecked(text == QLatin1String("1"));
    else
        qobject_cast<QLineEdit*>(field)->setText(text);
}

/// The fields of a format that nothing is remembered of.
ConnectionKeys UsualFields(Format kind) {
    ExportFormat format;
    format.format = kind;
    format = Completed(format);
    const auto number = [](auto value) { return std::to_string(static_cast<int>(value)); };
    return {{"--ccsid", Text(IDS_VQ_CCSID_1208)},
            {"--record-length", "0"},
            {"--line-break", number(format.lineBreak)},
            {"--line-ends", number(*format.lineEnds)},
            {"--separator", *format.separator},
            {"--blobs", number(*format.hexBlobs)},
            {"--null", *format.nullText},
            {"--headings", number(*format.headings)},
            {"--entities", "0"},
            {"--strict", "0"}};
}

} // namespace

ExportForm::ExportForm(const std::string& table, QWidget* parent)
    : QDialog(parent), m_table(table), m_form(new QFormLayout(this)) {
    setWindowTitle(PlainLabel(IDS_VQ_X_TITLE));
    AddHelp(this, 4);
    const auto choice = [this](UINT label, const QStringList& texts, bool isEditable = false) {
        auto* const combo = new QComboBox;
        combo->addItems(texts);
        combo->setEditable(isEditable);
        if (isEditable)
            combo->lineEdit()->setAccessibleName(PlainLabel(label));
        m_form->addRow(Label(label), combo);
        return combo;
    };
    const auto line = [this](UINT label) {
        auto* const field = new QLineEdit;
        m_form->addRow(Label(label), field);
        return field;
    };
    const auto check = [this](UINT label) {
        auto* const box = new QCheckBox(Label(label));
        m_form->addRow(box);
        return box;
    };
    m_format = choice(IDS_VQ_P_FORMAT, FormatLabels());
    m_rows = choice(IDS_VQ_P_ROWS, Labels({IDS_VQ_P_SCREEN, IDS_VQ_P_AGAIN}));
    m_file = new QLineEdit;
    auto* const file = new QHBoxLayout;
    auto* const browse = new QPushButton(Label(IDS_VQ_BROWSE));
    browse->setAutoDefault(false);
    file->addWidget(m_file, 1);
    file->addWidget(browse);
    m_form->addRow(Label(IDS_VQ_X_FILE), file);
    qobject_cast<QLabel*>(m_form->labelForField(file))->setBuddy(m_file);
    QStringList sets;
    for (UINT id = IDS_VQ_CCSID_1208; id <= IDS_VQ_CCSID_943; ++id)
        sets.push_back(Label(id));
    m_fields = {
        {"--ccsid", choice(IDS_VQ_X_CCSID, sets, true)},
        {"--record-length", line(IDS_VQ_X_LENGTH)},
        {"--line-break", choice(IDS_VQ_X_BREAK, Labels({IDS_VQ_X_BREAK_LF, IDS_VQ_X_BREAK_CRLF,
                                                        IDS_VQ_X_BREAK_CR, IDS_VQ_X_BREAK_NONE}))},
        {"--line-ends", choice(IDS_VQ_X_ENDS, Labels({IDS_VQ_X_ENDS_ESCAPE, IDS_VQ_X_ENDS_RECORDS,
                                                      IDS_VQ_X_ENDS_SPACE, IDS_VQ_X_ENDS_KEEP}))},
        {"--separator", choice(IDS_VQ_X_SEPARATOR, {Label(IDS_VQ_X_TAB), ",", ";", "|"}, true)},
        {"--blobs",
         choice(IDS_VQ_X_BLOBS, Labels({IDS_VQ_X_BLOBS_PLACEHOLDER, IDS_VQ_X_BLOBS_HEX}))},
        {"--null", line(IDS_VQ_X_NULL)},
        {"--table", line(IDS_VQ_P_TABLE)},
        {"--headings", check(IDS_VQ_X_HEADINGS)},
        {"--entities", check(IDS_VQ_X_ENTITIES)},
        {"--strict", check(IDS_VQ_X_STRICT)}};
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    QPushButton* const go =
        buttons->addButton(Label(IDS_VQ_X_EXPORT), QDialogButtonBox::AcceptRole);
    m_form->addRow(buttons);
    go->setDefault(true); // once it is the dialog's
    connect(buttons, &QDialogButtonBox::accepted, this, &ExportForm::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ExportForm::reject);
    connect(m_format, &QComboBox::currentIndexChanged, this, [this] { ShowFormat(); });
    connect(browse, &QPushButton::clicked, this, [this] {
        // Whether to replace a file is asked when the dialog ends, for typed names too.
        const QString name = QFileDialog::getSaveFileName(this, {}, m_file->text(), {}, nullptr,
                                                          QFileDialog::DontConfirmOverwrite);
        if (!name.isEmpty())
            m_file->setText(name);
    });
    const CString last = VNGetProfileString(kRoot, kSection, "format", NameOf(Format::Csv));
    m_format->setCurrentIndex(
        static_cast<int>(FormatOf(static_cast<const char*>(last)).value_or(Format::Csv)));
    ShowFormat();
    for (QLabel* label : findChildren<QLabel*>()) // a mark within a word makes Arabic wider
        label->setMinimumWidth(label->sizeHint().width() + 2 * fontMetrics().averageCharWidth());
    setMinimumWidth(fontMetrics().averageCharWidth() * 60);
}

Format ExportForm::ChosenFormat() const { return static_cast<Format>(m_format->currentIndex()); }

void ExportForm::ShowFormat() {
    const Format format = ChosenFormat();
    ConnectionKeys kept = UsualFields(format);
    const CString text = VNGetProfileString(kRoot, kSection, NameOf(format), "");
    for (auto& key : ParseConnection(static_cast<const char*>(text)))
        kept.push_back(std::move(key));
    for (const Field& field : m_fields) {
        for (const auto& [option, value] : kept)
            if (option == field.option)
                SetField(field.widget,
                         value == "\t" ? Label(IDS_VQ_X_TAB) : QString::fromStdString(value));
        const bool isTaken = HasOption(format, field.option);
        field.widget->setEnabled(isTaken);
        if (QWidget* const label = m_form->labelForField(field.widget))
            label->setEnabled(isTaken);
    }
    SetField(std::ranges::find(m_fields, std::string_view("--table"), &Field::option)->widget,
             QString::fromStdString(m_table));
    const QFileInfo file(m_file->text());
    const QString ending = QLatin1String(kEndings[m_format->currentIndex()]);
    if (m_file->text().isEmpty())
        m_file->setPlaceholderText(QString::fromStdString(m_table) + u'.' + ending);
    else if (std::ranges::find(kEndings, file.suffix().toStdString()) != std::end(kEndings))
        m_file->setText(m_file->text().chopped(file.suffix().size()) + ending);
}

std::string ExportForm::TextOf(const char* option) const {
    return GetField(std::ranges::find(m_fields, std::string_view(option), &Field::option)->widget)
        .toStdString();
}

bool ExportForm::Complain(const QString& text, const char* option) {
    QMessageBox::warning(this, Label(IDS_VQ_APP), text);
    const auto field = std::ranges::find(m_fields, std::string_view(option), &Field::option);
    (field != m_fields.end() ? field->widget : m_file)->setFocus();
    return false;
}

bool ExportForm::ReadFormat() {
    ExportFormat& format = m_request.format;
    format = ExportFormat();
    format.format = ChosenFormat();
    const auto takes = [&](const char* option) { return HasOption(format.format, option); };
    const auto choice = [this](const char* option) { return std::stoi(TextOf(option)); };
    bool isNumber = false;
    if (takes("--ccsid")) {
        const QString text = QString::fromStdString(TextOf("--ccsid")).trimmed();
        const WORD ccsid = text.section(u' ', 0, 0).toUShort(&isNumber);
        if (!isNumber)
            return Complain(Label(IDS_VQ_X_BAD_CCSID, {text.toStdString()}), "--ccsid");
        if (ccsid != 0 && !CanTranslateCCSID(GetNativeCCSID(), ccsid))
            return Complain(Label(IDS_VQ_CL_UNKNOWN_CCSID, {std::to_string(ccsid)}), "--ccsid");
        format.ccsid = ccsid == kUtf8 ? WORD{0} : ccsid;
    }
    if (takes("--record-length")) {
        const std::string text = TextOf("--record-length");
        format.recordLength = QString::fromStdString(text).toInt(&isNumber);
        if (!isNumber || format.recordLength < 0 || format.recordLength > kMaxRecord)
            return Complain(Label(IDS_VQ_X_BAD_LENGTH, {text}), "--record-length");
    }
    if (takes("--line-break"))
        format.lineBreak = static_cast<LineBreak>(choice("--line-break"));
    if (takes("--line-ends"))
        format.lineEnds = static_cast<LineEnds>(choice("--line-ends"));
    if (takes("--separator")) {
        const std::string text = TextOf("--separator");
        format.separator = text == Text(IDS_VQ_X_TAB) ? "\t" : text;
        if (!IsSeparator(format.format, *format.separator))
            return Complain(Sentence(Text(IDS_VQ_CL_BAD_SEPARATOR, {text})), "--separator");
    }
    if (takes("--blobs"))
        format.hexBlobs = choice("--blobs") == 1;
    if (takes("--null"))
        format.nullText = TextOf("--null");
    if (takes("--headings"))
        format.headings = choice("--headings") == 1;
    format.table = TextOf("--table");
    format.entities = takes("--entities") && choice("--entities") == 1;
    format.strict = takes("--strict") && choice("--strict") == 1;
    return true;
}

bool ExportForm::ReadFile() {
    m_request.file = m_file->text().toStdString();
    if (m_request.file.empty())
        return Complain(Label(IDS_VQ_X_NO_FILE), "");
    return !QFileInfo(m_file->text()).isFile() ||
           QMessageBox::question(this, Label(IDS_VQ_APP), Label(IDS_VQ_X_EXISTS, {m_request.file}),
                                 QMessageBox::Yes | QMessageBox::No,
                                 QMessageBox::No) == QMessageBox::Yes;
}

void ExportForm::accept() {
    if (!ReadFormat() || !ReadFile())
        return;
    m_request.rows = static_cast<ExportRows>(m_rows->currentIndex());
    ConnectionKeys kept;
    for (const Field& field : m_fields)
        if (std::string_view(field.option) != "--table" && field.widget->isEnabled())
            kept.emplace_back(field.option, GetField(field.widget).toStdString());
    CProfileBatch batch;
    batch.WriteString(kRoot, kSection, "format", NameOf(ChosenFormat()));
    batch.WriteString(kRoot, kSection, NameOf(ChosenFormat()), MakeConnection(kept).c_str());
    batch.Commit(); // else it is not remembered
    QDialog::accept();
}

} // namespace vnquery

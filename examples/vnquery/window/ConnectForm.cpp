#include "vnquery/window/ConnectForm.h"

#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/ConnectionText.h"
#include "vnquery/sources/DataSources.h"
#include "vnquery/sources/SavedConnections.h"
#include "vnquery/window/Help.h"
#include "vnquery/window/KeptPassword.h"
#include "vnquery/window/Label.h"
#include "vnquery/window/RunTask.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

namespace vnquery {

namespace {

constexpr char kPassword[] = "PWD";

std::string TextOf(const QLineEdit* field) { return field->text().trimmed().toStdString(); }

bool Is(const std::string& key, std::initializer_list<std::string_view> names) {
    return std::ranges::find(names, ToUpper(key)) != names.end();
}

} // namespace

std::optional<Connection> OpenSavedConnection(QWidget* parent, const std::string& name) {
    std::optional<SavedConnection> saved = FindSavedConnection(name);
    if (!saved || !saved->hasPassword)
        return saved ? std::optional(saved->connection) : std::nullopt;
    const QString shown = QString::fromStdString(name);
    std::optional<QString> password = ReadPassword(shown);
    bool isGiven = password.has_value();
    if (!isGiven)
        password = QInputDialog::getText(parent, Label(IDS_VQ_D_TITLE),
                                         Label(IDS_VQ_P_ASK_PASSWORD, {name}), QLineEdit::Password,
                                         {}, &isGiven);
    if (!isGiven)
        return {};
    std::string& text = saved->connection.dataSource;
    text += (text.empty() || text.ends_with(';') ? "" : ";") +
            MakeConnection({{kPassword, password->toStdString()}});
    return saved->connection;
}

QString AskForDatabase(QWidget* parent, const QString& from) {
    const QString filter = Label(IDS_VQ_DATABASE_FILES) +
                           QStringLiteral(" (*.sqlite *.sqlite3 *.db *.db3);;") +
                           Label(IDS_VQ_ALL_FILES) + QStringLiteral(" (*)");
    return QFileDialog::getOpenFileName(parent, {}, from, filter);
}

ConnectForm::ConnectForm(QWidget* parent) : QDialog(parent) {
    setWindowTitle(PlainLabel(IDS_VQ_D_TITLE));
    AddHelp(this, 1);
    Build();
    FillSaved();
    m_saved->clearEditText();
    connect(m_kind, &QComboBox::currentIndexChanged, this, [this] { ShowKind(); });
    connect(m_saved, &QComboBox::activated, this, [this] { ShowSaved(); });
    connect(m_string, &QLineEdit::editingFinished, this, [this] { TakePassword(); });
    connect(m_driver, &QComboBox::currentTextChanged, this, [this](const QString& driver) {
        const QString name = driver.toUpper();
        m_port->setPlaceholderText(name.contains(QLatin1String("POSTGRES")) ? QStringLiteral("5432")
                                   : name.contains(QLatin1String("MARIA")) ||
                                           name.contains(QLatin1String("MYSQL"))
                                       ? QStringLiteral("3306")
                                       : QString());
    });
    // Those for one character set lose the others' characters.
    m_driver->setCurrentIndex(std::max(m_driver->findText("Unicode", Qt::MatchContains), 0));
    Q_EMIT m_driver->currentTextChanged(m_driver->currentText());
    ShowKind();
}

void ConnectForm::Build() {
    m_form = new QFormLayout(this);
    const auto line = [this](UINT label) {
        auto* const field = new QLineEdit;
        m_form->addRow(Label(label), field);
        return field;
    };
    const auto button = [](QHBoxLayout* row, UINT label, auto action) {
        auto* const pushed = new QPushButton(Label(label));
        pushed->setAutoDefault(false);
        row->addWidget(pushed);
        connect(pushed, &QPushButton::clicked, action);
    };
    const auto row = [this](UINT label, QWidget* field) {
        auto* const fields = new QHBoxLayout;
        fields->addWidget(field, 1);
        m_form->addRow(Label(label), fields);
        qobject_cast<QLabel*>(m_form->labelForField(fields))->setBuddy(field);
        return fields;
    };
    m_saved = new QComboBox;
    m_saved->setEditable(true);
    m_saved->setInsertPolicy(QComboBox::NoInsert);
    m_saved->lineEdit()->setAccessibleName(PlainLabel(IDS_VQ_P_SAVED));
    QHBoxLayout* const saved = row(IDS_VQ_P_SAVED, m_saved);
    button(saved, IDS_VQ_P_SAVE_AS, [this] { Save(); });
    button(saved, IDS_VQ_G_DELETE, [this] { Remove(); });
    m_kind = new QComboBox;
    for (const int kind :
         {IDS_VQ_P_K_FILE, IDS_VQ_P_K_SERVER, IDS_VQ_P_K_SOURCE, IDS_VQ_P_K_STRING})
        m_kind->addItem(Label(static_cast<UINT>(kind)));
    m_form->addRow(Label(IDS_VQ_P_KIND), m_kind);
    m_file = new QLineEdit;
    button(row(IDS_VQ_X_FILE, m_file), IDS_VQ_BROWSE, [this] {
        const QString file = AskForDatabase(this, m_file->text());
        if (!file.isEmpty())
            m_file->setText(file);
    });
    const auto list = [this](UINT label, const std::vector<std::string>& names) {
        auto* const combo = new QComboBox;
        for (const std::string& name : names)
            combo->addItem(QString::fromStdString(name));
        m_form->addRow(Label(label), combo);
        return combo;
    };
    m_driver = list(IDS_VQ_P_DRIVER, ListDrivers());
    m_server = line(IDS_VQ_P_SERVER);
    m_port = line(IDS_VQ_P_PORT);
    m_database = line(IDS_VQ_W_DATABASE);
    m_more = line(IDS_VQ_P_MORE);
    m_more->setPlaceholderText(QStringLiteral("SSLmode=require;"));
    m_source = list(IDS_VQ_D_SOURCES, ListDataSources());
    m_string = line(IDS_VQ_D_STRING);
    m_user = line(IDS_VQ_P_USER);
    m_password = line(IDS_VQ_P_PASSWORD);
    m_password->setEchoMode(QLineEdit::Password);
    m_keep = new QCheckBox(Label(IDS_VQ_P_KEEP));
    m_form->addRow(m_keep);
    m_message = new QLabel;
    m_message->setWordWrap(true);
    m_form->addRow(m_message);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    QPushButton* const go =
        buttons->addButton(Label(IDS_VQ_D_CONNECT), QDialogButtonBox::AcceptRole);
    QPushButton* const test =
        buttons->addButton(Label(IDS_VQ_P_TEST), QDialogButtonBox::ActionRole);
    connect(test, &QPushButton::clicked, this, [this] { Test(); });
    connect(buttons, &QDialogButtonBox::accepted, this, &ConnectForm::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ConnectForm::reject);
    m_form->addRow(buttons);
    go->setDefault(true);                         // once it is the dialog's
    for (QLabel* label : findChildren<QLabel*>()) // a mark within a word makes Arabic wider
        label->setMinimumWidth(label->sizeHint().width() + 2 * fontMetrics().averageCharWidth());
    setMinimumWidth(fontMetrics().averageCharWidth() * 70);
}

void ConnectForm::ShowKind() {
    const int kind = m_kind->currentIndex();
    const auto show = [this](bool isShown, std::initializer_list<QWidget*> fields) {
        for (QWidget* field : fields)
            m_form->setRowVisible(field, isShown);
    };
    for (int i = 0; i < m_form->rowCount(); ++i) // the file's row is a layout
        if (QLayout* const fields = m_form->itemAt(i, QFormLayout::FieldRole)->layout())
            if (fields->indexOf(m_file) >= 0)
                m_form->setRowVisible(fields, kind == kFile);
    show(kind == kServer, {m_driver, m_server, m_port, m_database, m_more});
    show(kind == kSource, {m_source});
    show(kind == kString, {m_string});
    show(kind == kServer || kind == kSource, {m_user});
    show(kind != kFile, {m_password, m_keep});
    m_keep->setEnabled(CanKeepPasswords());
    m_message->setText(kind == kServer && m_driver->count() == 0 ? Label(IDS_VQ_P_NO_DRIVERS)
                                                                 : QString());
}

/// Shows the kind that has a field for each of the string's keys.
void ConnectForm::SetConnection(const Connection& connection) {
    m_file->setText(QString::fromStdString(connection.file));
    ConnectionKeys more;
    Kind kind = connection.dataSource.empty() ? kFile : kString;
    for (QLineEdit* field : {m_server, m_port, m_database, m_user, m_password, m_string, m_more})
        field->clear();
    for (const auto& [key, value] : ParseConnection(connection.dataSource)) {
        const QString text = QString::fromStdString(value);
        const bool isDriver = Is(key, {"DRIVER"});
        QComboBox* const list = isDriver ? m_driver : Is(key, {"DSN"}) ? m_source : nullptr;
        QLineEdit* const field = Is(key, {"SERVER", "SERVERNAME"})  ? m_server
                                 : Is(key, {"PORT"})                ? m_port
                                 : Is(key, {"DATABASE"})            ? m_database
                                 : Is(key, {"UID", "USER"})         ? m_user
                                 : Is(key, {kPassword, "PASSWORD"}) ? m_password
                                                                    : nullptr;
        if (list && list->findText(text) >= 0) {
            list->setCurrentIndex(list->findText(text));
            kind = isDriver ? kServer : kSource;
        } else if (field) {
            field->setText(text);
        } else {
            more.emplace_back(key, value);
        }
    }
    const bool hasServer =
        !TextOf(m_server).empty() || !TextOf(m_port).empty() || !TextOf(m_database).empty();
    if (kind == kSource && (!more.empty() || hasServer))
        kind = kString;
    m_more->setText(QString::fromStdString(MakeConnection(more)));
    m_string->setText(QString::fromStdString(RemovePasswords(connection.dataSource)));
    m_kind->setCurrentIndex(kind);
    ShowKind();
}

Connection ConnectForm::GetConnection() const {
    Connection connection = ReadFields();
    const std::string name = m_saved->currentText().trimmed().toStdString();
    const std::optional<SavedConnection> saved = FindSavedConnection(name);
    if (saved && saved->connection.file == connection.file &&
        saved->connection.dataSource == RemovePasswords(connection.dataSource))
        connection.name = name;
    return connection;
}

Connection ConnectForm::ReadFields() const {
    const int kind = m_kind->currentIndex();
    if (kind == kFile)
        return {TextOf(m_file), {}};
    ConnectionKeys keys;
    const auto add = [&](const char* key, const std::string& value) {
        if (!value.empty())
            keys.emplace_back(key, value);
    };
    std::string before;
    std::string after;
    if (kind == kServer) {
        before = "Driver={" + m_driver->currentText().toStdString() + "};"; // always in braces
        add("Server", TextOf(m_server));
        add("Port", TextOf(m_port));
        add("Database", TextOf(m_database));
        after = TextOf(m_more);
    } else if (kind == kSource) {
        add("DSN", m_source->currentText().toStdString());
    } else {
        before = TextOf(m_string);
        before += before.empty() || before.ends_with(';') ? "" : ";";
    }
    if (kind != kString)
        add("UID", m_user->text().toStdString());
    add(kPassword, m_password->text().toStdString());
    return {{}, before + MakeConnection(keys) + after};
}

void ConnectForm::TakePassword() {
    const std::string text = m_string->text().toStdString();
    const std::string open = RemovePasswords(text);
    if (open == text)
        return;
    for (const auto& [key, value] : ParseConnection(text))
        if (Is(key, {kPassword, "PASSWORD"}))
            m_password->setText(QString::fromStdString(value));
    m_string->setText(QString::fromStdString(open));
}

bool ConnectForm::IsComplete() {
    TakePassword();
    const int kind = m_kind->currentIndex();
    QWidget* const needed[] = {m_file, m_driver, m_source, m_string};
    constexpr UINT kLabels[] = {IDS_VQ_X_FILE, IDS_VQ_P_DRIVER, IDS_VQ_D_SOURCES, IDS_VQ_D_STRING};
    const auto* const field = qobject_cast<QLineEdit*>(needed[kind]);
    if (field ? !TextOf(field).empty()
              : !qobject_cast<QComboBox*>(needed[kind])->currentText().isEmpty())
        return true;
    m_message->setText(Label(IDS_VQ_P_INCOMPLETE, {PlainLabel(kLabels[kind]).toStdString()}));
    needed[kind]->setFocus();
    return false;
}

void ConnectForm::accept() {
    if (IsComplete())
        QDialog::accept();
}

void ConnectForm::Test() {
    if (!IsComplete())
        return;
    const auto server = std::make_shared<std::string>();
    m_message->clear();
    if (RunTask(
            this, IDS_VQ_P_TESTING,
            [server, connection = GetConnection()](Progress&) {
                *server = DescribeServer(connection);
            },
            false))
        m_message->setText(Label(IDS_VQ_P_WORKS, {*server}));
}

// --- saved connections ---------------------------------------------------------------------------

void ConnectForm::FillSaved() {
    const QString name = m_saved->currentText();
    m_saved->clear();
    for (const std::string& saved : ListSavedConnections())
        m_saved->addItem(QString::fromStdString(saved));
    m_saved->setEditText(name);
}

void ConnectForm::ShowSaved() {
    const QString name = m_saved->currentText();
    const std::optional<SavedConnection> saved = FindSavedConnection(name.toStdString());
    if (!saved)
        return;
    SetConnection(saved->connection);
    const std::optional<QString> password = saved->hasPassword ? ReadPassword(name) : std::nullopt;
    m_keep->setChecked(password.has_value());
    m_password->setText(password.value_or(QString()));
}

void ConnectForm::Save() {
    const QString name = m_saved->currentText().trimmed();
    if (name.isEmpty()) {
        m_message->setText(Label(IDS_VQ_P_INCOMPLETE, {PlainLabel(IDS_VQ_P_SAVED).toStdString()}));
        return m_saved->setFocus();
    }
    if (!IsComplete())
        return;
    if (!SaveConnection(name.toStdString(), GetConnection()))
        return m_message->setText(Label(IDS_VQ_P_NOT_SAVED));
    const QString fault = KeepPassword(name, m_keep->isChecked() ? m_password->text() : QString());
    m_message->setText(fault.isEmpty() ? QString()
                                       : Label(IDS_VQ_P_NOT_KEPT, {fault.toStdString()}));
    FillSaved();
}

void ConnectForm::Remove() {
    const QString name = m_saved->currentText().trimmed();
    if (!FindSavedConnection(name.toStdString()))
        return;
    if (!RemoveConnection(name.toStdString()))
        return m_message->setText(Label(IDS_VQ_P_NOT_SAVED));
    KeepPassword(name, {});
    m_saved->clearEditText();
    FillSaved();
}

} // namespace vnquery

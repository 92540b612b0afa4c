#include "vnquery/window/VariablesDialog.h"

#include "vnquery/window/Help.h"
#include "vnquery/window/IsolatingDelegate.h"
#include "vnquery/window/Label.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Profile.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace vnquery {

namespace {

constexpr UINT kOptionsRoot = 3;
constexpr int kBuiltIns = 60; ///< entries that are not the user's, including the unnamed first one
constexpr int kValueColumn = 1;
constexpr int kCheckOnly = 1;

/// Why a name cannot be added.
UINT ComplaintOf(int status) {
    switch (status) {
    case CGlobalVars::ReservedPrefix:
        return IDS_VQ_G_RESERVED;
    case CGlobalVars::Duplicate:
        return IDS_VQ_G_DUPLICATE;
    case CGlobalVars::EmptyName:
        return IDS_VQ_G_EMPTY;
    default:
        return IDS_VQ_G_CHARACTER;
    }
}

QString MeaningOf(const std::string& name) {
    CString text;
    const CGlobalVars::GlobalVarIDs id = CGlobalVars::GetIDFromName(name.c_str());
    return CGlobalVars::GetDescriptionFromID(id, text) == CGlobalVars::Success
               ? QString::fromUtf8(static_cast<const char*>(text))
               : Label(IDS_VQ_G_OWN);
}

bool AreOwnKept() { return VNGetProfileDWORD(kOptionsRoot, "Options", "SaveGlobals", 0) != 0; }

/// Whether some values exist only here, since saving failed: reading must not replace them.
bool hasUnsaved = false;

/// Reads the table again. Values that are in no profile are kept: those that the program sets, and
/// the user's variables if they are not saved.
void ReadSaved() {
    if (hasUnsaved)
        return;
    CGlobalVars& globals = GetGlobals();
    std::vector<std::pair<CString, CString>> own;
    std::vector<std::pair<CString, CString>> programs;
    CString name;
    CString value;
    for (int i = 1; i < globals.GetSize(); ++i) {
        globals.GetGlobalVariable(i, name, value);
        if (i >= kBuiltIns && !AreOwnKept())
            own.emplace_back(name, value);
        else if (i < kBuiltIns && !VNIsProfileValue(kOptionsRoot, "Global Variables", name))
            programs.emplace_back(name, value);
    }
    globals.Initialize();
    for (const auto& [variable, text] : programs)
        globals.SetGlobalVarValue(&variable, &text);
    for (const auto& [variable, text] : own) {
        int added = 0;
        globals.AddGlobalVariable(&variable, &text, added);
        globals.SetGlobalVarValue(&variable, &text); // unchanged, even a single apostrophe
    }
}

void Tell(QWidget* parent, const QString& text) {
    QMessageBox::warning(parent, Label(IDS_VQ_APP), text);
}

} // namespace

VariablesDialog::VariablesDialog(QWidget* parent) : QDialog(parent) {
    setWindowTitle(PlainLabel(IDS_VQ_G_TITLE));
    AddHelp(this, 7);
    m_table = new QTableWidget(0, 3);
    m_table->setAccessibleName(windowTitle());
    m_table->setHorizontalHeaderLabels(
        {Label(IDS_VQ_G_NAME), Label(IDS_VQ_G_VALUE), Label(IDS_VQ_G_MEANING)});
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setTabKeyNavigation(false);
    m_table->setItemDelegate(new IsolatingDelegate(m_table));
    m_keep = new QCheckBox(Label(IDS_VQ_G_KEEP));
    m_keep->setChecked(AreOwnKept());
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    const auto button = [&](UINT text, auto action) {
        QPushButton* const added = buttons->addButton(Label(text), QDialogButtonBox::ActionRole);
        added->setAutoDefault(false);
        connect(added, &QPushButton::clicked, this, action);
    };
    button(IDS_VQ_G_ADD, [this] { Add(); });
    button(IDS_VQ_G_DELETE, [this] { Delete(); });
    auto* const all = new QVBoxLayout(this);
    all->addWidget(new QLabel(Label(IDS_VQ_G_HINT)));
    all->addWidget(m_table);
    all->addWidget(m_keep);
    all->addWidget(buttons);
    connect(m_table, &QTableWidget::itemChanged, this,
            [this](const QTableWidgetItem* item) { TakeValue(*item); });
    connect(buttons, &QDialogButtonBox::accepted, this, &VariablesDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &VariablesDialog::reject);
    ReadVariables();
    m_table->resizeColumnsToContents();
    resize(fontMetrics().averageCharWidth() * 110, fontMetrics().height() * 30);
}

void VariablesDialog::ReadVariables() {
    ReadSaved();
    CGlobalVars& globals = GetGlobals();
    CString name;
    CString value;
    for (int i = 1; i < globals.GetSize(); ++i) {
        if (globals.GetGlobalVariable(i, name, value) != CGlobalVars::Success || name.IsEmpty())
            continue;
        constexpr int kByUser = 1;
        const bool isReadOnly =
            globals.SetGlobalVarValue(&name, &value, nullptr, nullptr, kCheckOnly, kByUser) ==
            CGlobalVars::ProgramOnly;
        m_rows.push_back({static_cast<const char*>(name), static_cast<const char*>(value),
                          i >= kBuiltIns, false, isReadOnly});
        m_table->insertRow(m_table->rowCount());
        ShowRow(m_table->rowCount() - 1);
    }
}

void VariablesDialog::ShowRow(int row) {
    const Row& shown = m_rows[static_cast<std::size_t>(row)];
    const QString texts[] = {QString::fromStdString(shown.name),
                             QString::fromStdString(shown.value),
                             shown.isOwn ? Label(IDS_VQ_G_OWN) : MeaningOf(shown.name)};
    m_isFilling = true;
    for (int column = 0; column < 3; ++column) {
        auto* const item = new QTableWidgetItem(texts[column]);
        item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        item->setFlags(
            item->flags().setFlag(Qt::ItemIsEditable, column == kValueColumn && !shown.isReadOnly));
        if (shown.isReadOnly)
            item->setForeground(palette().brush(QPalette::Disabled, QPalette::Text));
        m_table->setItem(row, column, item);
    }
    m_isFilling = false;
}

void VariablesDialog::TakeValue(const QTableWidgetItem& item) {
    if (m_isFilling || item.column() != kValueColumn)
        return;
    const int at = item.row();
    Row& row = m_rows[static_cast<std::size_t>(at)];
    const std::string text = item.text().toStdString();
    const CString name(row.name.c_str());
    const CString wanted(text.c_str());
    if (!row.isOwn && GetGlobals().Validate(&name, &wanted, nullptr) != CGlobalVars::Success) {
        ShowRow(at);
        Tell(this, Label(IDS_VQ_G_BAD_VALUE, {row.name, text}));
        return;
    }
    row.isChanged = row.isChanged || row.value != text;
    row.value = text;
}

void VariablesDialog::Add() {
    bool isGiven = false;
    const QString typed =
        QInputDialog::getText(this, Label(IDS_VQ_G_NEW_TITLE), PlainLabel(IDS_VQ_G_NEW_NAME),
                              QLineEdit::Normal, {}, &isGiven);
    if (!isGiven)
        return;
    CString name(typed.toStdString().c_str());
    name.MakeUpper();
    const CString value;
    int added = 0;
    Row row{static_cast<const char*>(name), {}, true, true, false};
    const bool isHere = std::ranges::find(m_rows, row.name, &Row::name) != m_rows.end();
    const bool wasDeleted = std::erase(m_deleted, row.name) > 0;
    const int status = isHere ? CGlobalVars::Duplicate
                       : wasDeleted
                           ? CGlobalVars::Success
                           : GetGlobals().AddGlobalVariable(&name, &value, added, kCheckOnly);
    if (status != CGlobalVars::Success)
        return Tell(this, Label(ComplaintOf(status), {row.name}));
    m_rows.push_back(std::move(row));
    const int last = m_table->rowCount();
    m_table->insertRow(last);
    ShowRow(last);
    m_table->setCurrentCell(last, kValueColumn);
    m_table->editItem(m_table->item(last, kValueColumn));
}

void VariablesDialog::Delete() {
    const int selected = m_table->currentRow();
    if (selected < 0)
        return;
    const auto row = m_rows.begin() + selected;
    if (!row->isOwn)
        return Tell(this, Label(IDS_VQ_G_BUILT_IN, {row->name}));
    m_deleted.push_back(row->name);
    m_rows.erase(row);
    m_table->removeRow(selected);
}

bool VariablesDialog::HasChanges() const {
    return !m_deleted.empty() || std::ranges::any_of(m_rows, &Row::isChanged) ||
           m_keep->isChecked() != AreOwnKept();
}

bool VariablesDialog::ApplyChanges() {
    ReadSaved();
    CGlobalVars& globals = GetGlobals();
    for (const std::string& name : m_deleted) {
        const CString variable(name.c_str());
        globals.DeleteGlobalVariable(&variable, 0, 1);
    }
    for (const Row& row : m_rows) {
        if (!row.isChanged)
            continue;
        const CString name(row.name.c_str());
        const CString value(row.value.c_str());
        int added = 0;
        if (row.isOwn)
            globals.AddGlobalVariable(&name, &value, added);
        if (!added)
            globals.SetGlobalVarValue(&name, &value);
    }
    const bool keep = m_keep->isChecked();
    const bool isKept = AreOwnKept() == keep ||
                        VNWriteProfileDWORD(kOptionsRoot, "Options", "SaveGlobals", keep ? 1 : 0);
    hasUnsaved = globals.SaveToRegistry() != CGlobalVars::Success;
    return !hasUnsaved && isKept;
}

void VariablesDialog::accept() {
    m_table->setCurrentCell(-1, -1); // what is still being typed
    CString trouble;
    if (HasChanges() && !ApplyChanges()) {
        VNGetProfileStatus(&trouble);
        Tell(this, Label(IDS_VQ_G_NOT_SAVED) + QLatin1String("\n\n") +
                       QString::fromUtf8(static_cast<const char*>(trouble)));
    }
    QDialog::accept();
}

} // namespace vnquery

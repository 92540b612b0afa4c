#include "vnquery/window/HistoryPane.h"

#include "vnquery/tasks/Failure.h"
#include "vnquery/window/IsolatingDelegate.h"
#include "vnquery/window/Label.h"

#include <QDateTime>
#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTabBar>
#include <QTreeView>
#include <QVBoxLayout>

namespace vnquery {

namespace {

constexpr int kSqlRole = Qt::UserRole;

QStandardItem* MakeItem(const QString& text, const QString& sql) {
    auto* const item = new QStandardItem(text);
    item->setEditable(false);
    item->setData(sql, kSqlRole);
    item->setToolTip(sql.left(2000));
    return item;
}

/// In one line.
QString Preview(const QString& sql) {
    constexpr int kMost = 200;
    return sql.left(4 * kMost).simplified().left(kMost);
}

} // namespace

HistoryPane::HistoryPane(QWidget* parent)
    : QTabWidget(parent), m_clear(new QPushButton), m_save(new QPushButton),
      m_rename(new QPushButton), m_delete(new QPushButton), m_ran(MakePage({m_clear})),
      m_saved(MakePage({m_save, m_rename, m_delete})) {
    setFocusPolicy(Qt::NoFocus); // its bar has the keys
    tabBar()->setFocusPolicy(Qt::TabFocus);
    connect(m_clear, &QPushButton::clicked, this, &HistoryPane::Clear);
    connect(m_save, &QPushButton::clicked, this, &HistoryPane::SaveAsked);
    connect(m_rename, &QPushButton::clicked, this, &HistoryPane::Rename);
    connect(m_delete, &QPushButton::clicked, this, &HistoryPane::Delete);
    Relabel();
    m_ran.list->header()->setStretchLastSection(false);
    m_ran.list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    ReadSaved();
}

HistoryPane::Page HistoryPane::MakePage(std::initializer_list<QPushButton*> buttons) {
    Page page{new QWidget, new QLineEdit, new QTreeView, new QStandardItemModel(this),
              new QSortFilterProxyModel(this)};
    page.search->setClearButtonEnabled(true);
    page.found->setSourceModel(page.model);
    page.found->setFilterKeyColumn(-1);
    page.found->setFilterRole(kSqlRole + 1);
    page.found->setFilterCaseSensitivity(Qt::CaseInsensitive);
    page.list->setModel(page.found);
    page.list->setItemDelegate(new IsolatingDelegate(page.list));
    page.list->setRootIsDecorated(false);
    page.list->setUniformRowHeights(true);
    page.list->setAlternatingRowColors(true);
    auto* const top = new QHBoxLayout;
    top->addWidget(page.search, 1);
    for (QPushButton* const button : buttons)
        top->addWidget(button);
    auto* const layout = new QVBoxLayout(page.widget);
    layout->addLayout(top);
    layout->addWidget(page.list);
    addTab(page.widget, QString());
    connect(page.search, &QLineEdit::textChanged, page.found,
            &QSortFilterProxyModel::setFilterFixedString);
    connect(page.list, &QTreeView::activated, this,
            [this](const QModelIndex& index) { Q_EMIT Chosen(index.data(kSqlRole).toString()); });
    return page;
}

void HistoryPane::Relabel() {
    tabBar()->setAccessibleName(Label(IDS_VQ_C_HISTORY));
    setTabText(0, Label(IDS_VQ_C_HISTORY));
    setTabText(1, Label(IDS_VQ_C_SAVED));
    // Without letters to press: a pane behind another one would take those of the menus.
    m_clear->setText(PlainLabel(IDS_VQ_C_CLEAR));
    m_save->setText(PlainLabel(IDS_VQ_C_SAVE));
    m_rename->setText(PlainLabel(IDS_VQ_C_RENAME));
    m_delete->setText(PlainLabel(IDS_VQ_G_DELETE));
    for (const Page& page : {m_ran, m_saved}) {
        page.search->setPlaceholderText(Label(IDS_VQ_C_SEARCH));
        page.search->setAccessibleName(Label(IDS_VQ_C_SEARCH));
    }
    m_ran.list->setAccessibleName(Label(IDS_VQ_C_HISTORY));
    m_saved.list->setAccessibleName(Label(IDS_VQ_C_SAVED));
    m_ran.model->setHorizontalHeaderLabels({Label(IDS_VQ_C_SQL), Label(IDS_VQ_C_WHEN),
                                            Label(IDS_VQ_C_TOOK), Label(IDS_VQ_C_OUTCOME),
                                            Label(IDS_VQ_C_TREE)});
    m_saved.model->setHorizontalHeaderLabels({Label(IDS_VQ_C_NAME), Label(IDS_VQ_C_SQL)});
}

void HistoryPane::changeEvent(QEvent* event) {
    QTabWidget::changeEvent(event);
    if (event->type() != QEvent::LanguageChange)
        return;
    Relabel();
    if (isVisible())
        ReadHistory();
}

/// Other processes may have added some.
void HistoryPane::showEvent(QShowEvent* event) {
    QTabWidget::showEvent(event);
    ReadHistory();
    ReadSaved();
}

void HistoryPane::Add(const HistoryEntry& entry) {
    try {
        m_history.Add(entry);
    } catch (const Failure&) {
        // The list says why: it is read from the same file.
    }
    if (isVisible())
        ReadHistory();
}

void HistoryPane::ReadHistory() {
    m_ran.model->setRowCount(0);
    const QLocale locale;
    try {
        for (const HistoryEntry& entry : m_history.GetAll()) {
            const QString sql = QString::fromStdString(entry.sql);
            const QString outcome = !entry.error.empty() ? QString::fromStdString(entry.error)
                                    : entry.rows < 0
                                        ? QString()
                                        : Label(IDS_VQ_W_ROWS, {std::to_string(entry.rows)});
            const QString when =
                locale.toString(QDateTime::fromSecsSinceEpoch(entry.when), QLocale::ShortFormat);
            const double seconds = static_cast<double>(entry.milliseconds) / 1000;
            QList<QStandardItem*> row;
            for (const QString& text :
                 {Preview(sql), when, locale.toString(seconds, 'f', 3) + QStringLiteral(" s"),
                  Preview(outcome), QString::fromStdString(entry.connection)})
                row.append(MakeItem(text, sql));
            row[0]->setData(sql, kSqlRole + 1);
            row[3]->setData(outcome, kSqlRole + 1);
            row[4]->setData(row[4]->text(), kSqlRole + 1);
            m_ran.model->appendRow(row);
        }
    } catch (const Failure& failure) {
        m_ran.model->appendRow(MakeItem(QString::fromUtf8(failure.what()), {}));
    }
    for (const int column : {1, 2})
        m_ran.list->resizeColumnToContents(column);
}

void HistoryPane::ReadSaved() {
    m_saved.model->setRowCount(0);
    for (const auto& [name, text] : SavedQueries::GetAll()) {
        const QString sql = QString::fromStdString(text);
        const QList<QStandardItem*> row = {MakeItem(QString::fromStdString(name), sql),
                                           MakeItem(Preview(sql), sql)};
        row[0]->setData(row[0]->text(), kSqlRole + 1);
        row[1]->setData(sql, kSqlRole + 1);
        m_saved.model->appendRow(row);
    }
}

void HistoryPane::Clear() {
    if (QMessageBox::question(this, Label(IDS_VQ_C_HISTORY), Label(IDS_VQ_C_CLEAR_QUESTION)) !=
        QMessageBox::Yes)
        return;
    try {
        m_history.Clear();
    } catch (const Failure& failure) {
        QMessageBox::warning(this, Label(IDS_VQ_C_HISTORY), QString::fromUtf8(failure.what()));
    }
    ReadHistory();
}

QString HistoryPane::ChosenName() const {
    return m_saved.list->currentIndex().siblingAtColumn(0).data().toString();
}

void HistoryPane::SaveQuery(const QString& sql) { AskName({}, sql); }

void HistoryPane::Rename() {
    if (!ChosenName().isEmpty())
        AskName(ChosenName(), {});
}

void HistoryPane::AskName(const QString& from, const QString& sql) {
    QString title = Label(from.isEmpty() ? IDS_VQ_C_SAVE : IDS_VQ_C_RENAME);
    title.remove(u'&').remove(QStringLiteral("..."));
    const QString name =
        QInputDialog::getText(this, title, Label(IDS_VQ_C_ASK_NAME), QLineEdit::Normal, from)
            .simplified();
    if (name.isEmpty() || name == from)
        return;
    const std::string kept = name.toStdString();
    if (!SavedQueries::Get(kept).empty() &&
        QMessageBox::question(this, title, Label(IDS_VQ_C_REPLACE, {kept})) != QMessageBox::Yes)
        return;
    if (!(from.isEmpty() ? SavedQueries::Save(kept, sql.toStdString())
                         : SavedQueries::Rename(from.toStdString(), kept)))
        QMessageBox::warning(this, title, Label(IDS_VQ_C_NOT_SAVED, {kept}));
    ReadSaved();
    setCurrentWidget(m_saved.widget);
}

void HistoryPane::Delete() {
    const std::string name = ChosenName().toStdString();
    if (name.empty() ||
        QMessageBox::question(this, Label(IDS_VQ_C_SAVED),
                              Label(IDS_VQ_C_DELETE_QUESTION, {name})) != QMessageBox::Yes)
        return;
    if (!SavedQueries::Delete(name))
        QMessageBox::warning(this, Label(IDS_VQ_C_SAVED), Label(IDS_VQ_C_NOT_SAVED, {name}));
    ReadSaved();
}

} // namespace vnquery

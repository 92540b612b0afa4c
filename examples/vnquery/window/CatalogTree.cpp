#include "vnquery/window/CatalogTree.h"

#include "vnquery/window/Icons.h"
#include "vnquery/window/IsolatingDelegate.h"
#include "vnquery/window/Label.h"

#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTreeView>
#include <QVBoxLayout>

namespace vnquery {

namespace {

constexpr int kLookInterval = 20;             ///< milliseconds
constexpr int kTableRole = Qt::UserRole;      ///< of a table: its index in the catalog
constexpr int kAskedRole = Qt::UserRole + 1;  ///< of a table: its columns were asked for
constexpr int kSpokenRole = Qt::UserRole + 3; ///< id of the text that says what the item is
constexpr int kNameRole = Qt::UserRole + 2;   ///< of a column: its name

QStandardItem* MakeItem(const QString& text, const QIcon& icon, UINT spoken) {
    auto* const item = new QStandardItem(icon, text);
    item->setEditable(false);
    item->setData(spoken, kSpokenRole);
    return item;
}

/// In the place of what stands below the item.
void ShowNote(QStandardItem& parent, const QString& text) {
    parent.setRowCount(0);
    QStandardItem* const note = MakeItem(text, {}, 0);
    note->setToolTip(text);
    note->setSelectable(false);
    parent.appendRow(note);
}

} // namespace

/// A table has children, which are read when the view asks for them.
class CatalogTree::Model : public QStandardItemModel {
public:
    explicit Model(CatalogTree& tree) : QStandardItemModel(&tree), m_tree(tree) {}

    /// Made when it is asked for, which is rare.
    QVariant data(const QModelIndex& index, int role) const override {
        const UINT spoken = role == Qt::AccessibleTextRole
                                ? QStandardItemModel::data(index, kSpokenRole).toUInt()
                                : 0;
        return spoken == 0 ? QStandardItemModel::data(index, role)
                           : Label(spoken, {index.data().toString().toStdString()});
    }
    bool hasChildren(const QModelIndex& parent) const override {
        return parent.data(kTableRole).isValid() || QStandardItemModel::hasChildren(parent);
    }
    bool canFetchMore(const QModelIndex& parent) const override {
        return parent.data(kTableRole).isValid() && !parent.data(kAskedRole).toBool();
    }
    void fetchMore(const QModelIndex& parent) override { m_tree.OpenTable(*itemFromIndex(parent)); }

private:
    CatalogTree& m_tree;
};

/// What is read in the background, and what is done with it in the window.
class CatalogTree::Job {
public:
    Job(std::function<void()> read, std::function<void(const QString& error)> done)
        : m_read(std::move(read)), m_done(std::move(done)) {}

    void Start() {
        m_task = std::make_unique<BackgroundTask>([this](Progress&) { m_read(); });
    }
    void Cancel() { m_task->Cancel(); }
    bool HasEnded() const { return m_task->GetState() != TaskState::Running; }
    void Finish() {
        if (m_task->GetState() != TaskState::Stopped)
            m_done(QString::fromStdString(m_task->GetMessage()));
    }

private:
    std::function<void()> m_read;
    std::function<void(const QString&)> m_done;
    std::unique_ptr<BackgroundTask> m_task; ///< last, so that it ends before what it uses
};

CatalogTree::CatalogTree(QWidget* parent)
    : QWidget(parent), m_filter(new QLineEdit), m_view(new QTreeView), m_model(new Model(*this)),
      m_found(new QSortFilterProxyModel(this)) {
    m_found->setSourceModel(m_model);
    m_found->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_found->setRecursiveFilteringEnabled(true);
    m_found->setAutoAcceptChildRows(true);
    m_view->setModel(m_found);
    m_view->setItemDelegate(new IsolatingDelegate(m_view));
    m_view->setHeaderHidden(true);
    m_view->setUniformRowHeights(true);
    m_view->setExpandsOnDoubleClick(false);
    m_filter->setClearButtonEnabled(true);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(m_filter);
    layout->addWidget(m_view);
    connect(m_filter, &QLineEdit::textChanged, m_found,
            &QSortFilterProxyModel::setFilterFixedString);
    connect(m_view, &QTreeView::activated, this, &CatalogTree::Activate);
    m_timer.setInterval(kLookInterval);
    connect(&m_timer, &QTimer::timeout, this, &CatalogTree::Look);
    Relabel();
}

/// Does not wait for a server that does not answer.
CatalogTree::~CatalogTree() {
    if (!m_jobs.empty())
        m_cancelled.push_back(std::move(m_jobs.front()));
    for (auto& job : m_cancelled) {
        job->Cancel();
        if (!job->HasEnded())
            LetEnd(std::move(job));
    }
}

void CatalogTree::Relabel() {
    m_filter->setPlaceholderText(Label(IDS_VQ_C_FILTER));
    m_filter->setAccessibleName(Label(IDS_VQ_C_FILTER));
    m_view->setAccessibleName(Label(IDS_VQ_C_TREE));
}

void CatalogTree::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        Relabel();
}

void CatalogTree::SetConnection(const Connection& connection) {
    m_connection = connection;
    Refresh();
}

void CatalogTree::Refresh() {
    // One that runs may take long to notice; its answer is not taken.
    if (!m_jobs.empty()) {
        m_jobs.front()->Cancel();
        m_cancelled.push_back(std::move(m_jobs.front()));
    }
    m_jobs.clear();
    m_catalog.reset();
    m_model->clear();
    if (m_connection.IsEmpty())
        return;
    ShowNote(*m_model->invisibleRootItem(), Label(IDS_VQ_C_READING));
    // Jobs keep what they read; they may outlive this call.
    const auto read = std::make_shared<Catalog>();
    Run([read, connection = m_connection] { *read = ReadCatalog(connection); },
        [this, read](const QString& error) {
            if (!error.isEmpty())
                return ShowNote(*m_model->invisibleRootItem(), error);
            m_catalog = read;
            ShowCatalog();
            Q_EMIT CatalogRead();
            const auto full = std::make_shared<Catalog>(*read);
            Run([full, connection = m_connection] { ReadAllColumns(connection, *full); },
                [this, full](const QString& problem) {
                    if (!problem.isEmpty())
                        return; // completion does without
                    m_catalog = full;
                    Q_EMIT CatalogRead();
                });
        });
}

void CatalogTree::Run(std::function<void()> read, std::function<void(const QString&)> done) {
    m_jobs.push_back(std::make_unique<Job>(std::move(read), std::move(done)));
    if (m_jobs.size() == 1)
        m_jobs.front()->Start();
    m_timer.start();
}

void CatalogTree::Look() {
    if (!m_jobs.empty() && m_jobs.front()->HasEnded()) {
        const std::unique_ptr<Job> job = std::move(m_jobs.front());
        m_jobs.pop_front();
        if (!m_jobs.empty())
            m_jobs.front()->Start();
        job->Finish();
    }
    std::erase_if(m_cancelled, [](const auto& job) { return job->HasEnded(); });
    if (m_jobs.empty() && m_cancelled.empty())
        m_timer.stop();
}

void CatalogTree::ShowCatalog() {
    m_model->clear();
    QStandardItem* parent = m_model->invisibleRootItem();
    const QIcon table = Icon("table");
    const QIcon view = Icon("view");
    const QIcon schema = Icon("folder");
    QList<QStandardItem*> items;
    for (std::size_t at = 0; at < m_catalog->tables.size(); ++at) {
        const CatalogTable& shown = m_catalog->tables[at];
        if (!shown.schema.empty() &&
            (at == 0 || shown.schema != m_catalog->tables[at - 1].schema)) {
            parent->appendRows(items);
            items.clear();
            parent = MakeItem(QString::fromStdString(shown.schema), schema, IDS_VQ_C_SCHEMA);
            m_model->appendRow(parent);
        }
        QStandardItem* const item =
            MakeItem(QString::fromStdString(shown.name), shown.isView ? view : table,
                     shown.isView ? IDS_VQ_C_VIEW : IDS_VQ_C_TABLE);
        item->setData(static_cast<qulonglong>(at), kTableRole);
        items.append(item);
    }
    parent->appendRows(items);
    if (m_catalog->tables.empty())
        ShowNote(*parent, Label(IDS_VQ_C_NO_TABLES));
    if (m_model->rowCount() == 1) // the only schema
        m_view->expand(m_found->index(0, 0));
}

void CatalogTree::OpenTable(QStandardItem& item) {
    item.setData(true, kAskedRole);
    ShowNote(item, Label(IDS_VQ_C_READING));
    const auto read = std::make_shared<CatalogTable>(TableOf(item));
    Run([read, connection = m_connection] { ReadTable(connection, *read); },
        [this, read, index = QPersistentModelIndex(item.index())](const QString& error) {
            QStandardItem* const table = m_model->itemFromIndex(index);
            if (!table)
                return;
            if (!error.isEmpty())
                return ShowNote(*table, error);
            table->setRowCount(0);
            const QIcon columnIcon = Icon("column");
            const QIcon keyIcon = Icon("key");
            for (const CatalogColumn& column : read->columns) {
                std::string text = column.name + " " + column.type;
                text += column.isKey ? " PRIMARY KEY" : column.isNullable ? "" : " NOT NULL";
                if (!column.defaultText.empty())
                    text += " DEFAULT " + column.defaultText;
                QStandardItem* const child =
                    MakeItem(QString::fromStdString(text), column.isKey ? keyIcon : columnIcon,
                             IDS_VQ_C_COLUMN);
                child->setData(QString::fromStdString(column.name), kNameRole);
                table->appendRow(child);
            }
            for (const CatalogIndex& shown : read->indexes) {
                std::string text = shown.name + (shown.isUnique ? " UNIQUE (" : " (");
                for (const std::string& column : shown.columns)
                    text += (&column == shown.columns.data() ? "" : ", ") +
                            (column.empty() ? "..." : column);
                table->appendRow(
                    MakeItem(QString::fromStdString(text + ")"), Icon("index"), IDS_VQ_C_INDEX));
            }
            for (const std::string& name : read->triggers)
                table->appendRow(MakeItem(QString::fromStdString(name + " TRIGGER"),
                                          Icon("media-playback-start"), IDS_VQ_C_TRIGGER));
        });
}

void CatalogTree::ReadDdl(QStandardItem& item) {
    const auto ddl = std::make_shared<std::string>();
    Run([ddl, connection = m_connection,
         table = TableOf(item)] { *ddl = vnquery::ReadDdl(connection, table); },
        [this, ddl, index = QPersistentModelIndex(item.index())](const QString& error) {
            if (error.isEmpty())
                Q_EMIT ShowDdl(QString::fromStdString(*ddl));
            else if (QStandardItem* const table = m_model->itemFromIndex(index))
                ShowNote(*table, error);
        });
}

QStandardItem* CatalogTree::TableAt(const QModelIndex& index) const {
    QStandardItem* item = m_model->itemFromIndex(m_found->mapToSource(index));
    while (item && !item->data(kTableRole).isValid())
        item = item->parent();
    return item;
}

const CatalogTable& CatalogTree::TableOf(const QStandardItem& item) const {
    return m_catalog->tables[item.data(kTableRole).toULongLong()];
}

QString CatalogTree::NameOf(const QStandardItem& item) const {
    return QString::fromStdString(SqlName(TableOf(item), m_catalog->server));
}

void CatalogTree::Activate(const QModelIndex& index) {
    const QStandardItem* const table = TableAt(index);
    if (table && index.data(kTableRole).isValid())
        Q_EMIT Browse(QStringLiteral("select * from ") + NameOf(*table));
    else if (!table)
        m_view->setExpanded(index, !m_view->isExpanded(index));
}

void CatalogTree::contextMenuEvent(QContextMenuEvent* event) {
    const QModelIndex index = m_view->currentIndex();
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (QStandardItem* const table = TableAt(index)) {
        const QString name = NameOf(*table);
        const SqlServer server = m_catalog->server;
        const QVariant column = index.data(kNameRole);
        const QString inserted =
            column.isValid()
                ? QString::fromStdString(SqlName(column.toString().toStdString(), server))
                : name;
        QStringList columns;
        for (const CatalogColumn& each : TableOf(*table).columns)
            columns.append(QString::fromStdString(SqlName(each.name, server)));
        const QPersistentModelIndex place(table->index());
        menu->addAction(Icon("view-list-details"), Label(IDS_VQ_C_BROWSE), this,
                        [this, name] { Q_EMIT Browse(QStringLiteral("select * from ") + name); });
        menu->addAction(Label(IDS_VQ_C_COUNT), this, [this, name] {
            Q_EMIT Count(QStringLiteral("select count(*) from ") + name);
        });
        menu->addSeparator();
        menu->addAction(Icon("insert-text"), Label(IDS_VQ_C_INSERT_NAME), this,
                        [this, inserted] { Q_EMIT Insert(inserted); });
        menu->addAction(Label(IDS_VQ_C_INSERT_COLUMNS), this,
                        [this, columns] { Q_EMIT Insert(columns.join(QStringLiteral(", "))); })
            ->setEnabled(!columns.isEmpty());
        menu->addAction(Icon("code-context"), Label(IDS_VQ_C_DDL), this, [this, place] {
            if (QStandardItem* const item = m_model->itemFromIndex(place))
                ReadDdl(*item);
        });
        menu->addSeparator();
    }
    menu->addAction(Icon("view-refresh"), Label(IDS_VQ_C_REFRESH), this, &CatalogTree::Refresh);
    const QPoint item = m_view->viewport()->mapToGlobal(m_view->visualRect(index).center());
    menu->popup(event->reason() == QContextMenuEvent::Keyboard && index.isValid()
                    ? item
                    : event->globalPos());
}

} // namespace vnquery

// The tree of a database's tables.
#pragma once

#include "vnquery/sources/Catalog.h"
#include "vnquery/tasks/BackgroundTask.h"

#include <QTimer>
#include <QWidget>

#include <deque>
#include <functional>
#include <memory>

class QLineEdit;
class QModelIndex;
class QSortFilterProxyModel;
class QStandardItem;
class QStandardItemModel;
class QTreeView;

namespace vnquery {

/// Schemas, tables and views, below each its columns, indexes and triggers, and a field that filters them by
/// name. All is read in the background; columns and indexes when a table is opened. An error stands
/// in the tree.
class CatalogTree : public QWidget {
    Q_OBJECT

public:
    explicit CatalogTree(QWidget* parent = nullptr);
    ~CatalogTree() override;

    /// Shows what the connection has; nothing for an empty one. Returns at once.
    void SetConnection(const Connection& connection);
    /// What is known so far, with the columns of all tables once they were read; null before the
    /// tables were.
    std::shared_ptr<const Catalog> GetCatalog() const { return m_catalog; }

public Q_SLOTS:
    /// Reads all again.
    void Refresh();

Q_SIGNALS:
    /// GetCatalog has something new: first the tables, then their columns.
    void CatalogRead();
    /// Enter or a double click on a table: the query for its rows.
    void Browse(const QString& sql);
    /// Names for the editor.
    void Insert(const QString& text);
    void ShowDdl(const QString& ddl);
    /// The query that counts a table's rows.
    void Count(const QString& sql);

protected:
    void changeEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    class Model;
    class Job;

    void Relabel();
    /// Calls `read` in the background, one after the other, then `done` here.
    void Run(std::function<void()> read, std::function<void(const QString& error)> done);
    void Look();
    void ShowCatalog();
    void OpenTable(QStandardItem& item);
    void ReadDdl(QStandardItem& item);
    void Activate(const QModelIndex& index);
    /// The item of the table at or above the index; null without one.
    QStandardItem* TableAt(const QModelIndex& index) const;
    const CatalogTable& TableOf(const QStandardItem& item) const;
    QString NameOf(const QStandardItem& item) const;

    Connection m_connection;
    std::shared_ptr<const Catalog> m_catalog;
    QLineEdit* m_filter;
    QTreeView* m_view;
    QStandardItemModel* m_model;
    QSortFilterProxyModel* m_found;
    QTimer m_timer;
    std::deque<std::unique_ptr<Job>> m_jobs; ///< the first one runs
    std::deque<std::unique_ptr<Job>> m_cancelled;
};

} // namespace vnquery

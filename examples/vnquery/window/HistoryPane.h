// The statements that ran, and the saved queries.
#pragma once

#include "vnquery/files/History.h"

#include <QTabWidget>

class QLineEdit;
class QPushButton;
class QSortFilterProxyModel;
class QStandardItemModel;
class QTreeView;

namespace vnquery {

/// Two pages with a search field each: what ran, the latest first, and the queries that the user
/// saved under names. A double click or Enter chooses a text.
class HistoryPane : public QTabWidget {
    Q_OBJECT

public:
    explicit HistoryPane(QWidget* parent = nullptr);

    /// Keeps what has run. When that fails, a message stands in the list.
    void Add(const HistoryEntry& entry);

public Q_SLOTS:
    /// Asks for a name and saves the text under it.
    void SaveQuery(const QString& sql);

Q_SIGNALS:
    /// The text goes into the editor.
    void Chosen(const QString& sql);
    /// "Save..." was pressed: SaveQuery with the editor's text is to follow.
    void SaveAsked();

protected:
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    /// A search field, a list and buttons.
    struct Page {
        QWidget* widget;
        QLineEdit* search;
        QTreeView* list;
        QStandardItemModel* model;
        QSortFilterProxyModel* found;
    };

    Page MakePage(std::initializer_list<QPushButton*> buttons);
    void Relabel();
    void ReadHistory();
    void ReadSaved();
    void Clear();
    void Rename();
    /// Saves `sql` under a name that is asked for, or gives the query `from` that name.
    void AskName(const QString& from, const QString& sql);
    void Delete();
    /// The name of the chosen saved query; "" without one.
    QString ChosenName() const;

    History m_history;
    QPushButton* m_clear;
    QPushButton* m_save;
    QPushButton* m_rename;
    QPushButton* m_delete;
    Page m_ran;
    Page m_saved;
};

} // namespace vnquery

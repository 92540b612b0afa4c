// The program's window: menus, tool bar, docks, and a tab for each connection.
#pragma once

#include "vnquery/sources/Connection.h"
#include "vnquery/window/EndingSignals.h"
#include "vnquery/window/SqlEditor.h"

#include <QMainWindow>
#include <QTabWidget>

#include <vector>

class QDockWidget;
class QLabel;
class QMenu;

namespace vnquery {

class CatalogTree;
class ConnectionPage;
class HistoryPane;
class ValueLink;
class ValuePane;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow();
    ~MainWindow() override;

    /// Opens a connection in a new tab once it is known to work. False when it cannot be opened,
    /// which the user has been told.
    bool OpenConnection(const Connection& connection, const std::string& sql = {});
    /// The signal that closed the window; 0 when the user closed it.
    int GetEndingSignal() const { return m_signals.Get(); }
    /// Null without a connection.
    ConnectionPage* GetPage() const;
    ValuePane& GetValuePane() { return *m_value; }

    // --- commands --------------------------------------------------------------------------------
    void Open();
    void Connect();
    void NewTab();
    void WriteChanges();
    /// -1: the present one.
    void CloseTab(int index);
    void EditVariables();
    void ShowAbout();
    void NextPane();
    void ShowValue();
    /// Runs statements of the editor.
    void RunPieces(SqlEditor::Which which);

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

private:
    void MakeActions();
    void MakeDocks();
    QDockWidget* AddDock(const char* name, QWidget* pane, Qt::DockWidgetArea area);
    void FillRecent();
    void FillLanguages();
    void AddPage(const Connection& connection, SqlServer server, const std::string& sql);
    void PageChanged();
    void ShowStatus(const QString& text);
    void ShowState();
    void TurnDocks();
    void Relabel();
    void ChooseLanguage(const QString& code);
    void RestorePlaces();
    void StorePlaces() const;

    std::vector<QMenu*> m_menus;     ///< in the order of GetMenus
    std::vector<QAction*> m_actions; ///< of all menus, in that order
    QToolBar* m_toolBar = nullptr;
    QMenu* m_recent = nullptr;
    QMenu* m_languages = nullptr;
    QTabWidget* m_tabs = nullptr;
    QLabel* m_welcome = nullptr;
    CatalogTree* m_tree = nullptr;
    HistoryPane* m_history = nullptr;
    ValuePane* m_value = nullptr;
    std::vector<QDockWidget*> m_docks; ///< tree, history, value
    ValueLink* m_link = nullptr;

    QLabel* m_rows = nullptr;
    QLabel* m_changes = nullptr;
    EndingSignals m_signals;
    bool m_areDocksTurned = false; ///< for texts from right to left
};

} // namespace vnquery

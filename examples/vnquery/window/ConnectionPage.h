// One connection's tab: the SQL editor, the result, and the bar of its transaction.
#pragma once

#include "vnquery/files/History.h"
#include "vnquery/sources/QueryRun.h"
#include "vnquery/sources/Session.h"
#include "vnquery/window/SqlEditor.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QTimer>
#include <QWidget>

#include <deque>
#include <memory>

namespace vnquery {

class ResultView;

/// Runs the editor's statements one after another on its own connection and shows their results.
class ConnectionPage : public QWidget {
    Q_OBJECT
public:
    ConnectionPage(const Connection& connection, SqlServer server, QWidget* parent = nullptr);
    ~ConnectionPage() override;

    const Connection& GetConnection() const { return m_connection; }
    SqlServer GetServer() const { return m_server; }
    SqlEditor& GetEditor() { return *m_editor; }
    ResultView& GetResult() { return *m_result; }
    /// What the page's tab shows; with a mark for changes that are not written or committed.
    QString GetTitle() const;

    /// While a statement or a sort runs.
    bool IsBusy() const;
    void Run(std::vector<SqlPiece> pieces);
    /// Runs a statement that is not in the editor.
    void RunSql(const std::string& sql);
    void Stop();

    bool AreChangesAllowed() const { return m_session != nullptr; }
    /// Switching off asks about what is not committed. False when the user cancels that.
    bool AllowChanges(bool allow);
    bool HasUncommitted() const;
    void Commit();
    /// The result is read again, see Outdated.
    void RollBack();
    /// Reads the result again on a connection that can change nothing, unless it has changes that
    /// are not written or comes from a statement that changed something: then, and when it fails,
    /// a bar above the result says that it is outdated.
    void ReadAgain();
    /// Asks about changes that are not written and not committed. False when the user cancels.
    bool Leave();

Q_SIGNALS:
    void StatusChanged(const QString& text);
    /// What runs, the rows, the current cell or the changes are different now.
    void Changed();
    void Ran(const vnquery::HistoryEntry& entry);
    /// The database may have other tables now.
    void CatalogChanged();
    /// What the result was read from has been rolled back, by the user or by the database:
    /// ReadAgain is to follow.
    void Outdated();

protected:
    void changeEvent(QEvent* event) override;

private:
    void Relabel();
    void Start();
    void Launch(const std::shared_ptr<Session>& session);
    void Follow();
    void Finish();
    void FinishAgain(const QueryRun& run);
    void ShowFailure(const QueryRun& run, bool isUndone);
    bool LookForUndone();
    bool IsQuery() const;
    void Refresh();
    bool FillParameters(const std::string& sql, Parameters& parameters);
    bool LeaveTransaction();
    void Tell(UINT text, std::initializer_list<std::string> insertions);
    bool EndTransaction(bool commit);
    void ShowTransaction();

    const Connection m_connection;
    const SqlServer m_server;
    std::shared_ptr<Session> m_session; ///< null unless changes are allowed
    QSplitter* m_splitter;
    SqlEditor* m_editor;
    QWidget* m_bar; ///< of the transaction
    QLabel* m_barText;
    QPushButton* m_commit;
    QPushButton* m_rollBack;
    QLabel* m_failure;
    QWidget* m_outdated; ///< bar of a result that was read before a rollback
    QLabel* m_outdatedText;
    QPushButton* m_refresh;
    ResultView* m_result;
    QTimer m_timer;

    std::deque<SqlPiece> m_waiting;
    std::optional<SqlPiece> m_running;
    Parameters m_parameters; ///< of m_running
    std::unique_ptr<QueryRun> m_run;
    QElapsedTimer m_started;
    bool m_isStopping = false;
    std::optional<ResultShape> m_shape; ///< of the run, not shown yet
    bool m_hasDefined = false;          ///< what the tree does not show yet
    bool m_hasShape = false;            ///< the run's result is shown
    unsigned m_undoneCount = 0;         ///< of m_session, as far as it is shown
    /// While ReadAgain works: the current cell before.
    std::optional<std::pair<int, int>> m_cellBefore;
};

} // namespace vnquery

// A query that runs on another thread.
#pragma once

#include "vnquery/result/ResultSet.h"
#include "vnquery/sources/Session.h"
#include "vnquery/tasks/BackgroundTask.h"

#include <memory>
#include <mutex>
#include <optional>

namespace vnquery {

/// What is known of a result before its first row, and its rows.
struct ResultShape {
    ResultSet result; ///< gets its rows while the query runs
    std::vector<ColumnKind> kinds;
    EditPlan plan;
};

/// Starts at once. All functions are called on the thread that made the object.
class QueryRun {
public:
    /// On a connection of its own, on which nothing can be changed.
    QueryRun(const Connection& connection, const std::string& sql,
             const Parameters& parameters = {});
    /// In a session, where it waits for what another thread runs there.
    QueryRun(std::shared_ptr<Session> session, const std::string& sql,
             const Parameters& parameters = {});
    ~QueryRun();

    TaskState GetState() const { return m_task->GetState(); }
    const std::string& GetMessage() const { return m_task->GetMessage(); }
    const TaskProgress& GetProgress() const { return m_task->GetProgress(); }
    const Connection& GetConnection() const { return m_connection; }
    const std::string& GetSql() const { return m_sql; }
    /// Once the state is Done: how many rows a statement has changed, see RowSource.
    std::optional<long long> GetChangedRows() const { return m_changedRows; }
    /// Once the state is Failed: the byte of the statement that the message is about, if known.
    std::optional<std::size_t> GetFailurePlace() const { return m_failurePlace; }
    /// Stops the query; rows that have already arrived stay.
    void Cancel();

    /// Returns the result once, as soon as its columns are known; never for a statement without a
    /// result.
    std::optional<ResultShape> TakeShape();

private:
    void Work(Progress& progress);

    Connection m_connection;
    std::shared_ptr<Session> m_session; ///< null: a connection of its own
    std::string m_sql;
    Parameters m_parameters;
    std::optional<long long> m_changedRows;    ///< written before the task ends
    std::optional<std::size_t> m_failurePlace; ///< the same
    std::mutex m_mutex;                        ///< of the next one
    std::optional<ResultShape> m_shape;
    std::unique_ptr<BackgroundTask> m_task; ///< last, so that it ends before what it uses
};

} // namespace vnquery

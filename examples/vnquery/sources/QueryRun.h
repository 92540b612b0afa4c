// A query that runs on another thread.
#pragma once

#include "vnquery/result/ResultSet.h"
#include "vnquery/sources/Connection.h"
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
    QueryRun(const Connection& connection, const std::string& sql);
    ~QueryRun();

    TaskState GetState() const { return m_task->GetState(); }
    const std::string& GetMessage() const { return m_task->GetMessage(); }
    const TaskProgress& GetProgress() const { return m_task->GetProgress(); }
    const Connection& GetConnection() const { return m_connection; }
    const std::string& GetSql() const { return m_sql; }
    /// Stops the query; rows that have already arrived stay.
    void Cancel();

    /// Returns the result once, as soon as its columns are known.
    std::optional<ResultShape> TakeShape();

private:
    void Work(Progress& progress);

    Connection m_connection;
    std::string m_sql;
    std::mutex m_mutex; ///< of the next one
    std::optional<ResultShape> m_shape;
    std::unique_ptr<BackgroundTask> m_task; ///< last, so that it ends before what it uses
};

} // namespace vnquery

// A query that runs on another thread and hands over its rows in portions.
#pragma once

#include "vnquery/result/ResultSet.h"
#include "vnquery/sources/Connection.h"
#include "vnquery/tasks/BackgroundTask.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

namespace vnquery {

/// What is known of a result before its first row.
struct ResultShape {
    std::vector<std::string> columns;
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

    /// Returns the result's columns once, as soon as they are known.
    std::optional<ResultShape> TakeShape();
    /// Appends rows that have arrived to `result`, in whole portions up to `maxRows` (at least
    /// kPortion), and returns how many: 0 before the shape has been taken, and 0 after the run has
    /// ended when all have been taken.
    std::size_t TakeRows(ResultSet& result, std::size_t maxRows);

    static constexpr std::size_t kPortion = 1024; ///< maximum rows of a portion

private:
    void Work(Progress& progress);
    void HandOver(ResultSet& portion);

    static constexpr std::size_t kMaxPortions = 64; ///< that wait to be taken

    Connection m_connection;
    std::string m_sql;
    std::mutex m_mutex; ///< of the next three
    std::condition_variable_any m_taken;
    std::optional<ResultShape> m_shape;
    std::deque<ResultSet> m_portions;
    std::unique_ptr<BackgroundTask> m_task; ///< last, so that it ends before what it uses
};

} // namespace vnquery

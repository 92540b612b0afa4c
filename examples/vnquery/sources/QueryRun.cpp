#include "vnquery/sources/QueryRun.h"

#include "vnquery/tasks/Failure.h"

#include <utility>

namespace vnquery {

QueryRun::QueryRun(const Connection& connection, const std::string& sql,
                   const Parameters& parameters)
    : m_connection(connection), m_sql(sql), m_parameters(parameters),
      m_task(std::make_unique<BackgroundTask>([this](Progress& progress) { Work(progress); })) {}

QueryRun::QueryRun(std::shared_ptr<Session> session, const std::string& sql,
                   const Parameters& parameters)
    : m_connection(session->GetConnection()), m_session(std::move(session)), m_sql(sql),
      m_parameters(parameters),
      m_task(std::make_unique<BackgroundTask>([this](Progress& progress) { Work(progress); })) {}

QueryRun::~QueryRun() = default;

void QueryRun::Cancel() { m_task->Cancel(); }

/// Runs on the task's thread.
void QueryRun::Work(Progress& progress) {
    try {
        const std::unique_ptr<RowSource> source =
            m_session ? m_session->Run(m_sql, SourceUse::Editing, m_parameters)
                      : OpenSource(m_connection, m_sql, SourceUse::Editing, m_parameters);
        if (!source->GetColumns().empty()) {
            ResultSet result(*source);
            {
                const std::lock_guard lock(m_mutex);
                m_shape = ResultShape{result, source->GetKinds(), source->GetEditPlan()};
            }
            result.Fetch(*source, progress);
        }
        m_changedRows = source->GetChangedRows();
    } catch (const Failure& failure) {
        m_failurePlace = failure.GetPlace();
        throw;
    }
}

std::optional<ResultShape> QueryRun::TakeShape() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_shape, std::nullopt);
}

} // namespace vnquery

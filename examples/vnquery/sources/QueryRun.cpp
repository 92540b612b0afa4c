#include "vnquery/sources/QueryRun.h"

#include <utility>

namespace vnquery {

QueryRun::QueryRun(const Connection& connection, const std::string& sql)
    : m_connection(connection), m_sql(sql),
      m_task(std::make_unique<BackgroundTask>([this](Progress& progress) { Work(progress); })) {}

QueryRun::~QueryRun() = default;

void QueryRun::Cancel() { m_task->Cancel(); }

/// Runs on the task's thread.
void QueryRun::Work(Progress& progress) {
    const std::unique_ptr<RowSource> source = OpenSource(m_connection, m_sql, SourceUse::Editing);
    ResultSet result(*source);
    {
        const std::lock_guard lock(m_mutex);
        m_shape = ResultShape{result, source->GetKinds(), source->GetEditPlan()};
    }
    result.Fetch(*source, progress);
}

std::optional<ResultShape> QueryRun::TakeShape() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_shape, std::nullopt);
}

} // namespace vnquery

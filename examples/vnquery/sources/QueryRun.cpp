#include "vnquery/sources/QueryRun.h"

#include "vnquery/tasks/Interruption.h"

#include <chrono>
#include <utility>

namespace vnquery {

namespace {

constexpr auto kHandOverInterval = std::chrono::milliseconds(50);

} // namespace

QueryRun::QueryRun(const Connection& connection, const std::string& sql)
    : m_connection(connection), m_sql(sql),
      m_task(std::make_unique<BackgroundTask>([this](Progress& progress) { Work(progress); })) {}

QueryRun::~QueryRun() = default;

void QueryRun::Cancel() { m_task->Cancel(); }

/// Runs on the task's thread. A portion is handed over when it is full or after some time.
void QueryRun::Work(Progress& progress) {
    const std::unique_ptr<RowSource> source = OpenSource(m_connection, m_sql, SourceUse::Editing);
    {
        const std::lock_guard lock(m_mutex);
        m_shape = ResultShape{source->GetColumns(), source->GetKinds(), source->GetEditPlan()};
    }
    ResultSet portion(source->GetColumns());
    RowReader reader(*source, progress);
    auto next = std::chrono::steady_clock::now() + kHandOverInterval;
    try {
        while (reader.ReadRow(portion)) {
            if (portion.GetRowCount() < kPortion && std::chrono::steady_clock::now() < next)
                continue;
            HandOver(portion);
            next = std::chrono::steady_clock::now() + kHandOverInterval;
        }
    } catch (...) {
        portion.DropIncompleteRow();
        HandOver(portion); // the rows before the failure are shown
        throw;
    }
    HandOver(portion);
}

void QueryRun::HandOver(ResultSet& portion) {
    if (portion.GetRowCount() == 0)
        return;
    std::unique_lock lock(m_mutex);
    m_taken.wait(lock, CurrentStop(), [this] { return m_portions.size() < kMaxPortions; });
    m_portions.push_back(std::move(portion));
    portion = ResultSet(m_portions.back().GetColumns());
}

std::optional<ResultShape> QueryRun::TakeShape() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_shape, std::nullopt);
}

std::size_t QueryRun::TakeRows(ResultSet& result, std::size_t maxRows) {
    std::size_t count = 0;
    const std::lock_guard lock(m_mutex);
    if (m_shape) // the caller does not know the columns yet
        return 0;
    while (!m_portions.empty() && count + m_portions.front().GetRowCount() <= maxRows) {
        count += m_portions.front().GetRowCount();
        result.Append(std::move(m_portions.front()));
        m_portions.pop_front();
    }
    m_taken.notify_all();
    return count;
}

} // namespace vnquery

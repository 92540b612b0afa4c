#include "vnquery/document/SortRun.h"

#include "vnquery/tasks/Interruption.h"

namespace vnquery {

SortRun::SortRun(const ResultSet& result, const PendingEdits& edits, std::size_t column,
                 bool descending, std::vector<DWORD> order)
    : m_result(result), m_column(column), m_isDescending(descending), m_order(std::move(order)) {
    for (const auto& [place, edit] : edits.GetAll())
        if (place.second == column)
            m_changed[place.first] = edit.value;
    m_task = std::make_unique<BackgroundTask>([this](Progress&) {
        const bool isDone = m_result.Sort(
            m_column, m_changed, m_isDescending, m_order, [this](ULONGLONG done, ULONGLONG total) {
                m_percent = static_cast<unsigned>(total > 0 ? 100 * done / total : 0);
                return !IsInterrupted();
            });
        if (!isDone)
            throw Interrupted();
        // Here, since it takes as long as the window may not be kept waiting.
        m_places.resize(m_order.size());
        for (std::size_t place = 0; place < m_order.size(); ++place)
            m_places[m_order[place]] = static_cast<DWORD>(place);
    });
}

SortRun::~SortRun() = default;

} // namespace vnquery

#include "vnquery/document/SortRun.h"

#include "vnquery/tasks/Interruption.h"

namespace vnquery {

std::map<std::size_t, Value> ChangedValues(const PendingEdits& edits, std::size_t column) {
    std::map<std::size_t, Value> changed;
    for (const auto& [place, edit] : edits.GetAll())
        if (place.second == column)
            changed[place.first] = edit.value;
    return changed;
}

SortRun::SortRun(const ResultSet& result, const PendingEdits& edits, std::size_t column,
                 bool descending, std::vector<DWORD> order)
    : m_result(result), m_column(column), m_isDescending(descending), m_order(std::move(order)) {
    m_changed = ChangedValues(edits, column);
    m_task = std::make_unique<BackgroundTask>([this](Progress&) {
        const bool isDone = m_result.Sort(
            m_column, m_changed, m_isDescending, m_order, [this](ULONGLONG done, ULONGLONG total) {
                m_percent = static_cast<unsigned>(total > 0 ? 100 * done / total : 0);
                return !IsInterrupted();
            });
        if (!isDone)
            throw Interrupted();
        // Here, since it takes as long as the window may not be kept waiting.
        m_places.resize(m_result.GetRowCount());
        for (std::size_t place = 0; place < m_order.size(); ++place)
            m_places[m_order[place]] = static_cast<DWORD>(place);
    });
}

SortRun::~SortRun() = default;

} // namespace vnquery

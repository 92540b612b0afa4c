// A sort of the rows of a result on another thread.
#pragma once

#include "vnquery/result/PendingEdits.h"
#include "vnquery/tasks/BackgroundTask.h"

#include <atomic>
#include <map>
#include <memory>
#include <vector>

namespace vnquery {

/// The new values of a column by their rows.
std::map<std::size_t, Value> ChangedValues(const PendingEdits& edits, std::size_t column);

/// Starts at once. The result stays readable meanwhile; it must not be changed.
class SortRun {
public:
    /// Sorts the rows in `order`, or all rows when that is empty, by a column with its changed
    /// values.
    SortRun(const ResultSet& result, const PendingEdits& edits, std::size_t column, bool descending,
            std::vector<DWORD> order);
    ~SortRun();

    TaskState GetState() const { return m_task->GetState(); }
    const std::string& GetMessage() const { return m_task->GetMessage(); }
    void Cancel() { m_task->Cancel(); }
    /// In percent.
    unsigned GetProgress() const { return m_percent; }
    std::size_t GetColumn() const { return m_column; }
    bool IsDescending() const { return m_isDescending; }
    /// Once it is done: the new order, and the place of each row in it.
    std::vector<DWORD>& GetOrder() { return m_order; }
    std::vector<DWORD>& GetPlaces() { return m_places; }

private:
    const ResultSet m_result;
    const std::size_t m_column;
    const bool m_isDescending;
    std::map<std::size_t, Value> m_changed; ///< values by their rows
    std::vector<DWORD> m_order;
    std::vector<DWORD> m_places;
    std::atomic<unsigned> m_percent = 0;
    std::unique_ptr<BackgroundTask> m_task; ///< last, so that it ends before what it uses
};

} // namespace vnquery

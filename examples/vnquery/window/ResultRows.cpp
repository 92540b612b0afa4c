#include "vnquery/window/ResultRows.h"

#include "vnquery/tasks/Failure.h"

#include <chrono>
#include <thread>

namespace vnquery {

namespace {

/// So long a sort may keep the window waiting. A longer one goes on in the background.
constexpr auto kShortSort = std::chrono::milliseconds(30);

} // namespace

void ResultRows::GetCell(int row, int column, std::string& text) {
    if (column == 0) {
        text = std::to_string(row + 1);
        return;
    }
    try {
        m_document.AppendCellText(text, static_cast<std::size_t>(row),
                                  static_cast<std::size_t>(column - 1));
    } catch (CException* error) {
        text = TakeMessage(error);
    }
}

ENullAnswer ResultRows::IsNull(int row, int column) {
    if (column == 0)
        return ENullAnswer::No;
    return m_document.IsNull(static_cast<std::size_t>(row), static_cast<std::size_t>(column - 1))
               ? ENullAnswer::Yes
               : ENullAnswer::No;
}

/// By the column of the numbers: as the query gave them.
ESortAnswer ResultRows::SortRows(int column, bool ascending) {
    const auto answer = [](bool isDone) {
        return isDone ? ESortAnswer::Sorted : ESortAnswer::NotSorted;
    };
    m_sorts();
    if (column == 0)
        return answer(m_document.Unsort());
    if (!m_document.BeginSort(static_cast<std::size_t>(column - 1), !ascending))
        return ESortAnswer::NotSorted;
    const auto end = std::chrono::steady_clock::now() + kShortSort;
    while (m_document.GetSort()->GetState() == TaskState::Running &&
           std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    const bool isDone = m_document.GetSort()->GetState() == TaskState::Done;
    return isDone ? answer(m_document.EndSort()) : ESortAnswer::Later;
}

int ResultRows::GetSortedRow(int before) {
    return static_cast<int>(m_document.GetSortedRow(static_cast<std::size_t>(before)));
}

bool ResultRows::GetFileName(int row, std::string& name) {
    if (row != m_fileRow)
        return false;
    name = m_fileName;
    return true;
}

void ResultRows::SetFileName(int row, std::string_view name) {
    m_fileRow = name.empty() ? -1 : row;
    m_fileName = name;
}

} // namespace vnquery

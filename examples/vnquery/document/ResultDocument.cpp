#include "vnquery/document/ResultDocument.h"

#include <algorithm>
#include <numeric>

namespace vnquery {

void ResultDocument::Begin(ResultShape&& shape, const std::string& sql,
                           const Connection& connection) {
    m_sql = sql;
    m_connection = connection;
    m_isDetached = false;
    m_sort.reset();
    m_result = shape.result;
    m_layout = LoadLayout(sql, m_result.GetColumnCount());
    m_kinds = std::move(shape.kinds);
    m_plan = std::move(shape.plan);
    m_edits.Clear();
    m_shownRows = 0;
    std::vector<DWORD>().swap(m_order);
    ForgetOldOrder();
}

std::size_t ResultDocument::ShowNewRows() {
    if (m_sort)
        return 0;
    const std::size_t first = m_shownRows;
    m_shownRows = m_result.GetRowCount();
    if (!m_order.empty()) {
        m_order.resize(m_shownRows);
        std::iota(m_order.begin() + static_cast<std::ptrdiff_t>(first), m_order.end(),
                  static_cast<DWORD>(first));
    }
    return m_shownRows - first;
}

std::size_t ResultDocument::ShownColumnOf(std::size_t column) const {
    return static_cast<std::size_t>(std::ranges::find(m_layout.order, column) -
                                    m_layout.order.begin());
}

void ResultDocument::LearnKinds() {
    // A column with values of several kinds stays Unknown: it takes what is typed.
    for (std::size_t column = 0; column < m_kinds.size(); ++column)
        if (m_kinds[column] == ColumnKind::Unknown)
            m_kinds[column] = m_result.GetSeenKind(column);
}

void ResultDocument::AppendCellText(std::string& out, std::size_t shownRow,
                                    std::size_t shownColumn) const {
    const CellPlace place = PlaceOf(shownRow, shownColumn);
    const NewValue* edit = m_edits.IsEmpty() ? nullptr : m_edits.Find(place);
    if (!edit)
        m_result.AppendCell(out, place.first, place.second, m_format);
    else
        out += edit->isDefault ? m_format.defaultText : FormatCell(edit->value, m_format);
}

std::string ResultDocument::GetCellText(std::size_t shownRow, std::size_t shownColumn) const {
    std::string text;
    AppendCellText(text, shownRow, shownColumn);
    return text;
}

Value ResultDocument::GetValue(CellPlace place) const {
    const NewValue* edit = m_edits.Find(place);
    return edit ? edit->value : m_result.GetValue(place.first, place.second);
}

ReadOnlyReason ResultDocument::GetReadOnlyReason(CellPlace place) const {
    const ReadOnlyReason reason = GetReadOnlyReason(place.second);
    const bool isLost = !m_plan.rowIdName.empty() && !m_result.GetRowId(place.first);
    return reason == ReadOnlyReason::None && isLost ? ReadOnlyReason::NoKey : reason;
}

bool ResultDocument::BeginSort(std::size_t shownColumn, bool descending) {
    if (m_sort || shownColumn >= m_layout.order.size())
        return false;
    m_sort = std::make_unique<SortRun>(m_result, m_edits, m_layout.order[shownColumn], descending,
                                       m_order);
    return true;
}

bool ResultDocument::EndSort() {
    if (!m_sort || m_sort->GetState() == TaskState::Running)
        return false;
    const std::unique_ptr<SortRun> sort = std::move(m_sort);
    if (sort->GetState() != TaskState::Done)
        return false;
    ForgetOldOrder();
    m_oldOrder = std::exchange(m_order, std::move(sort->GetOrder()));
    m_shownRows = m_order.size(); // more, if some arrived after those shown
    m_places = std::move(sort->GetPlaces());
    m_isNewlySorted = true;
    m_layout.sortColumn = sort->GetColumn();
    m_layout.sort =
        sort->IsDescending() ? QueryLayout::Sort::Descending : QueryLayout::Sort::Ascending;
    return true;
}

std::size_t ResultDocument::GetSortedRow(std::size_t before) {
    if (!m_isNewlySorted || before >= m_order.size())
        return before;
    return m_places[m_oldOrder.empty() ? before : m_oldOrder[before]];
}

void ResultDocument::ForgetOldOrder() {
    std::vector<DWORD>().swap(m_oldOrder);
    std::vector<DWORD>().swap(m_places);
    m_isNewlySorted = false;
}

bool ResultDocument::MoveColumn(std::size_t shownColumn, int by) {
    const std::size_t to = shownColumn + static_cast<std::size_t>(by);
    if (shownColumn >= m_layout.order.size() || to >= m_layout.order.size())
        return false;
    std::swap(m_layout.order[shownColumn], m_layout.order[to]);
    return true;
}

} // namespace vnquery

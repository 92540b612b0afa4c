#include "vnquery/document/ResultDocument.h"

#include <algorithm>
#include <numeric>

namespace vnquery {

void ResultDocument::Begin(ResultShape&& shape, const std::string& sql,
                           const Connection& connection) {
    m_sql = sql;
    m_connection = connection;
    m_sort.reset();
    m_result = shape.result;
    m_layout = LoadLayout(sql, m_result.GetColumnCount());
    m_kinds = std::move(shape.kinds);
    m_plan = std::move(shape.plan);
    m_edits.Clear();
    m_shownRows = 0;
    m_seenRows = 0;
    m_isOrdered = false;
    std::vector<DWORD>().swap(m_order);
    m_own.clear();
    ForgetOldOrder();
}

std::size_t ResultDocument::ShowNewRows() {
    if (m_sort)
        return 0;
    const std::size_t first = m_seenRows;
    m_seenRows = m_result.GetRowCount();
    const std::size_t count = m_seenRows - first;
    m_shownRows += count;
    if (m_isOrdered) {
        m_order.resize(m_shownRows);
        std::iota(m_order.end() - static_cast<std::ptrdiff_t>(count), m_order.end(),
                  static_cast<DWORD>(first));
    }
    return count;
}

void ResultDocument::LearnKinds() {
    // A column with values of several kinds stays Unknown: it takes what is typed.
    for (std::size_t column = 0; column < m_kinds.size(); ++column)
        if (m_kinds[column] == ColumnKind::Unknown)
            m_kinds[column] = m_result.GetSeenKind(column);
}

void ResultDocument::AppendCellText(std::string& out, std::size_t shownRow,
                                    std::size_t column) const {
    const CellPlace place = PlaceOf(shownRow, column);
    const NewValue* edit = m_edits.IsEmpty() ? nullptr : m_edits.Find(place);
    if (!edit && !m_edits.IsNew(place.first))
        m_result.AppendCell(out, place.first, place.second, m_format);
    else
        out += !edit || edit->isDefault ? m_format.defaultText : FormatCell(edit->value, m_format);
}

std::string ResultDocument::GetCellText(std::size_t shownRow, std::size_t column) const {
    std::string text;
    AppendCellText(text, shownRow, column);
    return text;
}

Value ResultDocument::GetValue(CellPlace place) const {
    const NewValue* edit = m_edits.Find(place);
    return edit ? edit->value : m_result.GetValue(place.first, place.second);
}

bool ResultDocument::IsNull(std::size_t shownRow, std::size_t column) const {
    const CellPlace place = PlaceOf(shownRow, column);
    const NewValue* edit = m_edits.IsEmpty() ? nullptr : m_edits.Find(place);
    if (!edit && m_edits.IsNew(place.first))
        return false; // the default
    return edit ? !edit->isDefault && edit->value.IsNull()
                : m_result.GetValue(place.first, place.second).IsNull();
}

ReadOnlyReason ResultDocument::GetReadOnlyReason(CellPlace place) const {
    const auto [row, column] = place;
    if (m_edits.IsDeleted(row))
        return ReadOnlyReason::Deleted;
    if (m_edits.IsNew(row)) {
        const ReadOnlyReason reason = m_plan.columns[column].readOnly;
        return reason == ReadOnlyReason::Key ? ReadOnlyReason::None : reason;
    }
    const ReadOnlyReason reason = GetReadOnlyReason(column);
    return reason == ReadOnlyReason::None && !IsFound(row) ? ReadOnlyReason::NoKey : reason;
}

/// Whether the row can be found in the table.
bool ResultDocument::IsFound(std::size_t row) const {
    if (!m_plan.rowIdName.empty())
        return m_result.GetRowId(row).has_value();
    return std::ranges::none_of(m_plan.keyColumns, [&](std::size_t column) {
        return m_result.GetValue(row, column).IsNull();
    });
}

// --- rows ----------------------------------------------------------------------------------------

ReadOnlyReason ResultDocument::GetInsertReason() const {
    const ReadOnlyReason reason = m_plan.readOnly;
    return reason == ReadOnlyReason::NoKey ? ReadOnlyReason::None : reason;
}

void ResultDocument::MakeOrder() {
    if (m_isOrdered)
        return;
    m_isOrdered = true;
    m_order.resize(m_shownRows);
    std::iota(m_order.begin(), m_order.end(), DWORD{0});
}

void ResultDocument::Show(std::size_t row, std::size_t at) {
    MakeOrder();
    ForgetOldOrder();
    at = std::min(at, m_order.size());
    m_order.insert(m_order.begin() + static_cast<std::ptrdiff_t>(at), static_cast<DWORD>(row));
    m_own[static_cast<DWORD>(row)] = at;
    m_shownRows = m_order.size();
}

void ResultDocument::Hide(std::size_t row) {
    MakeOrder();
    ForgetOldOrder();
    const auto found = std::ranges::find(m_order, static_cast<DWORD>(row));
    if (found == m_order.end())
        return;
    if (const auto own = m_own.find(*found); own != m_own.end())
        own->second = static_cast<std::size_t>(found - m_order.begin());
    m_order.erase(found);
    m_shownRows = m_order.size();
}

std::size_t ResultDocument::InsertRow(std::size_t at) {
    ShowNewRows();
    const std::size_t row = m_result.AppendRow();
    ++m_seenRows;
    m_edits.Insert(row);
    Show(row, at);
    return std::min(at, m_shownRows - 1);
}

std::size_t ResultDocument::DuplicateRow(std::size_t shownRow) {
    const EditStep step(m_edits);
    const std::size_t from = RowOf(shownRow);
    const std::size_t at = InsertRow(shownRow + 1);
    for (std::size_t i = 0; i < m_plan.columns.size(); ++i) {
        const EditColumn& column = m_plan.columns[i];
        const bool isRepeated = std::any_of(
            m_plan.columns.begin(), m_plan.columns.begin() + static_cast<std::ptrdiff_t>(i),
            [&](const EditColumn& other) { return other.name == column.name; });
        const NewValue* const edit = m_edits.Find({from, i});
        if (column.readOnly == ReadOnlyReason::Computed || column.isFilled || isRepeated ||
            (m_edits.IsNew(from) && !edit))
            continue;
        m_edits.Set({RowOf(at), i}, edit ? NewValue(*edit) : NewValue{false, GetValue({from, i})},
                    m_result);
    }
    return at;
}

std::size_t ResultDocument::DeleteRows(std::span<const std::size_t> shownRows) {
    const EditStep step(m_edits);
    std::vector<std::size_t> rows;
    for (const std::size_t shownRow : shownRows)
        rows.push_back(RowOf(shownRow));
    std::size_t count = 0;
    for (const std::size_t row : rows) {
        const bool isNew = m_edits.IsNew(row);
        if (m_edits.IsDeleted(row) ||
            (!isNew && (m_plan.readOnly != ReadOnlyReason::None || !IsFound(row))))
            continue;
        m_edits.Delete(row);
        if (isNew)
            Hide(row);
        ++count;
    }
    return count;
}

std::optional<std::size_t> ResultDocument::Undo() {
    const std::vector<std::size_t> rows = m_edits.Undo();
    for (const std::size_t row : rows) {
        const auto own = m_own.find(static_cast<DWORD>(row));
        if (own == m_own.end())
            continue;
        const bool wasShown = GetShownRow(row) < m_shownRows;
        if (wasShown && !m_edits.IsNew(row))
            Hide(row);
        else if (!wasShown && m_edits.IsNew(row))
            Show(row, own->second);
    }
    const std::size_t shown = rows.empty() ? m_shownRows : GetShownRow(rows.back());
    return shown < m_shownRows ? std::optional(shown) : std::nullopt;
}

std::size_t ResultDocument::GetShownRow(std::size_t row) const {
    return !m_isOrdered
               ? row
               : static_cast<std::size_t>(std::ranges::find(m_order, static_cast<DWORD>(row)) -
                                          m_order.begin());
}

void ResultDocument::Discard() {
    const std::set<std::size_t> rows = m_edits.GetNewRows();
    m_edits.Clear();
    for (const std::size_t row : rows)
        Hide(row);
    m_own.clear();
}

void ResultDocument::Accept(WriteReport&& report) {
    const std::vector<std::size_t> deleted = report.deleted;
    AcceptReport(std::move(report), m_result, m_edits);
    if (!deleted.empty()) {
        MakeOrder();
        ForgetOldOrder();
        const std::set<DWORD> gone(deleted.begin(), deleted.end());
        std::erase_if(m_order, [&](DWORD row) { return gone.contains(row); });
        m_shownRows = m_order.size();
    }
    // Nothing can be taken back any more.
    std::erase_if(m_own, [&](const auto& own) { return !m_edits.IsNew(own.first); });
}

void ResultDocument::PassShownTo(RowSink& sink, std::span<const std::size_t> shownRows,
                                 std::span<const std::size_t> columns, Progress& progress) const {
    for (const std::size_t shownRow : shownRows) {
        for (const std::size_t column : columns)
            GetValue(PlaceOf(shownRow, column)).PassTo(sink);
        sink.EndRow();
        sink.ReportBytes();
        progress.AddRow();
    }
}

std::function<ColumnSummary(Progress&)>
ResultDocument::PrepareSummary(std::span<const std::size_t> shownRows, std::size_t column) const {
    std::vector<DWORD> rows;
    rows.reserve(shownRows.size());
    for (const std::size_t shownRow : shownRows)
        if (!IsDeleted(shownRow))
            rows.push_back(static_cast<DWORD>(RowOf(shownRow)));
    return [result = m_result, column, rows = std::move(rows),
            changed = ChangedValues(m_edits, column)](Progress& progress) {
        return Summarise(result, column, changed, rows, progress);
    };
}

// --- order ---------------------------------------------------------------------------------------

bool ResultDocument::BeginSort(std::size_t column, bool descending) {
    if (m_sort || column >= m_result.GetColumnCount() || (m_isOrdered && m_order.empty()))
        return false;
    m_sort = std::make_unique<SortRun>(m_result, m_edits, column, descending, m_order);
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
    if (!m_isOrdered)
        m_seenRows = m_order.size(); // more, if some arrived after those shown
    m_isOrdered = true;
    m_shownRows = m_order.size();
    m_places = std::move(sort->GetPlaces());
    m_isNewlySorted = true;
    m_layout.sortColumn = sort->GetColumn();
    m_layout.sort =
        sort->IsDescending() ? QueryLayout::Sort::Descending : QueryLayout::Sort::Ascending;
    return true;
}

bool ResultDocument::Unsort() {
    if (m_sort)
        return false;
    m_layout.sort = QueryLayout::Sort::None;
    if (!m_isOrdered)
        return true;
    m_oldOrder = m_order;
    std::ranges::sort(m_order);
    m_places.assign(m_result.GetRowCount(), 0);
    for (std::size_t row = 0; row < m_order.size(); ++row)
        m_places[m_order[row]] = static_cast<DWORD>(row);
    m_isNewlySorted = true;
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

} // namespace vnquery

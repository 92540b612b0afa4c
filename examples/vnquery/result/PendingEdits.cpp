#include "vnquery/result/PendingEdits.h"

#include "vnquery/result/CellEdit.h"
#include "vnquery/tasks/Progress.h"

#include <set>

namespace vnquery {

namespace {

RowKey KeyOf(const EditPlan& plan, const ResultSet& result, std::size_t row) {
    RowKey key;
    key.rowId = result.GetRowId(row);
    for (const std::size_t column : plan.keyColumns)
        key.values.push_back(result.GetValue(row, column));
    return key;
}

} // namespace

std::size_t PendingEdits::GetRowCount() const {
    std::set<std::size_t> rows;
    for (const auto& [place, edit] : m_edits)
        rows.insert(place.first);
    return rows.size();
}

void PendingEdits::Set(CellPlace place, NewValue&& value, const ResultSet& result) {
    if (!value.isDefault && AreSame(value.value, result.GetValue(place.first, place.second)))
        m_edits.erase(place);
    else
        m_edits.insert_or_assign(place, std::move(value));
}

const NewValue* PendingEdits::Find(CellPlace place) const {
    const auto edit = m_edits.find(place);
    return edit == m_edits.end() ? nullptr : &edit->second;
}

namespace {

/// What comparing and writing have in common: `write` is called for cells that have the old value.
template <typename Write>
WriteReport ForEachEdit(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
                        const PendingEdits& edits, Progress& progress, Write&& write) {
    WriteReport report;
    for (const auto& [place, edit] : edits.GetAll()) {
        const auto [row, column] = place;
        const RowKey key = KeyOf(plan, result, row);
        std::optional<Value> now = writer.Read(key, column, progress);
        const bool isSame = now && AreSame(*now, result.GetValue(row, column));
        if (now && !isSame)
            report.conflicts.push_back({place, std::move(*now)});
        else if (isSame && write(key, column, edit, now))
            report.written.push_back({place, std::move(*now)});
        else
            report.lostRows.push_back(place);
        progress.AddRow();
    }
    return report;
}

} // namespace

WriteReport CompareEdits(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
                         const PendingEdits& edits, Progress& progress) {
    return ForEachEdit(writer, plan, result, edits, progress, [](const auto&...) { return true; });
}

WriteReport WriteEdits(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
                       const PendingEdits& edits, Progress& progress) {
    return ForEachEdit(writer, plan, result, edits, progress,
                       [&](const RowKey& key, std::size_t column, const NewValue& edit,
                           std::optional<Value>& now) {
                           writer.Update(key, column, edit, progress);
                           // The table may have stored another value: a number for a text, or
                           // its default.
                           now = writer.Read(key, column, progress);
                           return now.has_value();
                       });
}

void AcceptReport(WriteReport&& report, ResultSet& result, PendingEdits& edits) {
    for (WriteReport::Cell& cell : report.written) {
        result.SetValue(cell.place.first, cell.place.second, cell.now);
        edits.Remove(cell.place);
    }
    for (WriteReport::Cell& cell : report.conflicts)
        result.SetValue(cell.place.first, cell.place.second, cell.now);
    for (const CellPlace& place : report.lostRows)
        edits.Remove(place);
}

} // namespace vnquery

#include "vnquery/result/PendingEdits.h"

#include "vnquery/result/CellEdit.h"
#include "vnquery/tasks/Progress.h"

#include <algorithm>

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

std::optional<RowKey> GivenKey(const EditPlan& plan, const RowValues& values) {
    RowKey key;
    for (const std::size_t column : plan.keyColumns) {
        const auto value = values.find(column);
        if (value == values.end() || value->second.isDefault || value->second.value.IsNull())
            return {};
        key.values.push_back(value->second.value);
    }
    return key.values.empty() ? std::nullopt : std::optional(std::move(key));
}

// --- the edits -----------------------------------------------------------------------------------

std::size_t PendingEdits::GetCount() const {
    return m_new.size() + m_deleted.size() +
           static_cast<std::size_t>(std::ranges::count_if(m_edits, [&](const auto& edit) {
               return !IsNew(edit.first.first) && !IsDeleted(edit.first.first);
           }));
}

std::size_t PendingEdits::GetRowCount() const {
    std::set<std::size_t> rows = m_new;
    rows.insert(m_deleted.begin(), m_deleted.end());
    for (const auto& [place, edit] : m_edits)
        rows.insert(place.first);
    return rows.size();
}

void PendingEdits::Set(CellPlace place, NewValue&& value, const ResultSet& result) {
    if (!value.isDefault && !IsNew(place.first) &&
        AreSame(value.value, result.GetValue(place.first, place.second)))
        Replace(place, {});
    else
        Replace(place, std::move(value));
}

void PendingEdits::Remove(CellPlace place) { Replace(place, {}); }

void PendingEdits::Replace(CellPlace place, std::optional<NewValue>&& value) {
    const auto edit = m_edits.find(place);
    if (edit == m_edits.end() && !value)
        return;
    const EditStep step(*this);
    m_steps.back().push_back(
        {What::Cell, place, edit == m_edits.end() ? std::nullopt : std::optional(edit->second)});
    if (value)
        m_edits.insert_or_assign(place, std::move(*value));
    else
        m_edits.erase(edit);
}

void PendingEdits::Insert(std::size_t row) {
    const EditStep step(*this);
    m_new.insert(row);
    m_steps.back().push_back({What::Inserted, {row, 0}, {}});
}

void PendingEdits::Delete(std::size_t row) {
    const EditStep step(*this);
    if (!IsNew(row)) {
        if (m_deleted.insert(row).second)
            m_steps.back().push_back({What::Marked, {row, 0}, {}});
        return;
    }
    for (const auto& [column, value] : GetRow(row))
        Replace({row, column}, {});
    m_new.erase(row);
    m_steps.back().push_back({What::Dropped, {row, 0}, {}});
}

std::vector<std::size_t> PendingEdits::Undo() {
    std::vector<std::size_t> rows;
    if (m_steps.empty())
        return rows;
    std::vector<Change> step = std::move(m_steps.back());
    m_steps.pop_back();
    for (auto change = step.rbegin(); change != step.rend(); ++change) {
        if (rows.empty() || rows.back() != change->place.first)
            rows.push_back(change->place.first);
        TakeBack(*change);
    }
    return rows;
}

void PendingEdits::TakeBack(Change& change) {
    const std::size_t row = change.place.first;
    switch (change.what) {
    case What::Cell:
        if (change.before)
            m_edits.insert_or_assign(change.place, std::move(*change.before));
        else
            m_edits.erase(change.place);
        break;
    case What::Inserted:
        m_new.erase(row);
        break;
    case What::Dropped:
        m_new.insert(row);
        break;
    case What::Marked:
        m_deleted.erase(row);
        break;
    }
}

void PendingEdits::Forget(std::size_t row) {
    m_edits.erase(m_edits.lower_bound({row, 0}), m_edits.lower_bound({row + 1, 0}));
    m_new.erase(row);
    m_deleted.erase(row);
}

const NewValue* PendingEdits::Find(CellPlace place) const {
    const auto edit = m_edits.find(place);
    return edit == m_edits.end() ? nullptr : &edit->second;
}

RowValues PendingEdits::GetRow(std::size_t row) const {
    RowValues values;
    const auto end = m_edits.lower_bound({row + 1, 0});
    for (auto edit = m_edits.lower_bound({row, 0}); edit != end; ++edit)
        values.emplace(edit->first.second, edit->second);
    return values;
}

// --- writing -------------------------------------------------------------------------------------

namespace {

/// Compares the edits with the table, and writes them if asked to.
class EditWriter {
public:
    EditWriter(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
               const PendingEdits& edits, Progress& progress, bool isWriting)
        : m_writer(writer), m_plan(plan), m_result(result), m_edits(edits), m_progress(progress),
          m_isWriting(isWriting) {
        for (std::size_t i = 0; i < plan.columns.size(); ++i)
            if (!plan.columns[i].name.empty())
                m_columns.push_back(i);
    }

    WriteReport Run() {
        std::size_t at = 0;
        try {
            for (const std::size_t row : m_edits.GetDeletedRows())
                Delete(at = row);
            for (const auto& [place, edit] : m_edits.GetAll()) {
                at = place.first;
                if (!m_edits.IsNew(at) && !m_edits.IsDeleted(at))
                    Update(place, edit);
            }
            for (const std::size_t row : m_edits.GetNewRows())
                Insert(at = row);
        } catch (const Failure& failure) {
            throw RowFailure(failure, at);
        }
        return std::move(m_report);
    }

private:
    void Update(CellPlace place, const NewValue& edit) {
        const auto [row, column] = place;
        const RowKey key = KeyOf(m_plan, m_result, row);
        std::optional<Value> now = m_writer.Read(key, column, m_progress);
        const bool isSame = now && AreSame(*now, m_result.GetValue(row, column));
        if (isSame && m_isWriting) {
            m_writer.Update(key, column, edit, m_progress);
            // The table may have stored another value: a number for a text, or its default.
            now = m_writer.Read(key, column, m_progress);
        }
        if (!now)
            m_report.lostRows.push_back(place);
        else
            (isSame ? m_report.written : m_report.conflicts).push_back({place, std::move(*now)});
        m_progress.AddRow();
    }

    void Delete(std::size_t row) {
        const RowKey key = KeyOf(m_plan, m_result, row);
        std::optional<std::vector<Value>> now = m_writer.ReadRow(key, m_columns, m_progress);
        bool isSame = true;
        for (std::size_t i = 0; now && i < m_columns.size(); ++i) {
            if (AreSame((*now)[i], m_result.GetValue(row, m_columns[i])))
                continue;
            isSame = false;
            m_report.conflicts.push_back({{row, m_columns[i]}, std::move((*now)[i])});
        }
        if (now && isSame && m_isWriting)
            m_writer.Delete(key, m_progress);
        if (isSame)
            m_report.deleted.push_back(row);
        m_progress.AddRow();
    }

    void Insert(std::size_t row) {
        WriteReport::Row& inserted = m_report.inserted.emplace_back(WriteReport::Row{row, {}, {}});
        if (m_isWriting)
            inserted.key = m_writer.Insert(m_edits.GetRow(row), m_progress);
        std::optional<std::vector<Value>> now;
        if (inserted.key)
            now = m_writer.ReadRow(*inserted.key, m_columns, m_progress);
        for (std::size_t i = 0; now && i < m_columns.size(); ++i)
            inserted.cells.push_back({{row, m_columns[i]}, std::move((*now)[i])});
        if (!now)
            inserted.key.reset();
        m_progress.AddRow();
    }

    TableWriter& m_writer;
    const EditPlan& m_plan;
    const ResultSet& m_result;
    const PendingEdits& m_edits;
    Progress& m_progress;
    const bool m_isWriting;
    std::vector<std::size_t> m_columns; ///< of the table
    WriteReport m_report;
};

} // namespace

WriteReport CompareEdits(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
                         const PendingEdits& edits, Progress& progress) {
    return EditWriter(writer, plan, result, edits, progress, false).Run();
}

WriteReport WriteEdits(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
                       const PendingEdits& edits, Progress& progress) {
    return EditWriter(writer, plan, result, edits, progress, true).Run();
}

void AcceptReport(WriteReport&& report, ResultSet& result, PendingEdits& edits) {
    const auto put = [&](const std::vector<WriteReport::Cell>& cells) {
        for (const WriteReport::Cell& cell : cells)
            result.SetValue(cell.place.first, cell.place.second, cell.now);
    };
    put(report.written);
    put(report.conflicts);
    for (const WriteReport::Cell& cell : report.written)
        edits.Remove(cell.place);
    for (const CellPlace& place : report.lostRows)
        edits.Remove(place);
    for (const WriteReport::Row& row : report.inserted) {
        put(row.cells);
        for (const auto& [column, value] : edits.GetRow(row.row))
            if (!row.key)
                result.SetValue(row.row, column, value.value);
        if (row.key && row.key->rowId)
            result.SetRowId(row.row, *row.key->rowId);
        edits.Forget(row.row);
    }
    for (const std::size_t row : report.deleted)
        edits.Forget(row);
    edits.ForgetSteps();
}

} // namespace vnquery

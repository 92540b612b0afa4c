// What the user has changed in a result, and how that is written back to its table.
#pragma once

#include "vnquery/result/ResultSet.h"
#include "vnquery/result/TableWriter.h"
#include "vnquery/tasks/Failure.h"

#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace vnquery {

/// Row and column, from 0.
using CellPlace = std::pair<std::size_t, std::size_t>;

/// Cells with new values, new rows, and rows that are to be deleted. Each call of Set, Remove,
/// Insert and Delete is a step that Undo takes back; so is all that happens during the life of an
/// EditStep.
class PendingEdits {
public:
    bool IsEmpty() const { return m_edits.empty() && m_new.empty() && m_deleted.empty(); }
    /// Of changes: cells, new rows with all of their cells, deleted rows.
    std::size_t GetCount() const;
    std::size_t GetRowCount() const;
    /// Sets the cell's new value. In a row that is not new, setting the value that the result has
    /// removes the edit.
    void Set(CellPlace place, NewValue&& value, const ResultSet& result);
    void Remove(CellPlace place);
    /// A row that was appended to the result becomes a new one: its cells get the columns' defaults
    /// unless they are set.
    void Insert(std::size_t row);
    /// Marks a row for deletion; a new one is no longer new, and belongs to nothing.
    void Delete(std::size_t row);
    bool IsNew(std::size_t row) const { return m_new.contains(row); }
    bool IsDeleted(std::size_t row) const { return m_deleted.contains(row); }
    /// Forgets everything, steps too.
    void Clear() { *this = {}; }

    bool CanUndo() const { return !m_steps.empty(); }
    /// Takes the last step back; returns the rows that it was about, the last change's first.
    std::vector<std::size_t> Undo();
    /// After the row was written: nothing of it is pending any more.
    void Forget(std::size_t row);
    void ForgetSteps() { m_steps.clear(); }

    /// The cell's new value; null when it was not changed.
    const NewValue* Find(CellPlace place) const;
    const std::map<CellPlace, NewValue>& GetAll() const { return m_edits; }
    /// The cells of a row.
    RowValues GetRow(std::size_t row) const;
    const std::set<std::size_t>& GetNewRows() const { return m_new; }
    const std::set<std::size_t>& GetDeletedRows() const { return m_deleted; }

private:
    friend class EditStep;
    enum class What { Cell, Inserted, Dropped, Marked };
    struct Change {
        What what;
        CellPlace place;
        std::optional<NewValue> before; ///< of a cell
    };
    void Replace(CellPlace place, std::optional<NewValue>&& value);
    void TakeBack(Change& change);

    std::map<CellPlace, NewValue> m_edits;
    std::set<std::size_t> m_new;
    std::set<std::size_t> m_deleted;
    std::vector<std::vector<Change>> m_steps;
    int m_depth = 0; ///< of EditStep objects
};

/// During its life all changes are one step.
class EditStep {
public:
    explicit EditStep(PendingEdits& edits) : m_edits(edits) {
        if (m_edits.m_depth++ == 0)
            m_edits.m_steps.emplace_back();
    }
    ~EditStep() {
        if (--m_edits.m_depth == 0 && m_edits.m_steps.back().empty())
            m_edits.m_steps.pop_back();
    }
    EditStep(const EditStep&) = delete;
    EditStep& operator=(const EditStep&) = delete;

private:
    PendingEdits& m_edits;
};

/// A failure to write what was changed in a row.
class RowFailure : public Failure {
public:
    RowFailure(const Failure& failure, std::size_t row) : Failure(failure), m_row(row) {}
    std::size_t GetRow() const { return m_row; }

private:
    std::size_t m_row; ///< of the result
};

/// What happened to the edits in an open transaction.
struct WriteReport {
    struct Cell {
        CellPlace place;
        Value now; ///< in the table: as written, or as another user changed it
    };
    struct Row {
        std::size_t row;
        std::optional<RowKey> key; ///< nothing: the database does not tell
        std::vector<Cell> cells;   ///< as the table has them, if there is a key
    };
    std::vector<Cell> written;
    /// Changed by another user since the query; not written. Also in rows that were to be deleted,
    /// which are not deleted then.
    std::vector<Cell> conflicts;
    std::vector<CellPlace> lostRows;  ///< the row no longer exists
    std::vector<std::size_t> deleted; ///< or gone already
    std::vector<Row> inserted;
};

/// Finds out which edits WriteEdits would leave out, without writing: `written` has the cells that
/// it would write, with their old values, `inserted` the rows without their values. Throws Failure
/// and Interrupted.
WriteReport CompareEdits(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
                         const PendingEdits& edits, Progress& progress);

/// Where the sample writes cells and rows back: deletes rows, then changes cells, then inserts
/// rows. What is changed or deleted must still be in the table as it is in the result, the whole
/// row where it is deleted. The caller commits. Throws Failure, where it can be told as a
/// RowFailure, and Interrupted.
WriteReport WriteEdits(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
                       const PendingEdits& edits, Progress& progress);

/// After the commit: puts what was written into the result and removes the edits and all steps.
/// Edits and deletions in conflict stay, now on top of the table's present values, so that writing
/// again overwrites them; edits of lost rows are removed. Deleted rows stay in the result:
/// ResultDocument no longer shows them.
void AcceptReport(WriteReport&& report, ResultSet& result, PendingEdits& edits);

} // namespace vnquery

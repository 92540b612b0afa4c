// Cells that the user has changed, and how they are written back to their table.
#pragma once

#include "vnquery/result/ResultSet.h"
#include "vnquery/result/TableWriter.h"

#include <map>
#include <utility>
#include <vector>

namespace vnquery {

/// Row and column, from 0.
using CellPlace = std::pair<std::size_t, std::size_t>;

class PendingEdits {
public:
    bool IsEmpty() const { return m_edits.empty(); }
    std::size_t GetCount() const { return m_edits.size(); }
    std::size_t GetRowCount() const;
    /// Sets the cell's new value; setting the value that the result has removes the edit.
    void Set(CellPlace place, NewValue&& value, const ResultSet& result);
    void Remove(CellPlace place) { m_edits.erase(place); }
    void Clear() { m_edits.clear(); }
    /// The cell's new value; null when it was not changed.
    const NewValue* Find(CellPlace place) const;
    const std::map<CellPlace, NewValue>& GetAll() const { return m_edits; }

private:
    std::map<CellPlace, NewValue> m_edits;
};

/// What happened to the edits in an open transaction.
struct WriteReport {
    struct Cell {
        CellPlace place;
        Value now; ///< in the table: as written, or as another user changed it
    };
    std::vector<Cell> written;
    std::vector<Cell> conflicts;     ///< changed by another user since the query; not written
    std::vector<CellPlace> lostRows; ///< the row no longer exists
};

/// Finds out which edits WriteEdits would leave out, without writing: `written` has the cells that
/// it would write, with their old values. Throws Failure and Interrupted.
WriteReport CompareEdits(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
                         const PendingEdits& edits, Progress& progress);

/// Where the sample writes cells back: writes those whose values in the table are still those of
/// the result. The caller commits. Throws Failure and Interrupted.
WriteReport WriteEdits(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
                       const PendingEdits& edits, Progress& progress);

/// After the commit: puts what was written into the result and removes the edits. Edits in
/// conflict stay, now on top of the table's present value, so that writing again overwrites it;
/// edits of lost rows are removed.
void AcceptReport(WriteReport&& report, ResultSet& result, PendingEdits& edits);

} // namespace vnquery

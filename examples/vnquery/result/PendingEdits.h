// Cells that a person has changed and that are not written yet, and the writing.
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
    /// Sets what the cell is to become; the value that it has already makes an edit of it go.
    void Set(CellPlace place, NewValue&& value, const ResultSet& result);
    void Remove(CellPlace place) { m_edits.erase(place); }
    void Clear() { m_edits.clear(); }
    /// What the cell is to become; null when it was not changed.
    const NewValue* Find(CellPlace place) const;
    const std::map<CellPlace, NewValue>& GetAll() const { return m_edits; }

private:
    std::map<CellPlace, NewValue> m_edits;
};

/// What became of the edits in an open transaction.
struct WriteReport {
    struct Cell {
        CellPlace place;
        Value now; ///< what the table has now: as written, or as somebody else left it
    };
    std::vector<Cell> written;
    std::vector<Cell> conflicts;     ///< changed by somebody else since the query; not written
    std::vector<CellPlace> lostRows; ///< the row is gone
};

/// Finds out which of the edits WriteEdits would leave out, and writes nothing: `written` has the
/// cells that it would write, with their old values. Throws Failure and Interrupted.
WriteReport CompareEdits(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
                         const PendingEdits& edits, Progress& progress);

/// Writes the edits of cells whose values in the table are still those of the result. Commits
/// nothing. Throws Failure and Interrupted.
WriteReport WriteEdits(TableWriter& writer, const EditPlan& plan, const ResultSet& result,
                       const PendingEdits& edits, Progress& progress);

/// After the commit: puts what was written into the result and forgets the edits. Those in conflict
/// stay, on top of what the table has now, so that writing again overwrites it; those of lost rows
/// go.
void AcceptReport(WriteReport&& report, ResultSet& result, PendingEdits& edits);

} // namespace vnquery

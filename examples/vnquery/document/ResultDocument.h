// A result as the window shows it: rows and columns in the user's order, changed cells, markers.
#pragma once

#include "vnquery/document/QueryLayout.h"
#include "vnquery/document/SortRun.h"
#include "vnquery/result/CellText.h"
#include "vnquery/result/PendingEdits.h"
#include "vnquery/sources/QueryRun.h"

#include <memory>
#include <string>
#include <vector>

namespace vnquery {

/// "Shown" rows and columns are counted as displayed, others as the database gave them; all from 0.
class ResultDocument {
public:
    /// Begins an empty result with the layout that its query had last time. It belongs to this
    /// connection: its changes are never written to another one.
    void Begin(ResultShape&& shape, const std::string& sql, const Connection& connection);
    const Connection& GetConnection() const { return m_connection; }
    /// The database that is open now; the result can be edited only if it is the result's.
    void SetOpenDatabase(const Connection& connection) {
        m_isDetached = connection != m_connection;
    }
    bool IsDetached() const { return m_isDetached; }
    bool HasResult() const { return m_result.GetColumnCount() > 0; }

    ResultSet& GetResult() { return m_result; }
    const ResultSet& GetResult() const { return m_result; }
    const EditPlan& GetPlan() const { return m_plan; }
    PendingEdits& GetEdits() { return m_edits; }
    const PendingEdits& GetEdits() const { return m_edits; }
    QueryLayout& GetLayout() { return m_layout; }
    const std::string& GetSql() const { return m_sql; }
    CellFormat& GetFormat() { return m_format; }
    const CellFormat& GetFormat() const { return m_format; }

    /// Shows the rows that have been added since; returns how many.
    std::size_t ShowNewRows();
    std::size_t GetShownRows() const { return m_shownRows; }
    std::size_t GetShownColumns() const { return m_layout.order.size(); }
    CellPlace PlaceOf(std::size_t shownRow, std::size_t shownColumn) const {
        return {RowOf(shownRow), m_layout.order[shownColumn]};
    }
    /// The shown column of a column.
    std::size_t ShownColumnOf(std::size_t column) const;
    const std::string& GetHeading(std::size_t column) const {
        return m_result.GetColumns()[column];
    }
    ColumnKind GetKind(std::size_t column) const { return m_kinds[column]; }
    /// Gives columns of unknown kind the kind of their values. To be called when all rows have been
    /// read.
    void LearnKinds();

    /// A cell as it is displayed: its new value if it was changed.
    void AppendCellText(std::string& out, std::size_t shownRow, std::size_t shownColumn) const;
    std::string GetCellText(std::size_t shownRow, std::size_t shownColumn) const;
    /// The cell's new value if it was changed, else its value.
    Value GetValue(CellPlace place) const;
    /// Why the cell cannot be edited; NoKey also for a row that is not in the table.
    ReadOnlyReason GetReadOnlyReason(CellPlace place) const;
    /// The same for all cells of a column.
    ReadOnlyReason GetReadOnlyReason(std::size_t column) const {
        return m_isDetached ? ReadOnlyReason::OtherDatabase : m_plan.GetReadOnlyReason(column);
    }

    /// Begins to sort the shown rows by a shown column, as ResultSet::Sort does; false when there is
    /// no such column or a sort runs. Until EndSort no rows may be shown or changed.
    bool BeginSort(std::size_t shownColumn, bool descending);
    /// The sort that has begun and not ended; else null.
    SortRun* GetSort() const { return m_sort.get(); }
    /// Ends the sort when it no longer runs: shows the new order and keeps it in the layout. False
    /// when it was stopped or failed; the rows then stay as they are.
    bool EndSort();
    /// Where the row is shown that was shown at `before` until the last sort.
    std::size_t GetSortedRow(std::size_t before);
    /// Gives back the memory that GetSortedRow needs.
    void ForgetOldOrder();
    /// Moves a shown column; false at the edge.
    bool MoveColumn(std::size_t shownColumn, int by);

private:
    std::size_t RowOf(std::size_t shownRow) const {
        return m_order.empty() ? shownRow : m_order[shownRow];
    }

    std::string m_sql;
    Connection m_connection;
    bool m_isDetached = false;
    ResultSet m_result;
    std::vector<ColumnKind> m_kinds;
    EditPlan m_plan;
    PendingEdits m_edits;
    QueryLayout m_layout;
    CellFormat m_format;
    std::size_t m_shownRows = 0;
    std::vector<DWORD> m_order; ///< the result's row of each shown row; empty: the same
    std::unique_ptr<SortRun> m_sort;
    // Since the last sort, until ForgetOldOrder.
    std::vector<DWORD> m_oldOrder; ///< m_order before it
    std::vector<DWORD> m_places;   ///< by the result's row, where it is shown
    bool m_isNewlySorted = false;
};

} // namespace vnquery

// A result as the window shows it: rows in the user's order, changes, markers.
#pragma once

#include "vnquery/document/QueryLayout.h"
#include "vnquery/document/SortRun.h"
#include "vnquery/result/CellText.h"
#include "vnquery/result/ColumnSummary.h"
#include "vnquery/result/PendingEdits.h"
#include "vnquery/sources/QueryRun.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vnquery {

/// "Shown" rows are counted in their present order, others and columns as the database gave them;
/// all from 0.
class ResultDocument {
public:
    /// Begins an empty result with the layout that its query had last time. It belongs to this
    /// connection: its changes are never written to another one.
    void Begin(ResultShape&& shape, const std::string& sql, const Connection& connection);
    const Connection& GetConnection() const { return m_connection; }
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
    CellPlace PlaceOf(std::size_t shownRow, std::size_t column) const {
        return {RowOf(shownRow), column};
    }
    /// Where a row is shown; the number of shown rows when it is not.
    std::size_t GetShownRow(std::size_t row) const;
    const std::string& GetHeading(std::size_t column) const {
        return m_result.GetColumns()[column];
    }
    ColumnKind GetKind(std::size_t column) const { return m_kinds[column]; }
    /// Gives columns of unknown kind the kind of their values. To be called when all rows have been
    /// read.
    void LearnKinds();

    /// A cell as it is displayed: its new value if it was changed.
    void AppendCellText(std::string& out, std::size_t shownRow, std::size_t column) const;
    std::string GetCellText(std::size_t shownRow, std::size_t column) const;
    /// The cell's new value if it was changed, else its value.
    Value GetValue(CellPlace place) const;
    bool IsNull(std::size_t shownRow, std::size_t column) const;
    bool IsChanged(std::size_t shownRow, std::size_t column) const {
        return m_edits.Find(PlaceOf(shownRow, column)) != nullptr;
    }
    /// Why the cell cannot be edited; NoKey also for a row that is not in the table, or whose key
    /// the database has not told. In a new row key columns can be edited, too.
    ReadOnlyReason GetReadOnlyReason(CellPlace place) const;
    /// The same for all cells of a column.
    ReadOnlyReason GetReadOnlyReason(std::size_t column) const {
        return m_plan.GetReadOnlyReason(column);
    }

    // --- rows ------------------------------------------------------------------------------------
    // When all rows have been read, and not during a sort.

    /// Why no row can be inserted. That takes a result whose rows are those of one table.
    ReadOnlyReason GetInsertReason() const;
    /// Shows a new row at that place among the shown rows, or after them; returns its place.
    std::size_t InsertRow(std::size_t at);
    /// Shows a copy of a shown row, with its changes, after it; returns its place. Columns that the
    /// database computes, and those of a key that it fills, are left to it.
    std::size_t DuplicateRow(std::size_t shownRow);
    /// Marks shown rows for deletion; new ones disappear at once. Rows that cannot be found in the
    /// table stay. Returns how many were marked or disappeared.
    std::size_t DeleteRows(std::span<const std::size_t> shownRows);
    bool IsNew(std::size_t shownRow) const { return m_edits.IsNew(RowOf(shownRow)); }
    bool IsDeleted(std::size_t shownRow) const { return m_edits.IsDeleted(RowOf(shownRow)); }
    bool CanUndo() const { return m_edits.CanUndo(); }
    /// Takes back what the user did last (a cell, an insertion, a deletion); returns a shown row
    /// that it was about, if it is still shown.
    std::optional<std::size_t> Undo();
    /// Gives up all changes that were not written.
    void Discard();
    /// AcceptReport; deleted rows are shown no longer.
    void Accept(WriteReport&& report);

    /// Passes columns of shown rows on, with their changes: what is seen. What is set to the
    /// column's default is NULL. May be called on another thread while nothing changes here. Throws
    /// what the sink throws.
    void PassShownTo(RowSink& sink, std::span<const std::size_t> shownRows,
                     std::span<const std::size_t> columns, Progress& progress) const;
    /// Summarises a column of those shown rows that are not marked for deletion. The function may
    /// be called on another thread while the document changes.
    std::function<ColumnSummary(Progress&)> PrepareSummary(std::span<const std::size_t> shownRows,
                                                           std::size_t column) const;

    // --- order -----------------------------------------------------------------------------------

    /// Begins to sort the shown rows by a column, as ResultSet::Sort does; false when there is no
    /// such column or a sort runs. Until EndSort no rows may be shown or changed.
    bool BeginSort(std::size_t column, bool descending);
    /// The sort that has begun and not ended; else null.
    SortRun* GetSort() const { return m_sort.get(); }
    /// Ends the sort when it no longer runs: shows the new order and keeps it in the layout. False
    /// when it was stopped or failed; the rows then stay as they are.
    bool EndSort();
    /// Shows the rows as the database gave them; false while a sort runs.
    bool Unsort();
    /// Where the row is shown that was shown at `before` until the last sort.
    std::size_t GetSortedRow(std::size_t before);
    /// Gives back the memory that GetSortedRow needs.
    void ForgetOldOrder();

private:
    std::size_t RowOf(std::size_t shownRow) const {
        return m_isOrdered ? m_order[shownRow] : shownRow;
    }
    bool IsFound(std::size_t row) const;
    void MakeOrder();
    void Show(std::size_t row, std::size_t at);
    void Hide(std::size_t row);

    std::string m_sql;
    Connection m_connection;
    ResultSet m_result;
    std::vector<ColumnKind> m_kinds;
    EditPlan m_plan;
    PendingEdits m_edits;
    QueryLayout m_layout;
    CellFormat m_format;
    std::size_t m_shownRows = 0;
    std::size_t m_seenRows = 0;         ///< of the result, shown or not
    bool m_isOrdered = false;           ///< else the result's rows are shown as they come
    std::vector<DWORD> m_order;         ///< the result's row of each shown row
    std::map<DWORD, std::size_t> m_own; ///< inserted rows, with the places where they were shown
    std::unique_ptr<SortRun> m_sort;
    // Since the last sort, until ForgetOldOrder.
    std::vector<DWORD> m_oldOrder; ///< m_order before it; empty: the result's order
    std::vector<DWORD> m_places;   ///< by the result's row, where it is shown
    bool m_isNewlySorted = false;
};

} // namespace vnquery

// A result as a window shows it: rows and columns in the person's order, changed cells, markers.
#pragma once

#include "vnquery/result/CellText.h"
#include "vnquery/result/PendingEdits.h"
#include "vnquery/sources/QueryRun.h"
#include "vnquery/window/QueryLayout.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vnquery {

/// "Shown" rows and columns count as displayed, from 0; others as the database gave them.
class ResultDocument {
public:
    /// Begins an empty result with the layout that its query had last time. It is bound to the
    /// connection it comes from: nothing of it is ever written to another one.
    void Begin(ResultShape&& shape, const std::string& sql, const Connection& connection);
    const Connection& GetConnection() const { return m_connection; }
    /// The database that is open now: with another one than its own the result cannot be edited.
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

    /// Shows rows that have come behind those shown; returns how many.
    std::size_t ShowNewRows();
    std::size_t GetShownRows() const { return m_rows.size(); }
    std::size_t GetShownColumns() const { return m_layout.order.size(); }
    CellPlace PlaceOf(std::size_t shownRow, std::size_t shownColumn) const {
        return {m_rows[shownRow], m_layout.order[shownColumn]};
    }
    /// Where a column is shown.
    std::size_t ShownColumnOf(std::size_t column) const;
    const std::string& GetHeading(std::size_t column) const {
        return m_result.GetColumns()[column];
    }
    ColumnKind GetKind(std::size_t column) const { return m_kinds[column]; }
    /// Gives columns whose type says nothing the kind of their values. To be called when all rows
    /// are there.
    void LearnKinds();

    std::string GetRowText(std::size_t shownRow) const;
    std::string GetCellText(std::size_t shownRow, std::size_t shownColumn) const;
    /// What the cell is to become, or else has.
    const Value& GetValue(CellPlace place) const;
    /// Why the cell cannot be edited; also NoKey for a row that is none of the table.
    ReadOnlyReason GetReadOnlyReason(CellPlace place) const;
    /// The same for all cells of a column.
    ReadOnlyReason GetReadOnlyReason(std::size_t column) const {
        return m_isDetached ? ReadOnlyReason::OtherDatabase : m_plan.GetReadOnlyReason(column);
    }

    /// The shown rows in the order of a column of numbers: order[i] is the one to come to i. NULL
    /// comes first, text last; equal ones keep their order. Downwards is the reverse in all.
    std::vector<std::uint32_t> GetNumberOrder(std::size_t column, bool upwards) const;
    /// Takes over a new order of the shown rows.
    void Reorder(const std::vector<std::uint32_t>& order);
    /// Moves a shown column; false when it is at the edge already.
    bool MoveColumn(std::size_t shownColumn, int by);

private:
    std::string m_sql;
    Connection m_connection;
    bool m_isDetached = false;
    ResultSet m_result;
    std::vector<ColumnKind> m_kinds;
    EditPlan m_plan;
    PendingEdits m_edits;
    QueryLayout m_layout;
    CellFormat m_format;
    std::vector<std::size_t> m_rows; ///< of the shown rows
};

} // namespace vnquery

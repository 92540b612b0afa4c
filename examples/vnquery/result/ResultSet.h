// The rows that a query has returned.
#pragma once

#include "vnquery/result/RowSink.h"

#include "vnbytstr/RowSort.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vnquery {

struct CellFormat;

/// Rows in a row store, of which only some pages are in memory. Rows and columns count from 0.
///
/// Copies share the rows. One thread may add rows while others read; no other changes at the same
/// time. All functions but the getters throw what the store throws.
class ResultSet {
public:
    /// Without columns.
    ResultSet() : ResultSet(std::vector<std::string>(), false) {}
    /// No rows yet, for those of the source.
    explicit ResultSet(const RowSource& source)
        : ResultSet(source.GetColumns(), !source.GetEditPlan().rowIdName.empty()) {}
    ~ResultSet();
    ResultSet(const ResultSet&);
    ResultSet& operator=(const ResultSet&);

    const std::vector<std::string>& GetColumns() const { return m_columns; }
    std::size_t GetColumnCount() const { return m_columns.size(); }
    std::size_t GetRowCount() const;

    /// A long value refers to the rows: to what they have at the time.
    Value GetValue(std::size_t row, std::size_t column) const;
    /// Appends the value as FormatCell shows it.
    void AppendCell(std::string& out, std::size_t row, std::size_t column,
                    const CellFormat& format) const;
    /// The row's number in its table, if the source gave one.
    std::optional<long long> GetRowId(std::size_t row) const;
    /// What the values of a column are so far: Integer, Decimal, or Unknown for others and for
    /// none.
    ColumnKind GetSeenKind(std::size_t column) const;

    /// Adds all rows of the source. Throws what the source throws, and Failure, with the row and
    /// column in the message, when a value does not fit on the disk or in memory; the rows before
    /// stay.
    void Fetch(RowSource& source, Progress& progress);
    void SetValue(std::size_t row, std::size_t column, const Value& value);
    /// Adds a row of NULLs, not while another thread adds rows; returns its place.
    std::size_t AppendRow();
    /// Only where the source has row numbers.
    void SetRowId(std::size_t row, long long id);
    /// Sorts the rows in `order`, or all rows when that is empty, by the values of a column as
    /// CRowSort does; the rows of `changed` count with the values given there. False, with `order`
    /// as it was, when `goOn` returned false.
    bool Sort(std::size_t column, const std::map<std::size_t, Value>& changed, bool descending,
              std::vector<DWORD>& order, const CRowSort::Progress& goOn) const;

private:
    class Rows;
    class Filler;
    class Range;
    class SortedColumn;

    ResultSet(std::vector<std::string> columns, bool hasRowIds);

    std::vector<std::string> m_columns;
    std::shared_ptr<Rows> m_rows;
};

/// "row 1, column 2": counted from 1, for messages.
std::string CellName(std::size_t row, std::size_t column);

} // namespace vnquery

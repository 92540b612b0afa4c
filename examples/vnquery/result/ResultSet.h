// The rows that a query has returned.
#pragma once

#include "vnquery/result/RowSink.h"

#include <deque>

namespace vnquery {

/// Rows and columns count from 0.
class ResultSet {
public:
    explicit ResultSet(std::vector<std::string> columns = {}) : m_columns(std::move(columns)) {}

    const std::vector<std::string>& GetColumns() const { return m_columns; }
    std::size_t GetColumnCount() const { return m_columns.size(); }
    std::size_t GetRowCount() const { return m_rows; }
    Value& At(std::size_t row, std::size_t column) {
        return m_values[row * m_columns.size() + column];
    }
    const Value& At(std::size_t row, std::size_t column) const {
        return m_values[row * m_columns.size() + column];
    }

    /// Reads all rows of the source. Throws what the source throws, and Failure, with the row and
    /// column in the message, when a value does not fit on the disk or in memory.
    void Fetch(RowSource& source, Progress& progress);
    /// Passes all rows on. Throws what the sink throws.
    void PassTo(RowSink& sink, Progress& progress) const;
    /// Appends the rows of another result with the same columns, which is empty afterwards.
    void Append(ResultSet&& other);
    /// Forgets the values of a row whose reading failed.
    void DropIncompleteRow() { m_values.resize(m_rows * m_columns.size()); }
    /// The row's number in its table, if the source gave one.
    std::optional<long long> GetRowId(std::size_t row) const;

private:
    friend class RowReader;

    std::vector<std::string> m_columns;
    std::size_t m_rows = 0;
    std::deque<Value> m_values; ///< row by row; a deque never moves its elements
    std::vector<std::optional<long long>> m_rowIds; ///< empty, or one for each row
};

/// Reads the rows of a source one by one. Only some pages of long values stay in memory.
class RowReader {
public:
    RowReader(RowSource& source, Progress& progress) : m_source(source), m_progress(progress) {}

    /// Adds the next row to the result; false after the last one. Throws as ResultSet::Fetch.
    bool ReadRow(ResultSet& result);

private:
    void ReleaseMemory(const Value& value);

    RowSource& m_source;
    Progress& m_progress;
    std::size_t m_row = 0;
    ULONGLONG m_pages = 0; ///< in memory, of values in stores
};

/// "row 1, column 2": counted from 1, for messages.
std::string CellName(std::size_t row, std::size_t column);

} // namespace vnquery

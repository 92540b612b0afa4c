// The rows of a query that has been run.
#pragma once

#include "RowSource.h"

#include <deque>

namespace vnquery {

/// Rows and columns count from 0.
class ResultSet {
public:
    explicit ResultSet(std::vector<std::string> columns) : m_columns(std::move(columns)) {}

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
    /// column in the message, when a value finds no room on the disk or in memory.
    void Fetch(RowSource& source, Progress& progress);

private:
    void ReleaseMemory(const Value& value);

    std::vector<std::string> m_columns;
    std::size_t m_rows = 0;
    ULONGLONG m_pages = 0;      ///< of values in stores that are in memory
    std::deque<Value> m_values; ///< row by row; a deque, since it never moves what it holds
};

/// "row 1, column 2", as people count.
std::string CellName(std::size_t row, std::size_t column);

} // namespace vnquery

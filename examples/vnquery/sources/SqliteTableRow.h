// The values of one row of an SQLite table, found by the row's number.
#pragma once

#include "vnquery/sources/SqliteTable.h"

#include <string>
#include <vector>

namespace vnquery {

/// Reads a row of short values with one statement. Where a value is long, its texts and bytes are
/// read from the table in pieces, so that even SQLite never has one as a whole. All functions throw
/// Failure and Interrupted.
class SqliteTableRow {
public:
    /// `columns` are names in the table. Both references must stay valid.
    SqliteTableRow(const SqliteDatabase& database, const SqliteTable& table,
                   std::vector<std::string> columns);

    void GoTo(long long number);
    /// A value of that row, by its index in the columns.
    void Read(std::size_t column, ValueSink& sink);

private:
    /// The types of some columns, each followed by the value if it cannot be read in pieces.
    struct Details {
        SqliteDatabase::Statement statement;
        bool isAtRow = false;
    };

    sqlite3_stmt* SeekDetails(std::size_t column);
    bool SeekBlob(std::size_t column);
    void ReadInPieces(std::size_t column, Value::Type type, ValueSink& sink);
    std::string Select(const std::string& what) const;
    void Find(sqlite3_stmt* statement) const;

    const SqliteDatabase& m_database;
    const SqliteTable& m_table;
    const std::vector<std::string> m_columns;
    const std::size_t m_columnsOfDetails; ///< per statement, which gives two of each
    SqliteDatabase::Statement m_short;    ///< all values
    std::vector<Details> m_details;       ///< prepared when first needed
    const bool m_canOpenBlobs;
    std::vector<SqliteDatabase::Blob> m_blobs;
    long long m_number = 0;
    bool m_isShort = false; ///< m_short is at the row
};

} // namespace vnquery

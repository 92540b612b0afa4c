#include "vnquery/sources/SqliteTableRow.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"

#include <algorithm>

#include <sqlite3.h>

namespace vnquery {

SqliteTableRow::SqliteTableRow(const SqliteDatabase& database, const SqliteTable& table,
                               std::vector<std::string> columns)
    : m_database(database), m_table(table), m_columns(std::move(columns)),
      m_columnsOfDetails(
          static_cast<std::size_t>(sqlite3_limit(database.Get(), SQLITE_LIMIT_COLUMN, -1)) / 2),
      m_canOpenBlobs(SqliteTable::CanOpenBlobs(database, table.GetSchema(), table.GetName())),
      m_blobs(m_columns.size()) {
    std::string all;
    for (const std::string& column : m_columns)
        all.append(all.empty() ? "" : ", ").append(QuoteName(column));
    m_short = m_database.Prepare(Select(all));
    m_details.resize((m_columns.size() + m_columnsOfDetails - 1) / m_columnsOfDetails);
}

std::string SqliteTableRow::Select(const std::string& what) const {
    return "SELECT " + what + " FROM " + m_table.GetQuotedName() + " WHERE " +
           m_table.GetRowIdName() + " = ?";
}

void SqliteTableRow::GoTo(long long number) {
    m_number = number;
    for (Details& details : m_details)
        details.isAtRow = false;
    sqlite3_reset(m_short.get());
    sqlite3_bind_int64(m_short.get(), 1, number);
    const SqliteLengthLimit limit(m_database);
    const int result = sqlite3_step(m_short.get());
    m_isShort = result == SQLITE_ROW;
    if (!m_isShort && result != SQLITE_TOOBIG)
        m_database.Fail(Text(IDS_VQ_CANNOT_READ_TABLE_ROW, {m_table.GetName()}));
}

void SqliteTableRow::Find(sqlite3_stmt* statement) const {
    sqlite3_reset(statement);
    sqlite3_bind_int64(statement, 1, m_number);
    if (sqlite3_step(statement) != SQLITE_ROW)
        m_database.Fail(Text(IDS_VQ_CANNOT_READ_TABLE_ROW, {m_table.GetName()}));
}

/// The statement with the column's type and value, at the row.
sqlite3_stmt* SqliteTableRow::SeekDetails(std::size_t column) {
    const std::size_t first = column / m_columnsOfDetails * m_columnsOfDetails;
    Details& details = m_details[column / m_columnsOfDetails];
    if (!details.statement) {
        const std::string inPieces = m_database.IsTextUtf8() ? "('blob', 'text')" : "('blob')";
        std::string what;
        for (std::size_t i = first; i < std::min(first + m_columnsOfDetails, m_columns.size());
             ++i) {
            const std::string name = QuoteName(m_columns[i]);
            what.append(what.empty() ? "typeof(" : ", typeof(").append(name);
            what.append("), CASE WHEN typeof(").append(name).append(") IN ").append(inPieces);
            what.append(" THEN NULL ELSE ").append(name).append(" END");
        }
        details.statement = m_database.Prepare(Select(what));
    }
    if (!details.isAtRow)
        Find(details.statement.get());
    details.isAtRow = true;
    return details.statement.get();
}

void SqliteTableRow::Read(std::size_t column, ValueSink& sink) {
    if (m_isShort)
        return m_database.ReadWhole(m_short.get(), static_cast<int>(column), sink);
    sqlite3_stmt* details = SeekDetails(column);
    const int index = static_cast<int>(column % m_columnsOfDetails * 2);
    const std::string_view type = SqliteColumnText(details, index);
    const bool isText = type == "text";
    if (type == "blob" || (isText && m_database.IsTextUtf8()))
        ReadInPieces(column, isText ? Value::Type::Text : Value::Type::Binary, sink);
    else
        m_database.ReadWhole(details, index + 1, sink);
}

/// Opens the value; false when it cannot be read in pieces, such as a default that ALTER TABLE gave
/// to existing rows, or a generated column.
bool SqliteTableRow::SeekBlob(std::size_t column) {
    if (!m_canOpenBlobs)
        return false;
    SqliteDatabase::Blob& blob = m_blobs[column];
    int result = SQLITE_ERROR;
    if (blob) {
        result = sqlite3_blob_reopen(blob.get(), m_number);
    } else {
        sqlite3_blob* opened = nullptr;
        result = sqlite3_blob_open(m_database.Get(), m_table.GetSchema().c_str(),
                                   m_table.GetName().c_str(), m_columns[column].c_str(), m_number,
                                   0, &opened);
        blob.reset(opened);
    }
    if (result == SQLITE_OK)
        return true;
    blob.reset();
    if (result != SQLITE_ERROR)
        m_database.Fail(Text(IDS_VQ_CANNOT_READ_VALUE, {m_columns[column]}));
    return false;
}

void SqliteTableRow::ReadInPieces(std::size_t column, Value::Type type, ValueSink& sink) {
    if (SeekBlob(column))
        return m_database.ReadPieces(m_blobs[column].get(), type, m_columns[column], sink);
    const auto whole = m_database.Prepare(Select(QuoteName(m_columns[column])));
    Find(whole.get());
    m_database.ReadWhole(whole.get(), 0, sink);
}

} // namespace vnquery

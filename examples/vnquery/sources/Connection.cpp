#include "vnquery/sources/Connection.h"

#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/OdbcConnection.h"
#include "vnquery/sources/OdbcSource.h"
#include "vnquery/sources/OdbcWriter.h"
#include "vnquery/sources/SqliteDatabase.h"
#include "vnquery/sources/SqliteSource.h"
#include "vnquery/sources/SqliteWriter.h"

#include <algorithm>

namespace vnquery {

namespace {

bool IsPassword(std::string_view key) {
    std::string upper = ToUpper(key);
    std::erase_if(upper, [](char ch) { return ch == ' ' || ch == '\t'; });
    return upper == "PWD" || upper == "PASSWORD";
}

/// End of the value that begins at `at`: the next semicolon outside of braces.
std::size_t EndOfValue(std::string_view text, std::size_t at) {
    if (at < text.size() && text[at] == '{')
        at = std::min(text.find('}', at), text.size());
    return std::min(text.find(';', at), text.size());
}

} // namespace

std::string Connection::GetDisplayName() const {
    if (!file.empty())
        return file;
    const std::string_view text = dataSource;
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t equals = std::min(text.find('=', at), text.size());
        const std::size_t end = EndOfValue(text, std::min(equals + 1, text.size()));
        if (equals < end && IsPassword(text.substr(at, equals - at)))
            shown.append(text.substr(at, equals - at)).append("=***");
        else
            shown += text.substr(at, end - at);
        if (end < text.size())
            shown += ';';
        at = end + 1;
    }
    return shown;
}

SqlServer FindServer(const Connection& connection) {
    if (connection.file.empty())
        return OdbcConnection(connection.dataSource, OdbcConnection::Access::Read).GetServer();
    SqliteDatabase(connection.file, SqliteDatabase::Access::Read);
    return SqlServer::Sqlite;
}

std::unique_ptr<RowSource> OpenSource(const Connection& connection, const std::string& sql,
                                      SourceUse use) {
    if (!connection.file.empty())
        return std::make_unique<SqliteSource>(connection.file, sql, use);
    return std::make_unique<OdbcSource>(connection.dataSource, sql, use);
}

std::unique_ptr<TableWriter> OpenWriter(const Connection& connection, const EditPlan& plan) {
    if (!connection.file.empty())
        return std::make_unique<SqliteWriter>(connection.file, plan);
    return std::make_unique<OdbcWriter>(connection.dataSource, plan);
}

} // namespace vnquery

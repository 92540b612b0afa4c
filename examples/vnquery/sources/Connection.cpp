#include "vnquery/sources/Connection.h"

#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/ConnectionText.h"
#include "vnquery/sources/OdbcConnection.h"
#include "vnquery/sources/OdbcSource.h"
#include "vnquery/sources/OdbcWriter.h"
#include "vnquery/sources/SqliteDatabase.h"
#include "vnquery/sources/SqliteSource.h"
#include "vnquery/sources/SqliteWriter.h"

#include <sqlite3.h>

#include <filesystem>
#include <map>

namespace vnquery {

std::string Connection::GetDisplayName() const {
    return !file.empty() ? file : HidePasswords(dataSource);
}

std::string Connection::GetShortName() const {
    if (!name.empty() || !file.empty())
        return !name.empty() ? name : std::filesystem::path(file).filename().string();
    std::map<std::string, std::string> keys; // the first one of each counts
    for (const auto& [key, value] : ParseConnection(HidePasswords(dataSource)))
        keys.emplace(ToUpper(key), value);
    const auto find = [&](std::initializer_list<const char*> names) {
        for (const char* each : names)
            if (const auto found = keys.find(each); found != keys.end() && !found->second.empty())
                return found->second;
        return std::string();
    };
    const std::string database = find({"DATABASE", "DB"});
    const std::string server = find({"SERVER", "SERVERNAME", "HOST", "DSN", "FILEDSN"});
    if (database.empty() || server.empty())
        return database.empty() && server.empty() ? GetDisplayName() : database + server;
    return database + " (" + server + ")";
}

SqlServer FindServer(const Connection& connection) {
    if (connection.file.empty())
        return OdbcConnection(connection.dataSource, OdbcConnection::Access::Read).GetServer();
    const SqliteDatabase opened(connection.file, SqliteDatabase::Access::Read);
    return SqlServer::Sqlite;
}

std::string DescribeServer(const Connection& connection) {
    if (connection.file.empty())
        return OdbcConnection(connection.dataSource, OdbcConnection::Access::Read).GetSystem();
    // Reads the schema, which a file that is no database does not have.
    const SqliteSource source(connection.file, "select 1 from sqlite_schema", SourceUse::ReadOnly);
    return std::string("SQLite ") + sqlite3_libversion();
}

std::unique_ptr<RowSource> OpenSource(const Connection& connection, const std::string& sql,
                                      SourceUse use, const Parameters& parameters) {
    if (!connection.file.empty())
        return std::make_unique<SqliteSource>(connection.file, sql, use, parameters);
    return std::make_unique<OdbcSource>(connection.dataSource, sql, use, parameters);
}

std::unique_ptr<TableWriter> OpenWriter(const Connection& connection, const EditPlan& plan) {
    if (!connection.file.empty())
        return std::make_unique<SqliteWriter>(connection.file, plan);
    return std::make_unique<OdbcWriter>(connection.dataSource, plan);
}

} // namespace vnquery

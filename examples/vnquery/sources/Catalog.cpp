#include "vnquery/sources/Catalog.h"

#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/OdbcCatalog.h"
#include "vnquery/sources/SqlWords.h"
#include "vnquery/sources/SqliteCatalog.h"

#include <algorithm>

namespace vnquery {

namespace {

/// Whether the server reads the name as it is without quotes.
bool IsPlainName(std::string_view name, SqlServer server) {
    // PostgreSQL takes upper case for lower case, and standard SQL the other way round.
    const bool hasCase = server == SqlServer::PostgreSql || server == SqlServer::Other;
    const auto isPlain = [&](char ch) {
        return (ch >= 'a' && ch <= 'z') || ch == '_' || (!hasCase && ch >= 'A' && ch <= 'Z');
    };
    return !name.empty() && isPlain(name.front()) && std::ranges::all_of(name, [&](char ch) {
        return isPlain(ch) || (ch >= '0' && ch <= '9');
    }) && !IsSqlWord(ToUpper(name));
}

} // namespace

Catalog ReadCatalog(const Connection& connection) {
    Catalog catalog = connection.file.empty() ? OdbcCatalog(connection.dataSource).Read()
                                              : SqliteCatalog(connection.file).Read();
    std::ranges::sort(catalog.tables, {}, [](const CatalogTable& table) {
        return std::pair(std::string_view(table.schema), std::string_view(table.name));
    });
    return catalog;
}

void ReadAllColumns(const Connection& connection, Catalog& catalog) {
    if (connection.file.empty())
        OdbcCatalog(connection.dataSource).ReadColumns(catalog.tables);
    else
        SqliteCatalog(connection.file).ReadColumns(catalog.tables);
}

void ReadTable(const Connection& connection, CatalogTable& table) {
    if (connection.file.empty())
        OdbcCatalog(connection.dataSource).ReadTable(table);
    else
        SqliteCatalog(connection.file).ReadTable(table);
}

std::string ReadDdl(const Connection& connection, const CatalogTable& table) {
    return connection.file.empty() ? OdbcCatalog(connection.dataSource).ReadDdl(table)
                                   : SqliteCatalog(connection.file).ReadDdl(table);
}

std::string SqlName(std::string_view name, SqlServer server) {
    if (IsPlainName(name, server))
        return std::string(name);
    const char quote = server == SqlServer::MySql ? '`' : '"';
    std::string quoted(1, quote);
    for (const char ch : name)
        quoted.append(ch == quote ? 2 : 1, ch);
    return quoted + quote;
}

std::string SqlName(const CatalogTable& table, SqlServer server) {
    const std::string name = SqlName(table.name, server);
    return table.needsSchema ? SqlName(table.schema, server) + "." + name : name;
}

} // namespace vnquery

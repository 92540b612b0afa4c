#include "vnquery/sources/SqliteCatalog.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"

#include <sqlite3.h>

namespace vnquery {

/// Calls `takeRow` with each row of the query, which asks about the table with that name.
template <class TakeRow>
void SqliteCatalog::ForEachRow(const char* sql, const std::string& name, TakeRow&& takeRow) const {
    const SqliteDatabase::Statement statement = m_database.Prepare(sql);
    sqlite3_bind_text(statement.get(), 1, name.data(), static_cast<int>(name.size()),
                      SQLITE_STATIC);
    while (m_database.Step(
        statement.get(), [&] { return Text(IDS_VQ_CANNOT_READ_DATABASE, {m_database.GetFile()}); }))
        takeRow([&](int column) { return std::string(SqliteColumnText(statement.get(), column)); });
}

Catalog SqliteCatalog::Read() const {
    Catalog catalog{SqlServer::Sqlite, {}};
    ForEachRow("SELECT name, type FROM sqlite_schema WHERE type IN ('table', 'view') AND "
               "name NOT LIKE 'sqlite!_%' ESCAPE '!'",
               {}, [&](auto text) {
                   catalog.tables.push_back({{}, text(0), text(1) == "view"});
               });
    return catalog;
}

void SqliteCatalog::ReadColumns(CatalogTable& table) const {
    table.columns.clear();
    // Without the hidden columns of virtual tables.
    ForEachRow(
        "SELECT name, type, dflt_value, pk, \"notnull\" FROM pragma_table_xinfo(?1) "
        "WHERE hidden <> 1",
        table.name, [&](auto text) {
            table.columns.push_back({text(0), text(1), text(2), text(3) != "0", text(4) == "0"});
        });
}

void SqliteCatalog::ReadColumns(std::span<CatalogTable> tables) const {
    for (CatalogTable& table : tables) {
        try {
            ReadColumns(table);
        } catch (const Failure&) {
            table.columns.clear();
        }
    }
}

void SqliteCatalog::ReadTable(CatalogTable& table) const {
    ReadColumns(table);
    table.indexes.clear();
    ForEachRow("SELECT l.name, i.name, l.\"unique\" FROM pragma_index_list(?1) l "
               "JOIN pragma_index_info(l.name) i ORDER BY l.name, i.seqno",
               table.name, [&](auto text) {
                   if (table.indexes.empty() || table.indexes.back().name != text(0))
                       table.indexes.push_back({text(0), {}, text(2) != "0"});
                   table.indexes.back().columns.push_back(text(1));
               });
    table.triggers.clear();
    ForEachRow("SELECT name FROM sqlite_schema WHERE type = 'trigger' AND "
               "tbl_name = ?1 COLLATE NOCASE ORDER BY name",
               table.name, [&](auto text) { table.triggers.push_back(text(0)); });
}

std::string SqliteCatalog::ReadDdl(const CatalogTable& table) const {
    std::string ddl;
    ForEachRow("SELECT sql FROM sqlite_schema WHERE tbl_name = ?1 COLLATE NOCASE AND "
               "sql IS NOT NULL ORDER BY type NOT IN ('table', 'view'), type, name",
               table.name, [&](auto text) { ddl += text(0) + ";\n"; });
    return ddl;
}

} // namespace vnquery

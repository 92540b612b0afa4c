#include "vnquery/sources/SqliteTable.h"

#include "vnquery/result/AsciiUpper.h"

#include <algorithm>

#include <sqlite3.h>

namespace vnquery {

namespace {

bool EqualsNoCase(const char* a, const char* b) { return sqlite3_stricmp(a, b) == 0; }

} // namespace

SqliteTable::SqliteTable(const SqliteDatabase& database, const char* schema, const char* name)
    : m_database(&database), m_schema(schema), m_name(name), m_rowId(FindRowIdName()) {}

std::optional<SqliteTable> SqliteTable::Find(const SqliteDatabase& database,
                                             sqlite3_stmt* statement, const OneTableQuery& query) {
    const int count = sqlite3_column_count(statement);
    int first = 0;
    while (first < count && !sqlite3_column_table_name(statement, first))
        ++first;
    if (first == count)
        return {};
    const char* name = sqlite3_column_table_name(statement, first);
    if (!EqualsNoCase(name, query.table.c_str()))
        return {};
    SqliteTable table(database, sqlite3_column_database_name(statement, first), name);
    return table.IsPlain() ? std::optional(std::move(table)) : std::nullopt;
}

SqliteDatabase::Statement SqliteTable::Prepare(const char* sql) const {
    SqliteDatabase::Statement statement = m_database->Prepare(sql);
    sqlite3_bind_text(statement.get(), 1, m_schema.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(statement.get(), 2, m_name.c_str(), -1, SQLITE_TRANSIENT);
    return statement;
}

bool SqliteTable::CanOpenBlobs(const SqliteDatabase& database, const std::string& schema,
                               const std::string& table) {
    const auto list = database.Prepare("SELECT 1 FROM pragma_table_xinfo(?2, ?1) WHERE hidden = 2");
    sqlite3_bind_text(list.get(), 1, schema.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(list.get(), 2, table.c_str(), -1, SQLITE_TRANSIENT);
    return sqlite3_step(list.get()) == SQLITE_DONE;
}

bool SqliteTable::IsPlain() const {
    const auto list = Prepare("SELECT 1 FROM pragma_table_list(?2) WHERE schema = ?1 COLLATE "
                              "NOCASE AND type = 'table'");
    return sqlite3_step(list.get()) == SQLITE_ROW;
}

std::string SqliteTable::FindRowIdName() const {
    const auto numbered = Prepare("SELECT 1 FROM pragma_table_list(?2) "
                                  "WHERE schema = ?1 COLLATE NOCASE AND wr = 0");
    if (sqlite3_step(numbered.get()) != SQLITE_ROW)
        return {};
    const auto columns = Prepare("SELECT 1 FROM pragma_table_xinfo(?2, ?1) "
                                 "WHERE name = ?3 COLLATE NOCASE");
    for (const char* name : {"rowid", "_rowid_", "oid"}) {
        sqlite3_reset(columns.get());
        sqlite3_bind_text(columns.get(), 3, name, -1, SQLITE_TRANSIENT);
        if (sqlite3_step(columns.get()) == SQLITE_DONE)
            return name;
    }
    return {};
}

/// By their names in upper case.
std::map<std::string, SqliteTable::Column> SqliteTable::ReadColumns() const {
    const auto list = Prepare("SELECT name, dflt_value, \"notnull\", hidden, pk, upper(type) "
                              "FROM pragma_table_xinfo(?2, ?1)");
    std::map<std::string, Column> columns;
    while (sqlite3_step(list.get()) == SQLITE_ROW)
        columns[ToUpper(SqliteColumnText(list.get(), 0))] = {
            std::string(SqliteColumnText(list.get(), 1)), sqlite3_column_int(list.get(), 2) == 0,
            sqlite3_column_int(list.get(), 3) == 0, sqlite3_column_int(list.get(), 4) > 0,
            std::string(SqliteColumnText(list.get(), 5))};
    return columns;
}

EditPlan SqliteTable::PlanEditing(sqlite3_stmt* statement) const {
    EditPlan plan;
    plan.readOnly = ReadOnlyReason::None;
    plan.schema = m_schema;
    plan.table = m_name;
    plan.rowIdName = m_rowId;
    const std::map<std::string, Column> columns = ReadColumns();
    const bool isOneKey =
        std::ranges::count_if(columns, [](const auto& column) { return column.second.isKey; }) == 1;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
        EditColumn& edit = plan.columns.emplace_back();
        const char* origin = sqlite3_column_origin_name(statement, i);
        edit.readOnly = ReadOnlyReason::Computed;
        if (!origin)
            continue;
        edit.name = origin;
        const auto found = columns.find(ToUpper(origin));
        if (found == columns.end() || !found->second.isStored) { // generated, or the row's number
            edit.isFilled = EqualsNoCase(origin, m_rowId.c_str());
            edit.readOnly = edit.isFilled ? ReadOnlyReason::Key : ReadOnlyReason::Computed;
            continue;
        }
        const Column& column = found->second;
        edit.defaultSql = column.defaultSql;
        edit.isNullable = column.isNullable;
        const bool isRowId = isOneKey && column.isKey && column.type == "INTEGER";
        edit.readOnly = isRowId ? ReadOnlyReason::Key : ReadOnlyReason::None;
        edit.isFilled = isRowId;
    }
    return plan;
}

void SqliteTable::UseKeyColumns(EditPlan& plan) const {
    plan.rowIdName.clear();
    plan.readOnly = ReadOnlyReason::NoKey;
    const auto keys = Prepare("SELECT name FROM pragma_table_xinfo(?2, ?1) WHERE pk > 0");
    std::vector<std::string> names;
    while (sqlite3_step(keys.get()) == SQLITE_ROW)
        names.emplace_back(SqliteColumnText(keys.get(), 0));
    plan.SetKey(names, [](const std::string& a, const std::string& b) {
        return EqualsNoCase(a.c_str(), b.c_str());
    });
}

} // namespace vnquery

#include "vnquery/sources/OdbcCatalog.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/OdbcText.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <stop_token>

namespace vnquery {

namespace {

bool IsOfSystem(std::string_view schema, SqlServer server) {
    constexpr std::array<std::string_view, 3> kMySql = {"mysql", "performance_schema", "sys"};
    return ToUpper(schema) == "INFORMATION_SCHEMA" ||
           (server == SqlServer::PostgreSql && schema.starts_with("pg_")) ||
           (server == SqlServer::MySql && std::ranges::find(kMySql, schema) != kMySql.end());
}

/// Schema, table, column, type, default, whether it is nullable, whether it belongs to the key.
constexpr char kPostgreSqlColumns[] =
    "SELECT n.nspname, c.relname, a.attname, format_type(a.atttypid, a.atttypmod), "
    "coalesce(pg_get_expr(d.adbin, d.adrelid), ''), (NOT a.attnotnull)::int, "
    "coalesce(a.attnum = ANY (i.indkey), false)::int FROM pg_attribute a "
    "JOIN pg_class c ON c.oid = a.attrelid JOIN pg_namespace n ON n.oid = c.relnamespace "
    "LEFT JOIN pg_attrdef d ON d.adrelid = c.oid AND d.adnum = a.attnum "
    "LEFT JOIN pg_index i ON i.indrelid = c.oid AND i.indisprimary "
    "WHERE a.attnum > 0 AND NOT a.attisdropped AND c.relkind IN ('r', 'v', 'm', 'f', 'p')";
constexpr char kPostgreSqlTable[] = " AND n.nspname = %1 AND c.relname = %2";
constexpr char kPostgreSqlOrder[] = " ORDER BY 1, 2, a.attnum";
constexpr char kMySqlColumns[] =
    "SELECT table_schema, table_name, column_name, column_type, coalesce(column_default, ''), "
    "is_nullable = 'YES', column_key = 'PRI' FROM information_schema.columns WHERE 1 = 1";
constexpr char kMySqlTable[] = " AND table_schema = %1 AND table_name = %2";
constexpr char kMySqlOrder[] = " ORDER BY 1, 2, ordinal_position";

/// As a string of SQL.
std::string Quoted(std::string_view text, SqlServer server) {
    std::string quoted = "'";
    for (const char ch : text)
        quoted.append(ch == '\'' || (ch == '\\' && server == SqlServer::MySql) ? 2 : 1, ch);
    return quoted + "'";
}

std::string ReadText(SQLHANDLE statement, SQLUSMALLINT column) {
    std::string text;
    WideTextDecoder decoder;
    SQLWCHAR piece[1024];
    for (bool isLast = false; !isLast;) {
        SQLLEN bytes = 0;
        const SQLRETURN result =
            SQLGetData(statement, column, SQL_C_WCHAR, piece, sizeof piece, &bytes);
        if (result == SQL_NO_DATA || (SQL_SUCCEEDED(result) && bytes == SQL_NULL_DATA))
            break;
        if (!SQL_SUCCEEDED(result))
            OdbcFail(Text(IDS_VQ_CANNOT_READ_COLUMNS), SQL_HANDLE_STMT, statement);
        isLast = result == SQL_SUCCESS;
        const std::size_t units =
            isLast ? static_cast<std::size_t>(bytes) / sizeof(SQLWCHAR) : std::size(piece) - 1;
        text += decoder.Decode(piece, std::min(units, std::size(piece) - 1), isLast);
    }
    return text;
}

} // namespace

OdbcCatalog::OdbcCatalog(const std::string& connection)
    : m_connection(connection, OdbcConnection::Access::Read), m_server(m_connection.GetServer()) {}

std::vector<OdbcCatalog::Row> OdbcCatalog::Rows(const Call& call,
                                                std::initializer_list<SQLUSMALLINT> columns) const {
    const std::unique_ptr<OdbcHandle> statement = m_connection.NewStatement();
    const std::stop_callback cancel(CurrentStop(), [&] { SQLCancel(statement->Get()); });
    const auto check = [&](SQLRETURN result) {
        if (!SQL_SUCCEEDED(result))
            OdbcFail(Text(IDS_VQ_CANNOT_READ_COLUMNS), SQL_HANDLE_STMT, statement->Get());
    };
    check(call(statement->Get()));
    std::vector<Row> rows;
    SQLRETURN result = SQL_SUCCESS;
    while ((result = SQLFetch(statement->Get())) != SQL_NO_DATA) {
        check(result);
        CheckInterrupted();
        Row& row = rows.emplace_back();
        for (const SQLUSMALLINT column : columns)
            row.push_back(ReadText(statement->Get(), column));
    }
    return rows;
}

std::vector<OdbcCatalog::Row>
OdbcCatalog::Query(const std::string& sql, std::initializer_list<SQLUSMALLINT> columns) const {
    std::vector<SQLWCHAR> text = ToWide(sql);
    return Rows(
        [&](SQLHANDLE statement) { return SQLExecDirectW(statement, text.data(), SQL_NTS); },
        columns);
}

Catalog OdbcCatalog::Read() const {
    Catalog catalog{m_server, {}};
    const bool isMySql = m_server == SqlServer::MySql;
    std::string current;
    if (IsKnown())
        current = Query(isMySql ? "SELECT DATABASE()" : "SELECT current_schema()", {1}).at(0).at(0);
    std::vector<SQLWCHAR> all = ToWide("%");
    const std::vector<Row> rows = Rows(
        [&](SQLHANDLE statement) {
            // PostgreSQL's driver takes no schema for the first one of its search path.
            return SQLTablesW(statement, isMySql ? all.data() : nullptr, SQL_NTS,
                              m_server == SqlServer::PostgreSql ? all.data() : nullptr, SQL_NTS,
                              all.data(), SQL_NTS, nullptr, 0);
        },
        {1, 2, 3, 4});
    for (const Row& row : rows) {
        const std::string& schema = row[isMySql ? 0 : 1];
        const std::string type = ToUpper(row[3]);
        const bool isView = type.ends_with("VIEW");
        if (type.starts_with("SYSTEM") || !(isView || type.ends_with("TABLE")) ||
            IsOfSystem(schema, m_server))
            continue;
        catalog.tables.push_back({schema, row[2], isView, !schema.empty() && schema != current});
    }
    return catalog;
}

void OdbcCatalog::ReadColumns(std::span<CatalogTable> tables) const {
    if (!IsKnown()) {
        for (CatalogTable& table : tables)
            ReadOtherColumns(table);
        return;
    }
    const bool isMySql = m_server == SqlServer::MySql;
    std::map<std::pair<std::string_view, std::string_view>, CatalogTable*> byName;
    for (CatalogTable& table : tables) {
        table.columns.clear();
        byName[{table.schema, table.name}] = &table;
    }
    std::string sql = isMySql ? kMySqlColumns : kPostgreSqlColumns;
    if (tables.size() == 1) {
        std::string filter = isMySql ? kMySqlTable : kPostgreSqlTable;
        const std::string name = Quoted(tables[0].name, m_server);
        filter.replace(filter.find("%2"), 2, name); // before %1, which a name may contain
        filter.replace(filter.find("%1"), 2, Quoted(tables[0].schema, m_server));
        sql += filter;
    }
    sql += isMySql ? kMySqlOrder : kPostgreSqlOrder;
    for (Row& row : Query(sql, {1, 2, 3, 4, 5, 6, 7}))
        if (const auto found = byName.find({row[0], row[1]}); found != byName.end())
            found->second->columns.push_back({std::move(row[2]), std::move(row[3]),
                                              std::move(row[4]), row[6] == "1", row[5] == "1"});
}

template <class Function>
std::vector<OdbcCatalog::Row>
OdbcCatalog::AboutTable(const CatalogTable& table, Function function,
                        std::initializer_list<SQLUSMALLINT> columns) const {
    std::vector<SQLWCHAR> schema = ToWide(table.schema);
    std::vector<SQLWCHAR> name = ToWide(table.name);
    SQLWCHAR* const none = nullptr;
    SQLWCHAR* const given = table.schema.empty() ? none : schema.data();
    const bool isMySql = m_server == SqlServer::MySql;
    return Rows(
        [&](SQLHANDLE statement) {
            return function(statement, isMySql ? given : none, isMySql ? none : given, name.data());
        },
        columns);
}

void OdbcCatalog::ReadOtherColumns(CatalogTable& table) const {
    table.columns.clear();
    // The function takes patterns: what they find beyond the table is left out.
    CatalogTable pattern{table.schema, table.name};
    std::ranges::replace(pattern.schema, '\\', '_');
    std::ranges::replace(pattern.name, '\\', '_');
    const std::vector<Row> rows =
        AboutTable(pattern,
                   [](SQLHANDLE statement, SQLWCHAR* catalog, SQLWCHAR* schema, SQLWCHAR* name) {
                       return SQLColumnsW(statement, catalog, SQL_NTS, schema, SQL_NTS, name,
                                          SQL_NTS, nullptr, 0);
                   },
                   {2, 3, 4, 6, 7, 11, 13});
    for (const Row& row : rows) {
        if (row[0] != table.schema || row[1] != table.name)
            continue;
        const bool hasLength = ToUpper(row[3]).find("CHAR") != std::string::npos;
        table.columns.push_back({row[2], hasLength ? row[3] + "(" + row[4] + ")" : row[3], row[6],
                                 false, row[5] != "0"});
    }
    for (const Row& row :
         AboutTable(table,
                    [](SQLHANDLE statement, SQLWCHAR*catalog, SQLWCHAR*schema, SQLWCHAR*name) {
                        return SQLPrimaryKeysW(statement, catalog, SQL_NTS, schema, SQL_NTS, name,
                                               SQL_NTS);
                    },
                    {4}))
        for (CatalogColumn& column : table.columns)
            column.isKey |= column.name == row[0];
}

void OdbcCatalog::ReadTable(CatalogTable& table) const {
    ReadColumns({&table, 1});
    table.indexes.clear();
    if (table.isView)
        return;
    const std::vector<Row> rows =
        AboutTable(table,
                   [](SQLHANDLE statement, SQLWCHAR* catalog, SQLWCHAR* schema, SQLWCHAR* name) {
                       return SQLStatisticsW(statement, catalog, SQL_NTS, schema, SQL_NTS, name,
                                             SQL_NTS, SQL_INDEX_ALL, SQL_QUICK);
                   },
                   {4, 6, 9});
    for (const Row& row : rows) {
        if (row[1].empty()) // about the table itself
            continue;
        if (table.indexes.empty() || table.indexes.back().name != row[1])
            table.indexes.push_back({row[1], {}, row[0] == "0"});
        table.indexes.back().columns.push_back(row[2]);
    }
}

std::string OdbcCatalog::ReadDdl(const CatalogTable& table) const {
    const std::string name = SqlName(table, m_server);
    if (m_server == SqlServer::MySql)
        return Query("SHOW CREATE TABLE " + name, {2}).at(0).at(0) + ";\n";
    if (m_server == SqlServer::PostgreSql && table.isView)
        return "CREATE VIEW " + name + " AS\n" +
               Query("SELECT pg_get_viewdef(" + Quoted(name, m_server) + "::regclass, true)", {1})
                   .at(0)
                   .at(0) +
               "\n";
    CatalogTable read = table;
    ReadColumns({&read, 1});
    return ComposeDdl(read);
}

std::string OdbcCatalog::ComposeDdl(const CatalogTable& table) const {
    std::string ddl;
    std::string key;
    for (const CatalogColumn& column : table.columns) {
        const std::string name = SqlName(column.name, m_server);
        ddl += (ddl.empty() ? "    " : ",\n    ") + name + " " + column.type;
        if (!column.defaultText.empty())
            ddl += " DEFAULT " + column.defaultText;
        if (!column.isNullable)
            ddl += " NOT NULL";
        if (column.isKey)
            key += (key.empty() ? "" : ", ") + name;
    }
    if (!key.empty())
        ddl += ",\n    PRIMARY KEY (" + key + ")";
    return (table.isView ? "CREATE VIEW " : "CREATE TABLE ") + SqlName(table, m_server) + " (\n" +
           ddl + "\n);\n";
}

} // namespace vnquery

// What databases have, compared with what they say of themselves. The part for servers needs one in
// VNQUERY_ODBC (see postgres_test.sh) and is skipped without it.
#include "examples/vnquery/sources/Catalog.h"
#include "examples/vnquery/tasks/Failure.h"

#include "tests/vnquery/ProgramRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace vnquery {
namespace {

using testing::ElementsAre;

/// "name type [key] [not null] [=default]" of each column.
std::vector<std::string> Columns(const CatalogTable& table) {
    std::vector<std::string> texts;
    for (const CatalogColumn& column : table.columns)
        texts.push_back(column.name + " " + column.type + (column.isKey ? " key" : "") +
                        (column.isNullable ? "" : " not null") +
                        (column.defaultText.empty() ? "" : " =" + column.defaultText));
    return texts;
}

CatalogTable& Find(Catalog& catalog, const std::string& name) {
    const auto found = std::ranges::find(catalog.tables, name, &CatalogTable::name);
    if (found == catalog.tables.end())
        throw Failure(kQueryFailed, "no table " + name);
    return *found;
}

using CatalogTest = test::ProgramTest;

TEST_F(CatalogTest, SqliteFilesTellTheirTables) {
    const std::string make = "CREATE TABLE \"Odd \"\"name\"\"\"(id integer primary key, \"select\" "
                             "varchar(20) not null default 'x', both int as (id + 1))";
    MakeDatabase(make +
                 "; CREATE INDEX second ON \"Odd \"\"name\"\"\"(\"select\", id + 1);"
                 "CREATE TABLE gone(a); CREATE VIEW broken AS SELECT a FROM gone; DROP TABLE gone;"
                 "CREATE VIEW shown AS SELECT id FROM \"Odd \"\"name\"\"\";"
                 "CREATE TRIGGER keep AFTER DELETE ON \"odd \"\"NAME\"\"\" BEGIN SELECT 1; END;"
                 "CREATE TABLE pair(b text, a int, primary key (a, b)) without rowid;");
    const Connection connection{Database(), ""};
    Catalog catalog = ReadCatalog(connection);
    EXPECT_EQ(catalog.server, SqlServer::Sqlite);
    ASSERT_EQ(catalog.tables.size(), 4u);
    EXPECT_TRUE(catalog.tables[3].isView);
    ReadAllColumns(connection, catalog);
    CatalogTable& odd = Find(catalog, "Odd \"name\"");
    EXPECT_THAT(Columns(odd),
                ElementsAre("id INTEGER key", "select varchar(20) not null ='x'", "both INT"));
    EXPECT_THAT(Columns(Find(catalog, "pair")),
                ElementsAre("b TEXT key not null", "a INT key not null"));
    EXPECT_THAT(Columns(Find(catalog, "shown")), ElementsAre("id INTEGER"));
    EXPECT_TRUE(Find(catalog, "broken").columns.empty());
    EXPECT_THROW(ReadTable(connection, Find(catalog, "broken")), Failure);
    ReadTable(connection, odd);
    ASSERT_EQ(odd.indexes.size(), 1u);
    EXPECT_EQ(odd.indexes[0].name, "second");
    EXPECT_FALSE(odd.indexes[0].isUnique);
    EXPECT_THAT(odd.indexes[0].columns, ElementsAre("select", ""));
    EXPECT_THAT(odd.triggers, ElementsAre("keep"));
    EXPECT_NE(ReadDdl(connection, odd).find("CREATE TRIGGER keep"), std::string::npos);
    EXPECT_EQ(ReadDdl(connection, odd).substr(0, make.size() + 2), make + ";\n");
    const std::string sql = "select count(*) from " + SqlName(odd, catalog.server);
    EXPECT_EQ(Query(sql).code, 0);
    EXPECT_THROW(ReadCatalog({File("none.sqlite"), ""}), Failure);
}

TEST(Catalog, NamesAreQuotedWhereTheyNeedIt) {
    const struct {
        const char* name;
        const char* sqlite;
        const char* postgreSql;
        const char* mySql;
    } kCases[] = {{"film_2", "film_2", "film_2", "film_2"},
                  {"Film", "Film", "\"Film\"", "Film"},
                  {"order", "\"order\"", "\"order\"", "`order`"},
                  {"a\"`b", "\"a\"\"`b\"", "\"a\"\"`b\"", "`a\"``b`"},
                  {"2", "\"2\"", "\"2\"", "`2`"},
                  {"", "\"\"", "\"\"", "``"},
                  {"\xC3\xA4", "\"\xC3\xA4\"", "\"\xC3\xA4\"", "`\xC3\xA4`"}};
    for (const auto& [name, sqlite, postgreSql, mySql] : kCases) {
        EXPECT_EQ(SqlName(name, SqlServer::Sqlite), sqlite);
        EXPECT_EQ(SqlName(name, SqlServer::PostgreSql), postgreSql);
        EXPECT_EQ(SqlName(name, SqlServer::MySql), mySql);
    }
}

TEST(OdbcCatalog, PostgreSqlTellsItsTables) {
    const char* const source = std::getenv("VNQUERY_ODBC");
    if (!source)
        GTEST_SKIP() << "VNQUERY_ODBC is not set";
    const Connection connection{"", source};
    Catalog catalog = ReadCatalog(connection);
    EXPECT_EQ(catalog.server, SqlServer::PostgreSql);
    std::vector<std::string> names;
    for (const CatalogTable& table : catalog.tables)
        names.push_back(SqlName(table, catalog.server) + (table.isView ? " view" : ""));
    EXPECT_THAT(names, testing::IsSupersetOf(
                           {"doc", "\"Odd\".\"It's \"\"odd\"\"\"", "\"Odd\".brief view"}));
    EXPECT_EQ(std::ranges::count(catalog.tables, "pg_class", &CatalogTable::name), 0);
    ReadAllColumns(connection, catalog);
    CatalogTable odd = Find(catalog, "It's \"odd\"");
    const auto columns = ElementsAre("id integer key not null =7", "n numeric(8,2)",
                                     "t character varying(30) ='a''b'::character varying");
    EXPECT_THAT(Columns(odd), columns);
    EXPECT_THAT(Columns(Find(catalog, "brief")), ElementsAre("id integer"));
    odd.columns.clear();
    ReadTable(connection, odd);
    EXPECT_THAT(Columns(odd), columns);
    ASSERT_EQ(odd.indexes.size(), 2u);
    EXPECT_TRUE(odd.indexes[0].isUnique || odd.indexes[1].isUnique);
    EXPECT_EQ(
        ReadDdl(connection, odd),
        "CREATE TABLE \"Odd\".\"It's \"\"odd\"\"\" (\n    id integer DEFAULT 7 NOT NULL,\n"
        "    n numeric(8,2),\n    t character varying(30) DEFAULT 'a''b'::character varying,\n"
        "    PRIMARY KEY (id)\n);\n");
    EXPECT_THAT(ReadDdl(connection, Find(catalog, "brief")),
                testing::StartsWith("CREATE VIEW \"Odd\".brief AS\n SELECT "));
}

} // namespace
} // namespace vnquery

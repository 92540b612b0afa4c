// Rows from SQLite by the source's two ways, compared with SQLite's own functions.
#include "examples/vnquery/sources/SqliteSource.h"
#include "examples/vnquery/tasks/Failure.h"

#include "tests/vnquery/ProgramRun.h"
#include "tests/vnquery/sources/RowCollector.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <random>

#include <sqlite3.h>

namespace vnquery {
namespace {

using test::Cell;
using test::Collect;
using test::Rows;

class SqliteSourceTest : public test::ProgramTest {
protected:
    SqliteSourceTest() { sqlite3_open(Database().c_str(), &m_peer); }
    ~SqliteSourceTest() override { sqlite3_close(m_peer); }

    void Execute(const std::string& sql) {
        char* message = nullptr;
        ASSERT_EQ(sqlite3_exec(m_peer, sql.c_str(), nullptr, nullptr, &message), SQLITE_OK)
            << sql.substr(0, 200) << ": " << message;
    }
    /// The rows as SQLite gives them; a real number as the shortest of the common formats that
    /// reads back as the same.
    Rows Ask(const std::string& sql) {
        Rows rows;
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(m_peer, sql.c_str(), -1, &statement, nullptr), SQLITE_OK)
            << sqlite3_errmsg(m_peer);
        while (sqlite3_step(statement) == SQLITE_ROW) {
            std::vector<Cell>& row = rows.emplace_back();
            for (int i = 0; i < sqlite3_column_count(statement); ++i)
                row.push_back(CellOf(statement, i));
        }
        sqlite3_finalize(statement);
        return rows;
    }
    /// Both uses of a source give SQLite's rows.
    void ExpectSame(const std::string& sql) {
        const Rows expected = Ask(sql);
        for (const SourceUse use : {SourceUse::ReadOnly, SourceUse::Editing}) {
            SqliteSource source(Database(), sql, use);
            const Rows rows = Collect(source);
            ASSERT_EQ(rows.size(), expected.size()) << sql;
            for (std::size_t row = 0; row < rows.size(); ++row)
                for (std::size_t i = 0; i < rows[row].size(); ++i)
                    ASSERT_TRUE(IsSame(rows[row][i], expected[row][i]))
                        << sql << " row " << row << " column " << i << ": "
                        << rows[row][i].bytes.size() << " bytes, expected "
                        << expected[row][i].bytes.size();
        }
    }

    sqlite3* m_peer = nullptr;

private:
    static Cell CellOf(sqlite3_stmt* statement, int i) {
        const int type = sqlite3_column_type(statement, i);
        const auto* bytes = static_cast<const char*>(
            type == SQLITE_BLOB ? sqlite3_column_blob(statement, i)
                                : static_cast<const void*>(sqlite3_column_text(statement, i)));
        const auto count = static_cast<std::size_t>(sqlite3_column_bytes(statement, i));
        const std::string value = count ? std::string(bytes, count) : std::string();
        switch (type) {
        case SQLITE_NULL:
            return {};
        case SQLITE_TEXT:
            return {Value::Type::Text, value};
        case SQLITE_BLOB:
            return {Value::Type::Binary, value};
        case SQLITE_FLOAT: {
            char text[40];
            std::snprintf(text, sizeof text, "%.17g", sqlite3_column_double(statement, i));
            return {Value::Type::Number, std::string("real ") + text};
        }
        default:
            return {Value::Type::Number, value};
        }
    }
    static bool IsSame(const Cell& cell, const Cell& expected) {
        if (!expected.bytes.starts_with("real ") || expected.type != Value::Type::Number)
            return cell == expected;
        return cell.type == Value::Type::Number &&
               cell.bytes.find_first_not_of("-0123456789") != std::string::npos &&
               std::strtod(cell.bytes.c_str(), nullptr) ==
                   std::strtod(expected.bytes.c_str() + 5, nullptr);
    }
};

/// SQL of a value of any type; `longest` is chosen rarely.
std::string RandomValue(std::mt19937& random, int longest) {
    constexpr int kLengths[] = {0, 1, 10, 60, 60, 60, 300, 5000, 65536, 65537};
    const auto below = [&](unsigned count) { return random() % count; };
    const int length = below(40) == 0 ? longest : kLengths[below(std::size(kLengths))];
    const std::string size = std::to_string(length);
    switch (below(8)) {
    case 0:
        return "null";
    case 1:
        return std::to_string(static_cast<int>(random()));
    case 2:
        return below(4) == 0 ? "9e999" : std::to_string(random()) + ".125";
    case 3:
    case 4:
        return "zeroblob(" + size + ")";
    case 5:
        return "substr('\xC3\xA4\xF0\x9F\x98\x80', 1, 1) || hex(zeroblob(" + size + " / 2))";
    default:
        return "replace(hex(zeroblob(" + size + " / 2)), '00', char(" +
               std::to_string(97 + below(26)) + ", 0))";
    }
}

/// Long values in random rows, of lengths around the one from which SQLite is not given them.
TEST_F(SqliteSourceTest, LongValuesInAnyRowChangeNothing) {
    std::mt19937 random(14);
    for (const char* encoding : {"UTF-8", "UTF-16le"}) {
        Execute("drop table if exists t; drop table if exists r; drop table if exists w; vacuum;"
                "pragma encoding = '" +
                std::string(encoding) +
                "'; vacuum;"
                "create table t(id integer primary key, k text, a text, b blob, n int, "
                "x, g as (id || 'g'));"
                "create table r(rowid text, _rowid_ int, a text);"
                "create table w(k primary key, a text) without rowid; create index i on t(k)");
        Execute("begin");
        for (int row = 0; row < 400; ++row) {
            const int longest = row % 3 == 0 ? 3000000 : 1048575 + static_cast<int>(random() % 4);
            Execute("insert into t(id, k, a, b, n, x) values (" +
                    std::to_string(row * 7 % 401 - 200) + ", " + std::to_string(random() % 50) +
                    ", " + RandomValue(random, row < 100 ? 300 : longest) + ", " +
                    RandomValue(random, 5000) + ", " + RandomValue(random, 40) + ", " +
                    RandomValue(random, row > 350 ? longest : 60) + ")");
        }
        Execute("insert into r select k, id, a from t; insert into w select id, a from t; commit;"
                "alter table t add column late text default 'late'");
        for (const char* sql : {"select * from t",
                                "select * from t order by id desc",
                                "select * from t order by id",
                                "select a, b, x from t order by k",
                                "select a, k from t where k > '2' order by k",
                                "select * from t where a > 'b' limit 50 offset 3",
                                "select x from t where n is null",
                                "select late, a, a as n, a || 'x', g from t",
                                "select * from t as z where z.id > 0",
                                "select *, rowid from t where id in (1, 150, 50, 160, -50, 3)",
                                "select id from t where length(a) > 100 and b is not null",
                                "select max(id), a from t",
                                "select * from r",
                                "select a, rowid from r order by rowid",
                                "select * from w",
                                "select b, a from t where id = 153",
                                "select count(*), a from t where 0",
                                "select a.a, b.k from t a join t b on a.id = b.id + 1",
                                "select group_concat(a) from t",
                                "select x from t where n = random()",
                                "select a, random() > 0 or 1 from t where id > 100",
                                "select -id as k, a from t"})
            ExpectSame(sql);
        if (HasFailure())
            return;
    }
}

/// An order that differs from run to run: each row comes once.
TEST_F(SqliteSourceTest, RandomOrdersGiveEachRowOnce) {
    Execute("create table t(id integer primary key, a text); with recursive c(i) as (select 1 "
            "union all select i + 1 from c limit 200) insert into t select i, case when i % 20 = 0 "
            "then hex(zeroblob(700000)) else i end from c");
    SqliteSource source(Database(), "select id, a from t order by random()");
    std::vector<int> numbers;
    for (const auto& row : Collect(source))
        numbers.push_back(std::atoi(row[0].bytes.c_str()));
    std::ranges::sort(numbers);
    ASSERT_EQ(numbers.size(), 200u);
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(numbers[static_cast<std::size_t>(i)], i + 1);
}

/// Going over from one statement to the other does not see what others have written meanwhile, and
/// nothing stays locked afterwards.
TEST_F(SqliteSourceTest, RowsAreThoseOfOneMoment) {
    Execute(
        "pragma journal_mode = wal; create table t(id integer primary key, k text, a text);"
        "with recursive c(i) as (select 1 union all select i + 1 from c limit 300) insert into "
        "t select i, 'k' || (i % 7), case when i % 40 = 0 then hex(zeroblob(600000)) else i end "
        "from c");
    for (const char* sql : {"select id, k, a from t", "select id, k, a from t order by k, a"}) {
        const Rows expected = Ask(sql);
        SqliteSource source(Database(), sql);
        Rows rows = Collect(source, 20);
        Execute("delete from t where id % 3 = 0; update t set a = 'new', k = 'k1'");
        for (auto& row : Collect(source))
            rows.push_back(std::move(row));
        EXPECT_TRUE(rows == expected) << sql;
        Execute("insert or replace into t select i, 'k' || (i % 7), case when i % 40 = 0 then "
                "hex(zeroblob(600000)) else i end from (with recursive c(i) as (select 1 union all "
                "select i + 1 from c limit 300) select i from c)");
    }
    Execute("pragma journal_mode = delete"); // needs the file alone
}

/// SQLite itself never has a long value as a whole, wherever it stands.
TEST_F(SqliteSourceTest, LongValuesStayOutOfMemory) {
    Execute("create table t(id integer primary key, k text, a text, b blob); insert into t values "
            "(1, 'b', 'short', x'00'), (2, 'a', hex(zeroblob(10000000)), zeroblob(20000000)), "
            "(3, 'c', 'x', null), (4, 'd', 'y', zeroblob(30000000))");
    sqlite3_db_release_memory(m_peer);
    test::SilentProgress progress;
    for (const char* sql : {"select * from t", "select * from t order by k",
                            "select b, a from t where id > 1 order by id desc",
                            "select * from t where k > ' ' limit 4"}) {
        sqlite3_memory_highwater(1);
        SqliteSource source(Database(), sql);
        std::size_t bytes = 0;
        while (source.Next())
            for (std::size_t i = 0; i < source.GetColumns().size(); ++i) {
                std::vector<Cell> cells;
                test::CellSink sink(cells, progress);
                source.Read(i, sink);
                bytes += cells[0].bytes.size();
            }
        EXPECT_GT(bytes, 70000000u) << sql;
        EXPECT_LT(sqlite3_memory_highwater(0), 8000000) << sql;
    }
}

TEST_F(SqliteSourceTest, ManyColumns) {
    for (const int count : {1000, 1001, 1500, 1999, 2000}) {
        for (const char* type : {"int", "text"}) {
            std::string columns;
            std::string values;
            for (int i = 0; i < count; ++i) {
                columns.append(i ? ", " : "").append("c" + std::to_string(i) + " ").append(type);
                values.append(i ? ", " : "").append(std::to_string(i));
            }
            Execute("drop table if exists t; create table t(" + columns +
                    "); insert into t values (" + values +
                    "); insert into t select * from t; update t set c7 = "
                    "hex(zeroblob(600000)) where rowid = 2");
            ExpectSame("select * from t");
        }
    }
    try {
        SqliteSource(Database(), "select *, 1 from t");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.what()).find("too many columns"), std::string::npos);
    }
}

/// A column that rows do not have must not shift those that are read in pieces.
TEST_F(SqliteSourceTest, LongValuesAfterVirtualColumns) {
    Execute("create table t(id integer primary key, g as (1), b blob, c blob, d blob); insert into "
            "t values (1, zeroblob(2000000), randomblob(3000000), 'd'), (2, randomblob(1500000), "
            "'c', randomblob(1500000))");
    ExpectSame("select b, c, d, g from t");
}

/// A file that is cut off while it is read ends in a message.
TEST_F(SqliteSourceTest, FilesThatFailInTheMiddle) {
    Execute("create table t(id integer primary key, a text); with recursive c(i) as (select 1 "
            "union all select i + 1 from c limit 20000) insert into t select i, case when i % 5000 "
            "= 0 then hex(zeroblob(900000)) else hex(zeroblob(200)) end from c");
    for (const std::size_t rows : {1u, 4998u, 10001u}) {
        std::filesystem::copy_file(Database(), File("cut"),
                                   std::filesystem::copy_options::overwrite_existing);
        SqliteSource source(File("cut"), "select * from t");
        Collect(source, rows);
        std::filesystem::resize_file(File("cut"), 4096);
        EXPECT_THROW(Collect(source), Failure);
    }
}

} // namespace
} // namespace vnquery

// Rows from a server in blocks. postgres_test.sh names the server in VNQUERY_ODBC, once for each
// way in which the driver can fetch; without it these tests are skipped.
#include "examples/vnquery/sources/OdbcSource.h"
#include "examples/vnquery/tasks/Failure.h"

#include "tests/vnquery/sources/RowCollector.h"

#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace vnquery {
namespace {

using test::Cell;
using test::Collect;
using test::Rows;

class OdbcSourceTest : public ::testing::Test {
protected:
    void SetUp() override {
        const char* const source = std::getenv("VNQUERY_ODBC");
        if (!source)
            GTEST_SKIP() << "VNQUERY_ODBC is not set";
        m_connection = source;
    }
    Rows Query(const std::string& sql) {
        OdbcSource source(m_connection, sql);
        return Collect(source);
    }

    std::string m_connection;
};

std::string Repeat(std::string_view text, std::size_t count) {
    std::string repeated;
    for (std::size_t i = 0; i < count; ++i)
        repeated += text;
    return repeated;
}

/// Each value by itself, as text, without buffers.
Rows ReadRowByRow(const std::string& connection, const std::string& sql) {
    const OdbcConnection database(connection, OdbcConnection::Access::Read);
    const auto statement = database.NewStatement();
    std::vector<SQLWCHAR> text = ToWide(sql);
    EXPECT_TRUE(SQL_SUCCEEDED(SQLExecDirectW(statement->Get(), text.data(), SQL_NTS)));
    SQLSMALLINT count = 0;
    SQLNumResultCols(statement->Get(), &count);
    Rows rows;
    while (SQL_SUCCEEDED(SQLFetch(statement->Get()))) {
        std::vector<Cell>& row = rows.emplace_back();
        for (SQLUSMALLINT i = 1; i <= count; ++i) {
            SQLWCHAR value[4096] = {};
            SQLLEN length = 0;
            EXPECT_EQ(SQLGetData(statement->Get(), i, SQL_C_WCHAR, value, sizeof value, &length),
                      SQL_SUCCESS);
            if (length == SQL_NULL_DATA)
                row.emplace_back();
            else
                row.push_back({Value::Type::Text, FromBuffer(value, length / 2)});
        }
    }
    return rows;
}

TEST_F(OdbcSourceTest, AnyNumberOfRows) {
    for (const int count : {0, 1, 2, 3, 4, 7, 8, 1022, 1023, 1024, 1025, 2047, 2048, 3500}) {
        const Rows rows = Query("select i, -i::bigint, 'row ' || i from generate_series(1, " +
                                std::to_string(count) + ") i");
        ASSERT_EQ(rows.size(), static_cast<std::size_t>(count));
        for (int i = 1; i <= count; ++i) {
            const auto& row = rows[static_cast<std::size_t>(i - 1)];
            ASSERT_EQ(row[0].bytes, std::to_string(i));
            ASSERT_EQ(row[1].bytes, "-" + std::to_string(i));
            ASSERT_EQ(row[2].bytes, "row " + std::to_string(i));
        }
    }
}

/// Lengths around those of the buffers, in any order; characters that lie across buffers.
TEST_F(OdbcSourceTest, ValuesOfAnyLength) {
    const Rows rows = Query(
        "select n, case when n % 7 <> 0 then repeat('\xF0\x9F\x98\x80', n) end, 'a' || repeat("
        "'\xF0\x9F\x98\x80', n), repeat('x', n), decode(repeat('00ff', n), 'hex'), "
        "repeat('\xC3\xA4', n)::varchar(40000), nullif(repeat('9', n % 130), '')::numeric from "
        "(select (i * 37 "
        "% 300) + case when i % 50 = 0 then 30000 when i % 11 = 0 then 750 else 0 end as n from "
        "generate_series(1, 900) i union all select n from generate_series(1000, 1100) n) t");
    ASSERT_EQ(rows.size(), 1001u);
    for (const auto& row : rows) {
        const auto n = static_cast<std::size_t>(std::atoi(row[0].bytes.c_str()));
        const std::string smiles = Repeat("\xF0\x9F\x98\x80", n);
        ASSERT_TRUE(row[1] == (n % 7 ? Cell{Value::Type::Text, smiles} : Cell())) << n;
        ASSERT_TRUE(row[2].bytes == "a" + smiles) << n;
        ASSERT_TRUE(row[3].bytes == std::string(n, 'x')) << n;
        ASSERT_TRUE(row[4] == (Cell{Value::Type::Binary, Repeat({"\0\xFF", 2}, n)})) << n;
        ASSERT_TRUE(row[5].bytes == Repeat("\xC3\xA4", n)) << n;
        ASSERT_TRUE(row[6] ==
                    (n % 130 ? Cell{Value::Type::Number, std::string(n % 130, '9')} : Cell()))
            << n;
    }
}

/// Where most values of a column are long; one long value among short ones.
TEST_F(OdbcSourceTest, LongColumns) {
    const Rows rows = Query("select i, repeat('abc', 3000 + i), case when i = 77 then "
                            "repeat('\xC3\xA9', 1000000) else '' end, repeat(md5(i::text), 20), "
                            "decode(repeat('01', 100000), 'hex') from generate_series(1, 100) i");
    ASSERT_EQ(rows.size(), 100u);
    for (std::size_t i = 1; i <= 100; ++i) {
        ASSERT_TRUE(rows[i - 1][1].bytes == Repeat("abc", 3000 + i)) << i;
        ASSERT_TRUE(rows[i - 1][2].bytes == (i == 77 ? Repeat("\xC3\xA9", 1000000) : "")) << i;
        ASSERT_EQ(rows[i - 1][3].bytes.size(), 640u) << i;
        ASSERT_TRUE(rows[i - 1][4].bytes == std::string(100000, '\1')) << i;
    }
}

TEST_F(OdbcSourceTest, EveryTypeLooksAsWithoutBlocks) {
    const std::string sql =
        "select i, (i * 1000)::int2, (i - 5) * 1844674407370955161, 4294967295::oid, i % 2 = 0, "
        "i::numeric / 7, 'NaN'::numeric, 1e100::float8 / i, -i::float4 / 3, 'infinity'::float8, "
        "'nan'::float4, 0.1::float8, 'ab'::varchar(3), 'ab'::char(5), 'x'::\"char\", "
        "date '2024-02-29' + i, time '12:34:56.789', timestamp '2024-01-02 03:04:05.678901', "
        "timestamptz '2024-01-02 03:04:05+05', interval '1 day 2 hours', "
        "'00000000-0000-0000-0000-00000000000a'::uuid, '{\"a\": 1}'::json, array[1, null, i], "
        "12.5::money, '10.0.0.1/8'::inet, '<a/>'::xml, 'n'::name, B'0101', null, null::int, '', "
        "row(1, 'x') from generate_series(1, 10) i";
    const Rows expected = ReadRowByRow(m_connection, sql);
    const Rows rows = Query(sql);
    ASSERT_EQ(rows.size(), expected.size());
    for (std::size_t row = 0; row < rows.size(); ++row)
        for (std::size_t i = 0; i < rows[row].size(); ++i) {
            EXPECT_EQ(rows[row][i].bytes, expected[row][i].bytes) << i;
            EXPECT_EQ(rows[row][i].type == Value::Type::Null,
                      expected[row][i].type == Value::Type::Null)
                << i;
        }
    EXPECT_EQ(rows[9][2].bytes, "9223372036854775805");
}

TEST_F(OdbcSourceTest, ManyColumns) {
    std::string columns;
    for (int i = 0; i < 1591; ++i)
        columns.append(i ? ", '" : "'").append(std::to_string(i)).append(" ' || i");
    const Rows rows = Query("select " + columns + " from generate_series(1, 30) i");
    ASSERT_EQ(rows.size(), 30u);
    for (std::size_t row = 0; row < 30; ++row)
        for (std::size_t i = 0; i < 1591; ++i)
            ASSERT_EQ(rows[row][i].bytes, std::to_string(i) + " " + std::to_string(row + 1));
}

TEST_F(OdbcSourceTest, FailuresInTheMiddle) {
    try {
        Query("select i, 100 / (2000 - i) from generate_series(1, 9000) i");
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.what()).find("division by zero"), std::string::npos)
            << failure.what();
    }
}

/// All rows are read, so the server plans for all; it may change nothing.
TEST_F(OdbcSourceTest, TheServerKnowsWhatIsRead) {
    const auto row = Query("select current_setting('transaction_read_only'), "
                           "current_setting('cursor_tuple_fraction')")
                         .at(0);
    EXPECT_EQ(row[0].bytes, "on");
    EXPECT_EQ(row[1].bytes,
              m_connection.find("UseDeclareFetch") == std::string::npos ? "1" : "0.1");
}

/// Neither vnquery nor the driver keeps the rows, unless the connection string says so.
TEST_F(OdbcSourceTest, RowsAreNotKept) {
    if (m_connection.find("UseDeclareFetch=0") != std::string::npos)
        GTEST_SKIP() << "the driver is to keep them";
    const auto peak = [] {
        rusage usage = {};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss; // in KB
    };
    const long before = peak();
    test::SilentProgress progress;
    OdbcSource source(m_connection, "select i, repeat('x', 150) from generate_series(1, 300000) i");
    std::size_t rows = 0;
    while (source.Next()) {
        std::vector<Cell> cells;
        test::CellSink sink(cells, progress);
        source.Read(0, sink);
        source.Read(1, sink);
        ++rows;
    }
    EXPECT_EQ(rows, 300000u);
#ifndef __SANITIZE_ADDRESS__ // which keeps what is freed
    EXPECT_LT(peak() - before, 30000);
#else
    static_cast<void>(before);
#endif
}

} // namespace
} // namespace vnquery

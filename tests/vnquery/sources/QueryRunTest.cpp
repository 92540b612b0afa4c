#include "examples/vnquery/sources/QueryRun.h"

#include "tests/vnquery/ProgramRun.h"

namespace vnquery {
namespace {

class QueryRunTest : public test::ProgramTest {
protected:
    /// Takes what comes until the run has ended.
    void TakeAll(QueryRun& run) {
        for (;;) {
            const bool hasEnded = run.GetState() != TaskState::Running;
            if (std::optional<ResultShape> shape = run.TakeShape())
                m_shape = std::move(*shape);
            if (hasEnded)
                return;
            // Rows are read while others arrive.
            if (const std::size_t count = m_shape.result.GetRowCount()) {
                ASSERT_FALSE(Text(count - 1, 0).empty());
            }
        }
    }
    std::string Text(std::size_t row, std::size_t column) {
        return m_shape.result.GetValue(row, column).GetBytes();
    }
    std::size_t Count() const { return m_shape.result.GetRowCount(); }
    ResultShape m_shape;
};

TEST_F(QueryRunTest, RowsComeInOrder) {
    MakeDatabase("create table t(id integer primary key, x real, name varchar(9), b blob);"
                 "with recursive c(i) as (select 1 union all select i + 1 from c limit 300000)"
                 "insert into t select i, i / 2.0, 'n' || i, null from c");
    QueryRun run({Database(), ""}, "select id, x, name, b, id + 1 from t order by id desc");
    TakeAll(run);
    ASSERT_EQ(run.GetState(), TaskState::Done) << run.GetMessage();
    EXPECT_EQ(m_shape.result.GetColumns(),
              (std::vector<std::string>{"id", "x", "name", "b", "id + 1"}));
    EXPECT_EQ(m_shape.kinds,
              (std::vector{ColumnKind::Integer, ColumnKind::Decimal, ColumnKind::Text,
                           ColumnKind::Binary, ColumnKind::Unknown}));
    ASSERT_EQ(Count(), 300000u);
    for (std::size_t row = 0; row < 300000; ++row) {
        ASSERT_EQ(Text(row, 0), std::to_string(300000 - row));
        ASSERT_EQ(Text(row, 2), "n" + std::to_string(300000 - row));
        ASSERT_EQ(m_shape.result.GetRowId(row), static_cast<long long>(300000 - row));
    }
}

/// A query without an end stops when asked, before its first row and between rows; what came stays.
TEST_F(QueryRunTest, CancelStopsAndKeepsWhatCame) {
    MakeDatabase("create table t(v)");
    {
        QueryRun run({Database(), ""}, "with recursive c(x) as (select 1 union all select x + 1 "
                                       "from c) select sum(x) from c");
        run.Cancel();
        TakeAll(run);
        EXPECT_EQ(run.GetState(), TaskState::Stopped);
        EXPECT_EQ(Count(), 0u);
    }
    QueryRun run({Database(), ""}, "with recursive c(x) as (select 1 union all select x + 1 from "
                                   "c) select x from c");
    while (Count() < 5000) {
        if (std::optional<ResultShape> shape = run.TakeShape())
            m_shape = std::move(*shape);
    }
    run.Cancel();
    TakeAll(run);
    EXPECT_EQ(run.GetState(), TaskState::Stopped);
    EXPECT_GE(Count(), 5000u);
    for (std::size_t row = 0; row < Count(); ++row)
        ASSERT_EQ(Text(row, 0), std::to_string(row + 1));
}

TEST_F(QueryRunTest, AbandonedRunsEnd) {
    MakeDatabase("create table t(v)");
    const QueryRun run({Database(), ""}, "with recursive c(x) as (select 1 union all select x + 1 "
                                         "from c) select x from c");
}

TEST_F(QueryRunTest, FailuresKeepTheRowsBefore) {
    MakeDatabase("create table t(v); insert into t values (1), (2), (-9223372036854775808)");
    QueryRun run({Database(), ""}, "select abs(v), v from t");
    TakeAll(run);
    EXPECT_EQ(run.GetState(), TaskState::Failed);
    EXPECT_NE(run.GetMessage().find("overflow"), std::string::npos) << run.GetMessage();
    ASSERT_EQ(Count(), 2u);
    EXPECT_EQ(Text(1, 1), "2");

    QueryRun missing({File("missing"), ""}, "select 1");
    TakeAll(missing);
    EXPECT_EQ(missing.GetState(), TaskState::Failed);
    EXPECT_NE(missing.GetMessage().find("missing"), std::string::npos);
}

TEST(ConnectionTest, PasswordsAreNotShown) {
    const auto shown = [](const char* text) { return Connection{"", text}.GetDisplayName(); };
    EXPECT_EQ(shown("DSN=a;UID=me;Pwd={x;y};PASSWORD=q;Server=s"),
              "DSN=a;UID=me;Pwd=***;PASSWORD=***;Server=s");
    // A closing brace is doubled, or is not: neither reading shows a part of a password.
    EXPECT_EQ(shown("DSN=a;Pwd={x}};y};Server=s"), "DSN=a;Pwd=***;Server=s");
    EXPECT_EQ(shown("DSN={a}};Pwd=x;Server=s"), "DSN={a}};Pwd=***;Server=s");
    EXPECT_EQ(shown("DSN=a;key;\tssl password = { x;y };Server=s"),
              "DSN=a;key;\tssl password =***;Server=s");
    EXPECT_EQ((Connection{"", "pwd=secret"}.GetDisplayName()), "pwd=***");
    EXPECT_EQ((Connection{"f.sqlite", ""}.GetDisplayName()), "f.sqlite");
}

TEST(ConnectionTest, ShortNames) {
    const std::pair<Connection, const char*> kCases[] = {
        {{"/tmp/f.sqlite", ""}, "f.sqlite"},
        {{"/tmp/f.sqlite", "", "Films"}, "Films"},
        {{"", "Driver={X};Server=db1;PORT=1;database=films;UID=me;PWD=secret"}, "films (db1)"},
        {{"", "Driver={X};Server=db1;PWD=secret"}, "db1"},
        {{"", "DSN={my films};PWD=secret"}, "my films"},
        {{"", "DSN=films;Database=b"}, "b (films)"},
        {{"", "Driver=X;PWD={a}};Database=secret};Server=s"}, "s"},
        {{"", "PWD=secret"}, "PWD=***"}};
    for (const auto& [connection, name] : kCases)
        EXPECT_EQ(connection.GetShortName(), name) << connection.dataSource;
}

} // namespace
} // namespace vnquery

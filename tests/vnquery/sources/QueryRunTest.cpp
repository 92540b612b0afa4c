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
            if (std::optional<ResultShape> shape = run.TakeShape()) {
                m_shape = std::move(*shape);
                m_result = ResultSet(m_shape.columns);
            }
            m_portion = std::max(m_portion, run.TakeRows(m_result, 2 * QueryRun::kPortion));
            if (hasEnded && run.TakeRows(m_result, 2 * QueryRun::kPortion) == 0)
                return;
        }
    }
    ResultShape m_shape;
    ResultSet m_result;
    std::size_t m_portion = 0;
};

TEST_F(QueryRunTest, RowsComeInPortionsAndInOrder) {
    MakeDatabase("create table t(id integer primary key, x real, name varchar(9), b blob);"
                 "with recursive c(i) as (select 1 union all select i + 1 from c limit 300000)"
                 "insert into t select i, i / 2.0, 'n' || i, null from c");
    QueryRun run({Database(), ""}, "select id, x, name, b, id + 1 from t order by id desc");
    TakeAll(run);
    ASSERT_EQ(run.GetState(), TaskState::Done) << run.GetMessage();
    EXPECT_EQ(m_shape.columns, (std::vector<std::string>{"id", "x", "name", "b", "id + 1"}));
    EXPECT_EQ(m_shape.kinds,
              (std::vector{ColumnKind::Integer, ColumnKind::Decimal, ColumnKind::Text,
                           ColumnKind::Binary, ColumnKind::Unknown}));
    EXPECT_LE(m_portion, 2 * QueryRun::kPortion);
    ASSERT_EQ(m_result.GetRowCount(), 300000u);
    for (std::size_t row = 0; row < 300000; ++row) {
        ASSERT_EQ(m_result.At(row, 0).GetShort(), std::to_string(300000 - row));
        ASSERT_EQ(m_result.At(row, 2).GetShort(), "n" + std::to_string(300000 - row));
        ASSERT_EQ(m_result.GetRowId(row), static_cast<long long>(300000 - row));
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
        EXPECT_EQ(m_result.GetRowCount(), 0u);
    }
    QueryRun run({Database(), ""}, "with recursive c(x) as (select 1 union all select x + 1 from "
                                   "c) select x from c");
    while (m_result.GetRowCount() < 5000) {
        if (std::optional<ResultShape> shape = run.TakeShape())
            m_result = ResultSet(shape->columns);
        run.TakeRows(m_result, 4096);
    }
    run.Cancel();
    TakeAll(run);
    EXPECT_EQ(run.GetState(), TaskState::Stopped);
    EXPECT_GE(m_result.GetRowCount(), 5000u);
    for (std::size_t row = 0; row < m_result.GetRowCount(); ++row)
        ASSERT_EQ(m_result.At(row, 0).GetShort(), std::to_string(row + 1));
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
    ASSERT_EQ(m_result.GetRowCount(), 2u);
    EXPECT_EQ(m_result.At(1, 1).GetShort(), "2");

    QueryRun missing({File("missing"), ""}, "select 1");
    TakeAll(missing);
    EXPECT_EQ(missing.GetState(), TaskState::Failed);
    EXPECT_NE(missing.GetMessage().find("missing"), std::string::npos);
}

TEST(ConnectionTest, PasswordsAreNotShown) {
    const Connection connection{"", "DSN=a;UID=me;Pwd={x;y}};PASSWORD=q;Server=s"};
    EXPECT_EQ(connection.GetDisplayName(), "DSN=a;UID=me;Pwd=***;PASSWORD=***;Server=s");
    EXPECT_EQ((Connection{"", "pwd=secret"}.GetDisplayName()), "pwd=***");
    EXPECT_EQ((Connection{"f.sqlite", ""}.GetDisplayName()), "f.sqlite");
}

} // namespace
} // namespace vnquery

// Writing cells back to a server. postgres_test.sh makes the table and names the server in
// VNQUERY_ODBC; without it these tests are skipped.
#include "examples/vnquery/tasks/Failure.h"

#include "tests/vnquery/EditTest.h"

#include <cstdlib>

namespace vnquery {
namespace {

class OdbcWriterTest : public test::EditTest {
protected:
    void SetUp() override {
        const char* const source = std::getenv("VNQUERY_ODBC");
        if (!source)
            GTEST_SKIP() << "VNQUERY_ODBC is not set";
        m_connection = {"", source};
    }
};

constexpr char kQuery[] = "select id, name, body, data, price from edited order by id";

TEST_F(OdbcWriterTest, ValuesOfEveryKindAreWritten) {
    Query(kQuery);
    ASSERT_EQ(m_plan.readOnly, ReadOnlyReason::None);
    EXPECT_EQ(m_plan.GetReadOnlyReason(0), ReadOnlyReason::Key);
    EXPECT_EQ(m_kinds[4], ColumnKind::Decimal);
    const std::string bytes = test::SomeBytes(300000, 11);
    std::string body;
    for (int i = 0; i < 20000; ++i)
        body += "Zeile mit \xC3\x9Cml\xC3\xA4uten und \xF0\x9F\x98\x80\n";
    Set(0, 1,
        "Gr\xC3\xB6\xC3\x9F"
        "e");
    Set(0, 2, body);
    Set(0, 3, bytes, Value::Type::Binary);
    Set(1, 4, "7.25", Value::Type::Number);
    m_edits.Set({1, 1}, NewValue(), m_result);
    m_edits.Set({2, 4}, {true, {}}, m_result);
    EXPECT_EQ(Write(false).written.size(), 6u); // undone
    AcceptReport(Write(), m_result, m_edits);
    EXPECT_TRUE(m_edits.IsEmpty());
    Query(kQuery);
    EXPECT_EQ(m_result.GetValue(0, 1).GetBytes(), "Gr\xC3\xB6\xC3\x9F"
                                                  "e");
    EXPECT_TRUE(m_result.GetValue(0, 2).GetBytes() == body);
    EXPECT_TRUE(m_result.GetValue(0, 3).GetBytes() == bytes);
    EXPECT_EQ(m_result.GetValue(1, 4).GetBytes(), "7.25");
    EXPECT_TRUE(m_result.GetValue(1, 1).IsNull());
    EXPECT_EQ(m_result.GetValue(2, 4).GetBytes(), "1.50");
}

TEST_F(OdbcWriterTest, ConflictsAndRefusals) {
    Query(kQuery);
    ResultSet mine = std::move(m_result);
    Query(kQuery); // another user
    Set(0, 1, "theirs");
    Write();
    m_result = std::move(mine);
    m_edits.Clear();
    Set(0, 1, "mine");
    const WriteReport report = Write();
    ASSERT_EQ(report.conflicts.size(), 1u);
    EXPECT_EQ(report.conflicts[0].now.GetBytes(), "theirs");

    m_edits.Clear();
    Set(1, 4, "123456789012.5", Value::Type::Number); // numeric(10, 2)
    EXPECT_THROW(Write(), Failure);
    Query("select name from edited");
    EXPECT_EQ(m_plan.readOnly, ReadOnlyReason::NoKey);
    Query("select a.id, b.name from edited a, edited b where a.id = 1 and b.id = 2");
    EXPECT_NE(m_plan.readOnly, ReadOnlyReason::None);
}

} // namespace
} // namespace vnquery

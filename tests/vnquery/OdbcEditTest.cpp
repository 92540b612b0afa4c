// Writing cells back to a server. postgres_test.sh makes the table and names the server in
// VNQUERY_ODBC; without it these tests are skipped.
#include "examples/vnquery/result/CellEdit.h"
#include "examples/vnquery/result/PendingEdits.h"
#include "examples/vnquery/sources/Connection.h"
#include "examples/vnquery/work/Failure.h"

#include "tests/vnquery/MakeValue.h"
#include "tests/vnquery/ProgramRun.h"
#include "tests/vnquery/SilentProgress.h"

#include <cstdlib>

namespace vnquery {
namespace {

using test::MakeValue;
using test::SilentProgress;

class OdbcEditTest : public ::testing::Test {
protected:
    void SetUp() override {
        const char* const source = std::getenv("VNQUERY_ODBC");
        if (!source)
            GTEST_SKIP() << "VNQUERY_ODBC is not set";
        m_connection.dataSource = source;
    }
    void Query(const std::string& sql) {
        m_edits.Clear();
        const auto source = OpenSource(m_connection, sql, SourceUse::Editing);
        m_result = ResultSet(source->GetColumns());
        m_plan = source->GetEditPlan();
        m_kinds = source->GetKinds();
        m_result.Fetch(*source, m_progress);
    }
    void Set(std::size_t row, std::size_t column, Value::Type type, std::string_view bytes) {
        m_edits.Set({row, column}, {false, MakeValue(type, bytes)}, m_result);
    }
    WriteReport Write(bool commit = true) {
        const auto writer = OpenWriter(m_connection, m_plan);
        WriteReport report = WriteEdits(*writer, m_plan, m_result, m_edits, m_progress);
        if (commit)
            writer->Commit();
        return report;
    }
    Connection m_connection;
    SilentProgress m_progress;
    EditPlan m_plan;
    std::vector<ColumnKind> m_kinds;
    ResultSet m_result;
    PendingEdits m_edits;
};

constexpr char kQuery[] = "select id, name, body, data, price from edited order by id";

TEST_F(OdbcEditTest, ValuesOfEveryKindAreWritten) {
    Query(kQuery);
    ASSERT_EQ(m_plan.readOnly, ReadOnlyReason::None);
    EXPECT_EQ(m_plan.GetReadOnlyReason(0), ReadOnlyReason::Key);
    EXPECT_EQ(m_kinds[4], ColumnKind::Decimal);
    const std::string bytes = test::SomeBytes(300000, 11);
    std::string body;
    for (int i = 0; i < 20000; ++i)
        body += "Zeile mit \xC3\x9Cml\xC3\xA4uten und \xF0\x9F\x98\x80\n";
    Set(0, 1, Value::Type::Text,
        "Gr\xC3\xB6\xC3\x9F"
        "e");
    Set(0, 2, Value::Type::Text, body);
    Set(0, 3, Value::Type::Binary, bytes);
    Set(1, 4, Value::Type::Number, "7.25");
    m_edits.Set({1, 1}, NewValue(), m_result);
    m_edits.Set({2, 4}, {true, {}}, m_result);
    EXPECT_EQ(Write(false).written.size(), 6u); // undone
    AcceptReport(Write(), m_result, m_edits);
    EXPECT_TRUE(m_edits.IsEmpty());
    Query(kQuery);
    EXPECT_EQ(m_result.At(0, 1).GetBytes(), "Gr\xC3\xB6\xC3\x9F"
                                            "e");
    EXPECT_TRUE(m_result.At(0, 2).GetBytes() == body);
    EXPECT_TRUE(m_result.At(0, 3).GetBytes() == bytes);
    EXPECT_EQ(m_result.At(1, 4).GetBytes(), "7.25");
    EXPECT_TRUE(m_result.At(1, 1).IsNull());
    EXPECT_EQ(m_result.At(2, 4).GetBytes(), "1.50");
}

TEST_F(OdbcEditTest, ConflictsAndRefusals) {
    Query(kQuery);
    ResultSet mine = std::move(m_result);
    Query(kQuery); // somebody else
    Set(0, 1, Value::Type::Text, "theirs");
    Write();
    m_result = std::move(mine);
    m_edits.Clear();
    Set(0, 1, Value::Type::Text, "mine");
    const WriteReport report = Write();
    ASSERT_EQ(report.conflicts.size(), 1u);
    EXPECT_EQ(report.conflicts[0].now.GetBytes(), "theirs");

    m_edits.Clear();
    Set(1, 4, Value::Type::Number, "123456789012.5"); // numeric(10, 2)
    EXPECT_THROW(Write(), Failure);
    Query("select name from edited");
    EXPECT_EQ(m_plan.readOnly, ReadOnlyReason::NoKey);
    Query("select a.id, b.name from edited a, edited b where a.id = 1 and b.id = 2");
    EXPECT_NE(m_plan.readOnly, ReadOnlyReason::None);
}

} // namespace
} // namespace vnquery

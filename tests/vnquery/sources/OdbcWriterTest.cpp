// Writing cells back to a server. postgres_test.sh makes the table and names the server in
// VNQUERY_ODBC, mariadb_test.sh in VNQUERY_MARIADB; without them these tests are skipped.
#include "examples/vnquery/sources/Session.h"
#include "examples/vnquery/tasks/Failure.h"

#include "tests/vnquery/EditTest.h"
#include "tests/vnquery/sources/RowCollector.h"

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

// --- rows, and sessions --------------------------------------------------------------------------

TEST_F(OdbcWriterTest, RowsAreInsertedAndDeleted) {
    Query("select id, name, n from numbered order by id");
    ASSERT_EQ(m_plan.readOnly, ReadOnlyReason::None);
    EXPECT_TRUE(m_plan.columns[0].isFilled);
    const auto append = [&](std::string_view name) {
        const std::size_t row = m_result.AppendRow();
        m_edits.Insert(row);
        if (!name.empty())
            Set(row, 1, name);
        return row;
    };
    const std::size_t first = append("Gr\xC3\xB6\xC3\x9F"
                                     "e");
    const std::size_t second = append("");
    m_edits.Delete(0);
    AcceptReport(Write(), m_result, m_edits);
    EXPECT_TRUE(m_edits.IsEmpty());
    EXPECT_EQ(m_result.GetValue(first, 0).GetBytes(), "3");
    EXPECT_EQ(m_result.GetValue(second, 0).GetBytes(), "4");
    EXPECT_EQ(m_result.GetValue(second, 2).GetBytes(), "7"); // the default
    Set(second, 1, "changed");
    Write();
    Query("select name from numbered order by id");
    ASSERT_EQ(m_result.GetRowCount(), 3u);
    EXPECT_EQ(m_result.GetValue(0, 0).GetBytes(), "two");
    EXPECT_EQ(m_result.GetValue(2, 0).GetBytes(), "changed");
}

class OdbcSessionTest : public OdbcWriterTest {
protected:
    void SetUp() override {
        OdbcWriterTest::SetUp();
        if (!IsSkipped())
            m_session = OpenSession(m_connection);
    }
    std::string Run(const std::string& sql, const Parameters& parameters = {}) {
        const auto source = m_session->Run(sql, SourceUse::Editing, parameters);
        const test::Rows rows = test::Collect(*source);
        const auto changed = source->GetChangedRows();
        return (rows.empty() ? "" : rows[0][0].bytes) +
               (changed ? "+" + std::to_string(*changed) : "");
    }
    std::string FailureOf(const std::string& sql) {
        try {
            return "no failure but " + Run(sql);
        } catch (const Failure& failure) {
            return failure.what();
        }
    }
    /// What another user sees.
    std::string Seen(const std::string& sql = "select count(*) from kept") {
        const auto source = OpenSource(m_connection, sql, SourceUse::ReadOnly);
        return test::Collect(*source).at(0)[0].bytes;
    }
    std::shared_ptr<Session> m_session;
};

TEST_F(OdbcSessionTest, ChangesAreCommittedOrNot) {
    EXPECT_EQ(Run("select count(*) from kept"), "3");
    EXPECT_FALSE(m_session->HasChanges());
    EXPECT_EQ(Run("delete from kept where a = 1"), "+1");
    EXPECT_TRUE(m_session->HasChanges());
    EXPECT_EQ(Run("update kept set b = 'x' where a = 99"), "+0");
    EXPECT_EQ(Run("create table more(a int)"), "");
    EXPECT_EQ(Run("insert into kept values (7, 'x'), (8, 'y') returning a"), "7+2");
    EXPECT_EQ(Seen(), "3");
    EXPECT_EQ(m_session->GetUndoneCount(), 0u);
    m_session->RollBack();
    EXPECT_EQ(m_session->GetUndoneCount(), 1u);
    EXPECT_EQ(Run("select count(*) from kept"), "3");
    EXPECT_EQ(Run("insert into kept select i, 'g' from generate_series(10, 3009) i"), "+3000");
    EXPECT_EQ(Run("select count(*) from kept"), "3003");
    m_session->RollBack();
    // Nothing is left open, and what functions change counts.
    EXPECT_EQ(Seen("select count(*) from pg_stat_activity where state like 'idle in%'"), "0");
    EXPECT_EQ(Run("select harm_kept()"), "1");
    EXPECT_TRUE(m_session->HasChanges());
    m_session->Commit();
    EXPECT_EQ(Seen(), "2");
    EXPECT_EQ(m_session->GetUndoneCount(), 2u);
    Run("delete from kept");
    m_session.reset();
    EXPECT_EQ(Seen(), "2");
    m_session = OpenSession(m_connection);
    Run("delete from kept");
    // The server ends the session, and with it the transaction.
    Seen("select pg_terminate_backend(pid) from pg_stat_activity where state like 'idle in%'");
    EXPECT_NE(FailureOf("select 1").find("not committed"), std::string::npos);
    EXPECT_EQ(m_session->GetUndoneCount(), 1u);
}

/// A failure leaves what was changed before, also one that comes between the rows.
TEST_F(OdbcSessionTest, FailuresUndoTheirStatementOnly) {
    Run("insert into kept values (50, 'before')");
    for (const char* sql :
         {"insert into kept values (51, 'x'), (50, 'again')", "select nothing from kept", "selec 1",
          "update nothing set a = 1", "select 1 / (i - 2000) from generate_series(1, 9000) i"}) {
        const std::string message = FailureOf(sql);
        EXPECT_EQ(message.find("no failure"), std::string::npos) << sql;
        EXPECT_EQ(message.find("not committed"), std::string::npos) << message;
        EXPECT_TRUE(m_session->HasChanges()) << sql;
        EXPECT_EQ(Run("select b from kept where a >= 50"), "before") << sql;
    }
    EXPECT_NE(FailureOf("commit").find("not run"), std::string::npos);
    EXPECT_NE(FailureOf("select 1; commit").find("more than one"), std::string::npos);
    m_session->RollBack();
    EXPECT_NE(FailureOf("insert into kept values (2, 'again')").find("kept"), std::string::npos);
    EXPECT_FALSE(m_session->HasChanges());
    try {
        Run("select b,\n '\xC3\xA4', nothing from kept");
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.GetPlace(), 17u) << failure.what();
    }
}

TEST_F(OdbcSessionTest, ValuesAreBound) {
    const auto run = [&](const std::string& sql, const std::string& value) {
        return Run(sql, {{{"v", value}, {"null", std::nullopt}}, {{"T", "kept"}}});
    };
    EXPECT_EQ(run("select a from &t where a = :v", "2"), "2");
    EXPECT_EQ(run("select count(*) from kept where b = :v", "it's"), "0");
    EXPECT_EQ(run("select count(*)::text || ':v' from kept where a::bigint > :v", "0"), "2:v");
    EXPECT_EQ(run("insert into kept values (:v, :null)", "60"), "+1");
    EXPECT_EQ(run("select coalesce(b, 'none') from kept where a = :v", "60"), "none");
    EXPECT_EQ(run("select :v || ''", "Gr\xC3\xB6\xC3\x9F"
                                     "e"),
              "Gr\xC3\xB6\xC3\x9F"
              "e");
    // Without a session, too.
    const auto source = OpenSource(m_connection, "select b from kept where a = :v",
                                   SourceUse::ReadOnly, {{{"v", "2"}}, {}});
    EXPECT_EQ(test::Collect(*source).at(0)[0].bytes, "b");
}

TEST_F(OdbcSessionTest, EditsBelongToTheTransaction) {
    const auto write = [&](bool keep) {
        const auto writer = m_session->OpenWriter(m_plan);
        const WriteReport report = WriteEdits(*writer, m_plan, m_result, m_edits, m_progress);
        if (keep)
            writer->Commit();
        return report.written.size();
    };
    Query("select a, b from kept order by a");
    Set(0, 1, "edited");
    EXPECT_EQ(write(false), 1u);
    EXPECT_FALSE(m_session->HasChanges());
    Run("insert into kept values (70, 'mine')");
    EXPECT_EQ(write(false), 1u); // only that is undone
    EXPECT_EQ(Run("select count(*) from kept where b in ('edited', 'mine')"), "1");
    EXPECT_EQ(write(true), 1u);
    EXPECT_EQ(Seen("select count(*) from kept where b in ('edited', 'mine')"), "0");
    m_session->Commit();
    EXPECT_EQ(Seen("select count(*) from kept where b in ('edited', 'mine')"), "2");
}

/// MariaDB commits definitions by itself, and with them what was changed before.
class MariaDbSessionTest : public testing::Test {
protected:
    void SetUp() override {
        const char* const text = std::getenv("VNQUERY_MARIADB");
        if (!text)
            GTEST_SKIP() << "VNQUERY_MARIADB is not set";
        m_connection = {"", text};
        m_session = OpenSession(m_connection);
        Run("delete from kept");
        Run("insert into kept values (1, 'a'), (2, 'b')");
        m_session->Commit();
    }
    std::string Run(const std::string& sql, const Parameters& parameters = {}) {
        const auto source = m_session->Run(sql, SourceUse::Editing, parameters);
        const test::Rows rows = test::Collect(*source);
        return rows.empty() ? "" : rows[0][0].bytes;
    }
    std::string FailureOf(const std::string& sql) {
        try {
            return "no failure but " + Run(sql);
        } catch (const Failure& failure) {
            return failure.what();
        }
    }
    std::string Seen(const std::string& sql = "select group_concat(b order by a) from kept") {
        const auto source = OpenSource(m_connection, sql, SourceUse::ReadOnly);
        return test::Collect(*source).at(0)[0].bytes;
    }
    Connection m_connection;
    std::shared_ptr<Session> m_session;
};

TEST_F(MariaDbSessionTest, ChangesAreCommittedOrNot) {
    ASSERT_EQ(m_session->GetServer(), SqlServer::MySql);
    Run("update kept set b = :v where a = 1", {{{"v", "it's"}}, {}});
    EXPECT_EQ(Run("select b from kept where a = 1"), "it's");
    EXPECT_TRUE(m_session->HasChanges());
    EXPECT_NE(FailureOf("insert into kept values (2, 'again')").find("Duplicate"),
              std::string::npos);
    EXPECT_TRUE(m_session->HasChanges());
    EXPECT_NE(FailureOf("commit").find("not run"), std::string::npos);
    EXPECT_EQ(Seen(), "a,b");
    m_session->RollBack();
    EXPECT_EQ(m_session->GetUndoneCount(), 1u);
    EXPECT_EQ(Run("select b from kept where a = 1"), "a");
}

TEST_F(MariaDbSessionTest, DefinitionsAreFinalWithWhatWasBefore) {
    const Parameters parameters{{}, {{"WHAT", "create table more(a int)"}}};
    Run("drop table if exists more");
    Run("update kept set b = 'x' where a = 1");
    EXPECT_TRUE(m_session->HasChanges());
    Run("&what", parameters);
    EXPECT_FALSE(m_session->HasChanges());
    EXPECT_EQ(Seen(), "x,b");
    EXPECT_EQ(Seen("select count(*) from more"), "0");
    // Also one that fails, which is then not said to have been undone.
    Run("update kept set b = 'y' where a = 1");
    const std::string message = FailureOf("create table more(a int)");
    EXPECT_NE(message.find("already exists"), std::string::npos) << message;
    EXPECT_EQ(message.find("not committed"), std::string::npos) << message;
    EXPECT_EQ(Seen(), "y,b");
    // What runs without being seen through is final, too, and rows of such a statement come.
    Run("update kept set b = 'z' where a = 1");
    EXPECT_EQ(Run("check table kept"), "films.kept");
    EXPECT_EQ(Seen(), "z,b");
    Run("update kept set b = 'w' where a = 1");
    Run("create or replace temporary table t(a int)");
    EXPECT_FALSE(m_session->HasChanges());
    EXPECT_EQ(Seen(), "w,b");
    // A temporary table leaves the transaction open.
    Run("update kept set b = 'v' where a = 1");
    Run("drop temporary table t");
    EXPECT_TRUE(m_session->HasChanges());
    EXPECT_EQ(Seen(), "w,b");
    EXPECT_EQ(m_session->GetUndoneCount(), 0u);
}

} // namespace
} // namespace vnquery

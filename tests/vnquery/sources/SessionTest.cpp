// Statements that change something, on SQLite; the C API of SQLite says what the file has.
#include "examples/vnquery/sources/Session.h"
#include "examples/vnquery/sources/QueryRun.h"
#include "examples/vnquery/tasks/Failure.h"

#include "tests/vnquery/EditTest.h"
#include "tests/vnquery/sources/RowCollector.h"

#include <csignal>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vnquery {
namespace {

class SessionTest : public test::EditTest {
protected:
    void SetUp() override {
        MakeDatabase("create table t(id integer primary key, v text unique); "
                     "insert into t values (1, 'a'), (2, 'b'), (3, 'c')");
        m_session = OpenSession({Database(), ""});
    }
    /// The first cell of a result, or the number of changed rows with a "+".
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
    /// What another process sees.
    std::string Seen(const std::string& sql = "select group_concat(v, '') from t") const {
        sqlite3* database = nullptr;
        sqlite3_open_v2(Database().c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
        std::string text;
        const auto take = [](void* to, int, char** values, char**) {
            *static_cast<std::string*>(to) = values[0] ? values[0] : "NULL";
            return 0;
        };
        if (sqlite3_exec(database, sql.c_str(), take, &text, nullptr) != SQLITE_OK)
            text = sqlite3_errmsg(database);
        sqlite3_close(database);
        return text;
    }

    std::shared_ptr<Session> m_session;
};

TEST_F(SessionTest, ChangesAreSeenAndCommittedOrNot) {
    EXPECT_EQ(Run("select count(*) from t"), "3");
    EXPECT_FALSE(m_session->HasChanges());
    EXPECT_EQ(Run("update t set v = v || '!' where id < 3"), "+2");
    EXPECT_TRUE(m_session->HasChanges());
    EXPECT_EQ(Run("select v from t"), "a!");
    EXPECT_EQ(Run("create table u as select * from t"), "");
    EXPECT_EQ(Run("insert into t(v) values ('d'), ('e') returning id"), "4+2");
    EXPECT_EQ(Run("delete from t where id = 77"), "+0");
    EXPECT_EQ(Run("pragma user_version = 5"), "");
    EXPECT_EQ(Run("with x as (select 3 as i) delete from t where id in x"), "+1");
    EXPECT_EQ(Seen(), "abc");
    EXPECT_EQ(Seen("insert into t(v) values ('x')"), "database is locked");
    EXPECT_EQ(m_session->GetUndoneCount(), 0u);
    m_session->RollBack();
    EXPECT_FALSE(m_session->HasChanges());
    EXPECT_EQ(m_session->GetUndoneCount(), 1u);
    m_session->RollBack(); // there is nothing
    EXPECT_EQ(m_session->GetUndoneCount(), 1u);
    EXPECT_EQ(Run("select count(*) from sqlite_schema where name = 'u'"), "0");
    EXPECT_EQ(Run("pragma user_version"), "0");

    Run("update t set v = 'z' where id = 1");
    m_session->Commit();
    EXPECT_FALSE(m_session->HasChanges());
    EXPECT_EQ(m_session->GetUndoneCount(), 1u);
    EXPECT_EQ(Seen(), "zbc");
    Run("delete from t");
    m_session.reset();
    EXPECT_EQ(Seen(), "zbc");
}

/// What has changed nothing leaves no lock.
TEST_F(SessionTest, NothingIsLockedWithoutAChange) {
    for (const char* sql :
         {"select * from t", "update t set v = 'x' where id = 99", "pragma foreign_keys",
          "insert into t values (1, 'x')", "update t set nothing = 1", "explain delete from t"}) {
        try {
            Run(sql);
        } catch (const Failure&) {
        }
        EXPECT_FALSE(m_session->HasChanges()) << sql;
        EXPECT_EQ(Seen("update t set v = v"), "") << sql;
    }
    // What is kept of a statement that fails is a change.
    EXPECT_NE(FailureOf("insert or fail into t values (7, 'x'), (1, 'y')").find("UNIQUE"),
              std::string::npos);
    EXPECT_TRUE(m_session->HasChanges());
    EXPECT_EQ(Run("select v from t where id = 7"), "x");
}

TEST_F(SessionTest, NothingButCommitEndsTheTransaction) {
    Run("delete from t where id = 1");
    for (const char* sql :
         {"commit", "END", "rollback", " ; /* */ Commit;", "begin", "end transaction",
          "delete from t; commit", "/* ' */ rollback -- to x"}) {
        const std::string message = FailureOf(sql);
        EXPECT_TRUE(message.find("not run") != std::string::npos ||
                    message.find("more than one") != std::string::npos)
            << sql << ": " << message;
        EXPECT_TRUE(m_session->HasChanges());
        EXPECT_EQ(Seen(), "abc") << sql;
    }
    EXPECT_NE(FailureOf("vacuum").find("VACUUM"), std::string::npos);
    m_session->RollBack();
    // The outermost savepoint would commit when it is released.
    Run("savepoint s");
    Run("delete from t where id = 2");
    Run("release s");
    EXPECT_EQ(Seen(), "abc");
    Run("savepoint s");
    Run("delete from t");
    Run("rollback to s");
    EXPECT_EQ(Run("select count(*) from t"), "2");
    m_session->RollBack();
    EXPECT_TRUE(CommitsByItself("vacuum", SqlServer::Sqlite));
    EXPECT_EQ(Run("vacuum"), "");
}

/// Where SQLite undoes everything it is said.
TEST_F(SessionTest, WhatTheDatabaseUndoesIsSaid) {
    Run("delete from t where id = 1");
    EXPECT_EQ(FailureOf("insert into t values (2, 'x')").find("not committed"), std::string::npos);
    EXPECT_TRUE(m_session->HasChanges());
    EXPECT_EQ(m_session->GetUndoneCount(), 0u);
    EXPECT_NE(FailureOf("insert or rollback into t values (2, 'x')").find("not committed"),
              std::string::npos);
    EXPECT_FALSE(m_session->HasChanges());
    EXPECT_EQ(m_session->GetUndoneCount(), 1u);
    // Nor does it go unnoticed when it happens while rows are fetched.
    Run("delete from t where id = 1");
    FailureOf("insert or rollback into t values (2, 'x') returning id");
    EXPECT_EQ(m_session->GetUndoneCount(), 2u);
    EXPECT_EQ(Run("select count(*) from t"), "3");
}

TEST_F(SessionTest, ALockedDatabaseIsCommittedLater) {
    sqlite3* reader = nullptr;
    sqlite3_open(Database().c_str(), &reader);
    sqlite3_exec(reader, "begin; select * from t", nullptr, nullptr, nullptr);
    Run("delete from t where id = 1");
    try {
        m_session->Commit();
        FAIL() << "somebody reads";
    } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.what()).find("locked"), std::string::npos);
    }
    EXPECT_TRUE(m_session->HasChanges());
    sqlite3_close(reader);
    m_session->Commit();
    EXPECT_EQ(Seen(), "bc");
}

TEST_F(SessionTest, AKilledProcessChangesNothing) {
    m_session.reset();
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        const auto session = OpenSession({Database(), ""});
        session->Run("delete from t", SourceUse::ReadOnly);
        session->Run("create table u as select zeroblob(3000000)", SourceUse::ReadOnly);
        [[maybe_unused]] const auto count = write(ready[1], "x", 1);
        pause();
        _exit(1);
    }
    char ch = 0;
    ASSERT_EQ(read(ready[0], &ch, 1), 1);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(ready[0]);
    close(ready[1]);
    EXPECT_EQ(Seen(), "abc");
    EXPECT_EQ(Seen("pragma integrity_check"), "ok");
}

TEST_F(SessionTest, FailuresTellTheirPlace) {
    const auto place = [&](const std::string& sql, const Parameters& parameters = {}) {
        QueryRun run(m_session, sql, parameters);
        while (run.GetState() == TaskState::Running)
            continue;
        EXPECT_EQ(run.GetState(), TaskState::Failed) << sql;
        return run.GetFailurePlace();
    };
    EXPECT_EQ(place("select id, nothing from t"), 11u);
    EXPECT_EQ(place("select id from t wher id = 1"), 22u);
    EXPECT_EQ(place("update nothing set v = 1"), 7u);
    EXPECT_EQ(place("insert into t values (1, 'x')"), std::nullopt);
    Parameters parameters;
    parameters.variables = {{"X", "a much longer text"}, {"Y", ""}};
    EXPECT_EQ(place("select '&X', &y v, nothing from t, '\xC3\xA4'", parameters), 19u);
    EXPECT_EQ(place("select '' as x, nothing &X", parameters), 16u);
}

TEST_F(SessionTest, RunsTakeTurns) {
    QueryRun change(m_session, "update t set v = v || '?'");
    QueryRun query(m_session, "select v from t");
    std::optional<ResultShape> shape;
    while (query.GetState() == TaskState::Running || change.GetState() == TaskState::Running)
        continue;
    EXPECT_EQ(change.GetChangedRows(), 3);
    EXPECT_FALSE(change.TakeShape());
    shape = query.TakeShape();
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->result.GetRowCount(), 3u);
    EXPECT_FALSE(query.GetChangedRows());

    QueryRun endless(m_session, "with recursive c(i) as (select 1 union all select i + 1 from c) "
                                "select i from c");
    while (endless.GetProgress().GetRows() == 0)
        continue;
    QueryRun waiting(m_session, "select 1");
    waiting.Cancel();
    while (waiting.GetState() == TaskState::Running)
        continue;
    EXPECT_EQ(waiting.GetState(), TaskState::Stopped);
    EXPECT_EQ(endless.GetState(), TaskState::Running);
}

/// Cells are written within the transaction.
TEST_F(SessionTest, EditsBelongToTheTransaction) {
    const auto write = [&](bool keep) {
        const auto writer = m_session->OpenWriter(m_plan);
        const WriteReport report = WriteEdits(*writer, m_plan, m_result, m_edits, m_progress);
        if (keep)
            writer->Commit();
        return report.written.size();
    };
    Query("select id, v from t");
    Set(0, 1, "first");
    EXPECT_EQ(write(false), 1u);
    EXPECT_FALSE(m_session->HasChanges());
    EXPECT_EQ(Seen("update t set id = id"), "");
    EXPECT_EQ(write(true), 1u);
    EXPECT_TRUE(m_session->HasChanges());
    EXPECT_EQ(Seen(), "abc");
    m_edits.Clear();
    Set(1, 1, "second");
    EXPECT_EQ(write(false), 1u); // only that is undone
    EXPECT_EQ(Run("select group_concat(v, ',') from t"), "first,b,c");
    m_session->Commit();
    EXPECT_EQ(Seen("select v from t where id = 1"), "first");
}

TEST_F(SessionTest, LongValuesAreReadInPiecesWithinTheTransaction) {
    Run("create table b(id integer primary key, data)");
    Run("insert into b values (1, 'short'), (2, zeroblob(3000000)), (3, :text)",
        {{{"text", "it's"}}, {}});
    const auto source = m_session->Run("select data, id from b where id < :n order by id desc",
                                       SourceUse::ReadOnly, {{{"n", "4"}}, {}});
    const test::Rows rows = test::Collect(*source);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0][0].bytes, "it's");
    EXPECT_EQ(rows[1][0].bytes.size(), 3000000u);
}

} // namespace
} // namespace vnquery

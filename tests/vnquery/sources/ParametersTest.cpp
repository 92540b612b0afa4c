#include "examples/vnquery/sources/Parameters.h"
#include "examples/vnquery/sources/ErrorPlace.h"
#include "examples/vnquery/sources/QueryGuard.h"
#include "examples/vnquery/sources/SqliteSource.h"

#include "tests/vnquery/ProgramRun.h"
#include "tests/vnquery/sources/RowCollector.h"

namespace vnquery {
namespace {

std::string Names(const std::string& sql, SqlServer server) {
    std::string names;
    for (const SqlName& name : FindNames(sql, server)) {
        EXPECT_EQ(sql[name.begin], name.isVariable ? '&' : ':') << sql;
        names += (names.empty() ? "" : " ") + (name.isVariable ? "&" + name.name : name.name) +
                 "@" + std::to_string(name.end);
    }
    return names;
}

TEST(Parameters, NamesStandOutsideOfQuotesAndOperators) {
    const struct {
        const char* sql;
        const char* names;
    } kCases[] = {
        {"select :a, :B_1+:c", "a@9 B_1@15 c@18"},
        {"select ':a', \":b\" /* :c */ -- :d\n, :e", "e@37"},
        {"select x::int, a&b, (1)&c, 'x'&y, @d, $e, ?, ::f, a:=1, b:c", ""},
        {"select * from &Table where &X = &_y", "&TABLE@20 &X@29 &_Y@35"},
        {"select 1 & b, : c, a[1:n], a[:m], &1, && d", ""},
        {":\xC3\xA4 :", "\xC3\xA4@3"},
    };
    for (const auto& [sql, names] : kCases)
        EXPECT_EQ(Names(sql, SqlServer::PostgreSql), names) << sql;
    EXPECT_EQ(Names("select $$ :a $$, :b", SqlServer::PostgreSql), "b@19");
    EXPECT_EQ(Names("select $$ :a $$, :b", SqlServer::Sqlite), "a@12 b@19");
    EXPECT_EQ(Names("select 'it\\':s :a', :b", SqlServer::MySql), "b@22");
}

TEST(Parameters, TextsTakeThePlacesOfNames) {
    const std::string sql = "select :a, &x, :b from &T, :a";
    const Parameters parameters{{{"a", "1"}, {"b", std::nullopt}}, {{"T", "a b"}}};
    const SqlText marked(sql, SqlServer::PostgreSql, parameters, true);
    EXPECT_EQ(marked.Get(), "select ?, &x, ? from a b, ?");
    EXPECT_EQ(marked.GetValues(),
              (std::vector<std::optional<std::string>>{"1", std::nullopt, "1"}));
    const SqlText named(sql, SqlServer::Sqlite, parameters, false);
    EXPECT_EQ(named.Get(), "select :a, &x, :b from a b, :a");
    EXPECT_TRUE(named.GetValues().empty());
    // Each byte comes from where it stood.
    for (const SqlText* text : {&marked, &named})
        for (std::size_t at = 0; at < text->Get().size(); ++at) {
            const char ch = text->Get()[at];
            const char original = sql[text->ToOriginal(at)];
            EXPECT_TRUE(original == ch || original == ':' || original == '&') << at;
        }
    EXPECT_EQ(marked.ToOriginal(marked.Get().size()), sql.size());
    const auto missing = FindMissing(sql + " :c &X", SqlServer::Sqlite, parameters);
    ASSERT_EQ(missing.size(), 2u);
    EXPECT_EQ(missing[0].name + missing[1].name, "Xc");
}

class SqliteParametersTest : public test::ProgramTest {};

/// What SQLite's own comparison says of a value written into the statement.
TEST_F(SqliteParametersTest, NumbersCompareAsNumbers) {
    MakeDatabase("create table t(n int, s text); insert into t values (5, '007'), (70, '5'), "
                 "(800, 'x')");
    const auto count = [&](const std::string& where, std::optional<std::string> value) {
        SqliteSource source(Database(), "select count(*) from t where " + where,
                            SourceUse::ReadOnly, {{{"v", value}}, {}});
        return test::Collect(source).at(0)[0].bytes;
    };
    EXPECT_EQ(count("n > :v", "60"), "2");
    EXPECT_EQ(count("n + 0 > :v", "60"), "2");
    EXPECT_EQ(count("n + 0 = :v", "7e1"), "1");
    EXPECT_EQ(count("s = :v", "007"), "1");
    EXPECT_EQ(count("s = :v", "5"), "1");
    EXPECT_EQ(count("s = :v", "it's"), "0");
    EXPECT_EQ(count("typeof(:v) = 'text'", "+5"), "3");
    EXPECT_EQ(count("typeof(:v) = 'text'", ""), "3");
    EXPECT_EQ(count("typeof(:v) = 'text'", "-"), "3");
    EXPECT_EQ(count("typeof(:v) = 'real'", "-0.5"), "3");
    EXPECT_EQ(count("typeof(:v) = 'integer'", "0"), "3");
    EXPECT_EQ(count(":v is null", std::nullopt), "3");
}

TEST(SessionGuard, TriggersAndRoutinesAreOneStatement) {
    const std::string trigger = "create temp trigger x after insert on t begin select case when 1 "
                                "then 2 end; delete from t; end;";
    const auto statements = SplitStatements(trigger + " select 1", SqlServer::Sqlite);
    ASSERT_EQ(statements.size(), 2u);
    EXPECT_EQ(statements[0].text, trigger);
    EXPECT_FALSE(FindSessionRefusal(trigger, SqlServer::Sqlite));
    EXPECT_FALSE(
        FindSessionRefusal("create procedure p() begin select 1; select 2; end", SqlServer::MySql));
}

TEST(SessionGuard, WhatEndsTransactions) {
    using Reason = QueryRefusal::Reason;
    for (const SqlServer server : {SqlServer::PostgreSql, SqlServer::MySql, SqlServer::Other}) {
        for (const char* sql :
             {"commit", "rollback work", "begin", "start transaction", "COMMIT AND CHAIN"}) {
            const auto refusal = FindSessionRefusal(sql, server);
            ASSERT_TRUE(refusal) << sql;
            EXPECT_EQ(refusal->reason, Reason::EndsTransaction) << sql;
        }
        const auto several = FindSessionRefusal("delete from t; commit", server);
        EXPECT_TRUE(several) << static_cast<int>(server);
        for (const char* sql : {"delete from t where a = 'commit';", "rollback to savepoint x",
                                "update t set a = (select ';')", "-- ;\ncall p()"})
            EXPECT_FALSE(FindSessionRefusal(sql, server)) << sql;
    }
    EXPECT_TRUE(FindSessionRefusal("select 1 commit", SqlServer::Other));
    EXPECT_TRUE(FindSessionRefusal("set session autocommit = 1", SqlServer::MySql));
    EXPECT_TRUE(CommitsByItself("drop table t", SqlServer::MySql));
    EXPECT_FALSE(CommitsByItself("drop temporary table t", SqlServer::MySql));
    EXPECT_FALSE(CommitsByItself("drop table t", SqlServer::PostgreSql));
    EXPECT_TRUE(CommitsByItself("drop table t", SqlServer::Other));
}

/// What is asked before it runs is the text with the variables in it, as each server reads it.
TEST(SessionGuard, VariablesAreLookedAtWithTheStatement) {
    const struct {
        const char* sql;
        const char* variable; ///< of &X
        bool mySql;           ///< whether it commits there
        bool postgreSqlRuns;  ///< in the transaction; else it is refused
    } kCases[] = {{"&x table t", "drop", true, true},
                  {"&X", "create table t(a int)", true, true},
                  {"&X t", "/* */ truncate -- \n table", true, true},
                  {"&X", "select 'drop table t'", false, true},
                  {"&X", "drop temporary table t", false, true},
                  {"&X", "set password = 'x'", true, true},
                  {"&X", "execute immediate 'drop table t'", true, true},
                  {"select '&X'", "drop table t", false, true},
                  {"select &X", "1; drop table t", false, false},
                  {"&X", "commit", false, false},
                  {"# ' \n&X", "drop table t", true, true}}; // for PostgreSQL it is quoted
    for (const auto& [sql, variable, mySql, postgreSqlRuns] : kCases) {
        const Parameters parameters{{}, {{"X", variable}}};
        const auto text = [&](SqlServer server) {
            return SqlText(sql, server, parameters, true).Get();
        };
        const std::string message = std::string(sql) + " with " + variable;
        EXPECT_EQ(CommitsByItself(text(SqlServer::MySql), SqlServer::MySql), mySql) << message;
        const std::string postgreSql = text(SqlServer::PostgreSql);
        EXPECT_FALSE(CommitsByItself(postgreSql, SqlServer::PostgreSql)) << message;
        EXPECT_EQ(!FindSessionRefusal(postgreSql, SqlServer::PostgreSql), postgreSqlRuns)
            << message;
    }
}

TEST(ErrorPlace, AsTheServersSayIt) {
    const std::string sql = "select '\xC3\xA4', nothing\nfrm t where x = 'y'";
    EXPECT_EQ(FindErrorPlace("ERROR: no column at character 13", sql), 13u);
    EXPECT_EQ(FindErrorPlace("syntax error at or near \"t\";", "select 1 frm t"), 13u);
    EXPECT_EQ(FindErrorPlace("column \"nothing\" does not exist", sql), 13u);
    EXPECT_EQ(FindErrorPlace("check the manual for the right syntax to use near 'frm t where x = "
                             "'y'' at line 2",
                             sql),
              21u);
    EXPECT_EQ(FindErrorPlace("Unknown column 'x' in 'where'", "select 1, x from x"), std::nullopt);
    EXPECT_EQ(FindErrorPlace("at character 999999999999999999999", sql), std::nullopt);
    EXPECT_EQ(FindErrorPlace("to use near '' at line 1", sql), std::nullopt);
}

} // namespace
} // namespace vnquery

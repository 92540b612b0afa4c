#include "examples/vnquery/sources/QueryGuard.h"

#include <gtest/gtest.h>

namespace vnquery {
namespace {

constexpr SqlServer kServers[] = {SqlServer::PostgreSql, SqlServer::MySql, SqlServer::Other};

/// What is refused: the word, "?" for several statements, "" for no statement, "ok" for nothing.
std::string Verdict(std::string_view sql, SqlServer server) {
    const std::optional<QueryRefusal> refusal = FindRefusal(sql, server);
    if (!refusal)
        return "ok";
    return refusal->reason == QueryRefusal::Reason::Several ? "?" : refusal->word;
}

TEST(QueryGuard, QueriesPassOnEveryServer) {
    for (const char* sql : {"select 1", " ;; ( select 1 ) ; -- done", "values (1)",
                            "with x as (select 1) select * from x", "table film", "show all",
                            "explain select 1", "select 'delete from t; drop table t'",
                            "select \"delete\", t.update, `into` from t -- ; delete\n where a = 1",
                            "select replace(a, 'x', 'y'), insert(a, 1, 2, 'z') from t",
                            "select deleted, updates from t", "select /* insert into t; */ 1",
                            "select a[1] from t", "select 'it''s; delete'"})
        for (const SqlServer server : kServers)
            EXPECT_EQ(Verdict(sql, server), "ok") << sql;
}

TEST(QueryGuard, ChangesAreRefusedOnEveryServer) {
    const std::pair<const char*, const char*> kCases[] = {
        {"", ""},
        {" /* nothing */ ; ", ""},
        {"delete from t", "DELETE"},
        {"-- x\n/* y */ Drop table t", "DROP"},
        {"insert into t select 1", "INSERT"},
        {"copy t to program 'rm'", "COPY"},
        {"set x = 1", "SET"},
        {"{call f()}", "{"},
        {"select * into u from t", "INTO"},
        {"select 1into u", "INTO"},
        {"select 1 /*!50000 into outfile 'x' */", "/*!"},
        {"select 1 /*M! into outfile 'x' */", "/*!"},
        {"with x as (delete from t returning a) select * from x", "DELETE"},
        {"with x as materialized(insert/**/into t values (1) returning 1) select 1", "INSERT"},
        {"with x as (select 1) update t set a = 1", "UPDATE"},
        {"with x as (select 1) delete from t", "DELETE"},
        {"explain analyze delete from t", "DELETE"},
        {"select * from t for update", "UPDATE"},
        {"select 1; select 2", "?"},
        {"select 1; delete from t", "?"},
        {"select '' ; delete from t -- '", "?"},
        {"select 1 drop table t", "DROP"}, // two statements on some servers
        {"select \"a\" ; delete from t", "?"}};
    for (const auto& [sql, verdict] : kCases)
        for (const SqlServer server : kServers)
            EXPECT_EQ(Verdict(sql, server), verdict) << sql;
}

/// The same text is a query on one server and two statements on another. Where a server has several
/// modes, or is not known, every way to read the text must find a query.
TEST(QueryGuard, ServersReadTextsInTheirOwnWays) {
    const struct {
        const char* sql;
        const char* postgreSql;
        const char* mySql;
        const char* other;
    } kCases[] = {{"select 'a\\'; delete from t -- '", "?", "?", "?"},
                  {"select E'a\\'; delete from t -- '", "ok", "?", "?"},
                  {"select 'a\\' ' ; delete from t -- '", "ok", "?", "?"},
                  {"select $$; delete from t$$", "ok", "?", "?"},
                  {"select $x$ $$; ' $x$, 1", "ok", "?", "?"},
                  {"select 1 /* /* */ ; delete from t -- */", "ok", "?", "?"},
                  {"select 1 --1; delete from t", "ok", "?", "?"},
                  {"select 1 # ; delete from t", "?", "ok", "?"},
                  {"select a from [t;u]", "?", "?", "?"},
                  {"select q'[']' from t -- ; delete", "ok", "ok", "ok"},
                  {"select 1 backup database x to disk = 'y'", "ok", "ok", "BACKUP"}};
    for (const auto& [sql, postgreSql, mySql, other] : kCases) {
        EXPECT_EQ(Verdict(sql, SqlServer::PostgreSql), postgreSql) << sql;
        EXPECT_EQ(Verdict(sql, SqlServer::MySql), mySql) << sql;
        EXPECT_EQ(Verdict(sql, SqlServer::Other), other) << sql;
    }
    EXPECT_EQ(ServerOf("PostgreSQL"), SqlServer::PostgreSql);
    EXPECT_EQ(ServerOf("MariaDB"), SqlServer::MySql);
    EXPECT_EQ(ServerOf("Microsoft SQL Server"), SqlServer::Other);
}

/// Statements by their texts; one that has not ended has "..." after it.
std::vector<std::string> Split(const std::string& sql, SqlServer server) {
    std::vector<std::string> texts;
    for (const SqlStatement& statement : SplitStatements(sql, server))
        texts.push_back(sql.substr(statement.begin, statement.text.size()) +
                        (statement.isEnded ? "" : "..."));
    return texts;
}

TEST(QueryGuard, StatementsEndWhereTheServerEndsThem) {
    using Texts = std::vector<std::string>;
    const SqlServer sqlite = SqlServer::Sqlite;
    EXPECT_EQ(Split("select 1; select 2", sqlite), (Texts{"select 1;", " select 2..."}));
    EXPECT_EQ(Split(" ;; -- a; b\n/* ; */ ;", sqlite), Texts());
    EXPECT_EQ(Split("select ';', \";\", `;`, [;] /* ; */ -- ;\n;", sqlite).size(), 1u);
    EXPECT_EQ(Split("select 'it''s; open", sqlite), Texts{"select 'it''s; open..."});
    EXPECT_EQ(Split("/* open ;", sqlite), Texts{"/* open ;..."});
    EXPECT_EQ(Split("select 1; -- the end", sqlite), Texts{"select 1;"});
    const std::string trigger =
        "create temp trigger a after insert on t begin select case 1 when 2 "
        "then 3 end; select 4; /* x */ end;";
    EXPECT_EQ(Split(trigger + " select 5;", sqlite), (Texts{trigger, " select 5;"}));
    EXPECT_EQ(Split("create table trigger_(a); select 5;", sqlite).size(), 2u);
    EXPECT_EQ(Split("select $$;$$; select 2;", SqlServer::PostgreSql).size(), 2u);
    EXPECT_EQ(Split("select 'a\\';'; select 2;", SqlServer::MySql).size(), 2u);
}

} // namespace
} // namespace vnquery

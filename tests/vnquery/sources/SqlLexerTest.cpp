#include "examples/vnquery/sources/SqlLexer.h"

#include <gtest/gtest.h>

namespace vnquery {
namespace {

/// One letter for each token: w(ord), n(umber), s(tring), q(uoted name), c(omment), symbols
/// themselves; then what is still open.
std::string Kinds(const std::string& sql, SqlServer server) {
    std::string kinds;
    std::string opener;
    for (const SqlToken& token : LexSql(sql, server)) {
        kinds += token.kind == SqlTokenKind::Symbol ? sql[token.begin]
                                                    : "wnsqc"[static_cast<int>(token.kind)];
        opener = token.opener;
    }
    return kinds + opener;
}

TEST(SqlLexer, EachServerHasItsOwnTokens) {
    const struct {
        const char* sql;
        const char* sqlite;
        const char* postgreSql;
        const char* mySql;
    } kCases[] = {{"select 1.5, Größe$x", "wn.n,w", "wn.n,w", "wn.n,w"},
                  {"a\"b\"`c`[d]'e'", "wqqqs", "wqq[w]s", "wsq[w]s"},
                  {"--1\n2 # 3 'x", "cn#ns'", "cn#ns'", "--nnc"},
                  {"/* /* */ */ a", "c*/w", "cw", "c*/w"},
                  {"/* /* ", "c/*", "c/*/*", "c/*"},
                  {"'a\\' b", "sw", "sw", "s'"},
                  {"E'a\\' b", "wsw", "sE'", "ws'"},
                  {"$x$ ' $y$", "$ws'", "s$x$", "$ws'"},
                  {"'it''s", "s'", "s'", "s'"},
                  {"[a", "q[", "[w", "[w"},
                  {":a &B ::int", ":w&w::w", ":w&w::w", ":w&w::w"},
                  {"-- open", "c", "c", "c"}};
    for (const auto& [sql, sqlite, postgreSql, mySql] : kCases) {
        EXPECT_EQ(Kinds(sql, SqlServer::Sqlite), sqlite) << sql;
        EXPECT_EQ(Kinds(sql, SqlServer::PostgreSql), postgreSql) << sql;
        EXPECT_EQ(Kinds(sql, SqlServer::MySql), mySql) << sql;
    }
}

/// Line by line with the openers as in one piece: what the highlighter relies on.
TEST(SqlLexer, TextGoesOnAfterItsOpener) {
    const std::string sql = "select 'a''\n''b', $t$ '\n$t$ /* /* \n */ \n */ \"c\n\" -- d\n e";
    for (const SqlServer server : {SqlServer::Sqlite, SqlServer::PostgreSql, SqlServer::MySql}) {
        std::string kinds(sql.size(), ' ');
        std::string expected = kinds;
        const auto mark = [&](std::string& where, const SqlToken& token, std::size_t begin,
                              std::size_t end) {
            for (std::size_t at = begin; at < end; ++at)
                where[at] = sql[at] == '\n' ? ' ' : "wnsqcy"[static_cast<int>(token.kind)];
        };
        for (const SqlToken& token : LexSql(sql, server))
            mark(expected, token, token.begin, token.end);
        std::string opener;
        for (std::size_t at = 0; at < sql.size();) {
            const std::size_t end = std::min(sql.find('\n', at), sql.size() - 1) + 1;
            const std::size_t before = opener.size();
            const std::vector<SqlToken> tokens = LexSql(opener + sql.substr(at, end - at), server);
            opener.clear();
            for (const SqlToken& token : tokens) {
                mark(kinds, token, at + std::max(token.begin, before) - before,
                     at + token.end - before);
                opener = token.opener;
            }
            at = end;
        }
        EXPECT_EQ(kinds, expected);
    }
}

} // namespace
} // namespace vnquery

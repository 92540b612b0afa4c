#include "examples/vnquery/sources/SqlFormat.h"
#include "examples/vnquery/sources/SqlCompletion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vnquery {
namespace {

TEST(SqlFormat, ClausesBeginLinesAndTheRestStays) {
    const std::pair<const char*, const char*> kCases[] = {
        {"", ""},
        {"select a,b  from t where a=1 order by b limit 2;select 1",
         "SELECT a,b\nFROM t\nWHERE a=1\nORDER BY b\nLIMIT 2;\nSELECT 1"},
        {"select * from a left outer join b using (x) natural left join c cross join d",
         "SELECT *\nFROM a\nLEFT OUTER JOIN b USING (x)\nNATURAL LEFT JOIN c\nCROSS JOIN d"},
        {"select left(a, 1), extract(year from d) from (select 1 from t where a in (1, 2)) x",
         "SELECT LEFT(a, 1), extract(year FROM d)\nFROM (SELECT 1\n    FROM t\n    WHERE a IN (1, "
         "2)) x"},
        {"select 'from  x', \"where\" -- from  y\nfrom t /* where\n  from */ where 1",
         "SELECT 'from  x', \"where\" -- from  y\nFROM t /* where\n  from */\nWHERE 1"},
        {"select a,\n\n\n   b\n  from t", "SELECT a,\n    b\nFROM t"},
        {"select :from, &where, t.order, from.x, @set",
         "SELECT :from, &where, t.order, from.x, @set"},
        {"delete from t where a is distinct from b", "DELETE FROM t\nWHERE a IS DISTINCT FROM b"},
        {"insert into t values (1) -- x\n; -- y\n\n\nupdate t set a = 1\n",
         "INSERT INTO t\nVALUES (1) -- x\n; -- y\nUPDATE t\nSET a = 1\n"},
        {"select sum(a) over (partition by b order by c) from t union all select 'open",
         "SELECT sum(a) OVER (PARTITION BY b ORDER BY c)\nFROM t\nUNION ALL\nSELECT 'open"}};
    for (const auto& [sql, expected] : kCases) {
        EXPECT_EQ(FormatSql(sql, SqlServer::Sqlite), expected);
        EXPECT_EQ(FormatSql(expected, SqlServer::Sqlite), expected);
    }
}

TEST(SqlFormat, CommentsAreSetAndTakenAway) {
    EXPECT_EQ(ToggleSqlComment("a\n\n  b"), "-- a\n\n--   b");
    EXPECT_EQ(ToggleSqlComment("-- a\n\n--   b"), "a\n\n  b");
    EXPECT_EQ(ToggleSqlComment("  --a\nb"), "--   --a\n-- b");
    EXPECT_EQ(ToggleSqlComment("  --a"), "  a");
    EXPECT_EQ(ToggleSqlComment(""), "");
}

class SqlCompletionTest : public testing::Test {
protected:
    static std::shared_ptr<const Catalog> Make(SqlServer server) {
        const auto catalog = std::make_shared<Catalog>(Catalog{server, {}});
        catalog->tables = {{"public", "film", false, false},
                           {"public", "Film Actor", false, false},
                           {"other", "film", true, true}};
        catalog->tables[0].columns = {{"id", "int", ""}, {"title", "text", ""}};
        catalog->tables[1].columns = {{"actor", "int", ""}, {"Order", "int", ""}};
        catalog->tables[2].columns = {{"stranger", "int", ""}};
        return catalog;
    }
    /// "^" stands for the cursor.
    static std::vector<std::string> Find(std::string sql,
                                         SqlServer server = SqlServer::PostgreSql) {
        const std::size_t at = sql.find('^');
        sql.erase(at, 1);
        return SqlCompletion(Make(server)).Find(sql, at).words;
    }
};

TEST_F(SqlCompletionTest, NamesSuitTheirPlace) {
    using testing::Contains;
    using testing::ElementsAre;
    using testing::IsEmpty;
    using testing::Not;
    EXPECT_THAT(Find("select * from fi^"), ElementsAre("\"Film Actor\"", "film", "other.film"));
    EXPECT_THAT(Find("select f.^ from film f"), ElementsAre("id", "title"));
    EXPECT_THAT(Find("select F.TI^ from film as f; select 1"), ElementsAre("title"));
    EXPECT_THAT(Find("select o.^ from other.film o"), ElementsAre("stranger"));
    EXPECT_THAT(Find("select other.^"), ElementsAre("film"));
    EXPECT_THAT(Find("select \"Film Actor\".^"), ElementsAre("\"Order\"", "actor"));
    EXPECT_THAT(Find("select `Film Actor`.^", SqlServer::MySql), ElementsAre("`Order`", "actor"));
    EXPECT_THAT(Find("select ti^ from film"), ElementsAre("title"));
    EXPECT_THAT(Find("select ti^ from \"Film Actor\"; select 1 from film"), IsEmpty());
    EXPECT_THAT(Find("select 1; SEL^"), ElementsAre("SELECT"));
    EXPECT_THAT(Find("sel^ect"), ElementsAre("select"));
    EXPECT_THAT(Find("select ^"), Contains("film"));
    EXPECT_THAT(Find("select 'fi^'"), IsEmpty());
    EXPECT_THAT(Find("select 1 -- fi^"), IsEmpty());
    EXPECT_THAT(Find("select 12^"), IsEmpty());
    EXPECT_THAT(Find("x.fi^"), IsEmpty());
    EXPECT_THAT(SqlCompletion().Find("whe", 3).words, ElementsAre("when", "where"));
    // Cut in the middle of a character, and after the end.
    EXPECT_THAT(Find("select '\xC3^\xA4"), IsEmpty());
    EXPECT_THAT(SqlCompletion().Find("", 0).words, Not(IsEmpty()));
}

} // namespace
} // namespace vnquery

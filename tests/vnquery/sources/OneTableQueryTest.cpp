#include "examples/vnquery/sources/OneTableQuery.h"

#include <gtest/gtest.h>

namespace vnquery {
namespace {

TEST(OneTableQuery, IsSplitBeforeItsFrom) {
    const auto query =
        ParseOneTableQuery("select a, 'from' -- from x\n, \"from\" FROM main.[My t] as x "
                           "where a in (1, 2) order by 2 limit 3 ; /* end */ ");
    ASSERT_TRUE(query);
    EXPECT_EQ(query->select, "select a, 'from' -- from x\n, \"from\" ");
    EXPECT_EQ(query->from, "FROM main.[My t] as x where a in (1, 2) order by 2 limit 3 ");
    EXPECT_EQ(query->table, "My t");
    EXPECT_EQ(ParseOneTableQuery("Select * From Film")->table, "Film");
    EXPECT_EQ(ParseOneTableQuery("select * from \"a\"\"b\"")->table, "a\"b");
    EXPECT_EQ(ParseOneTableQuery("select ';' from t;;")->from, "from t");
}

TEST(OneTableQuery, LeavesOthersAlone) {
    for (const char* sql : {"",
                            "select 1",
                            "pragma x",
                            "select * from t, u",
                            "select * from t join u",
                            "select * from t a, t b where a.id = b.id",
                            "select (select v from t) from t",
                            "select * from (select * from t)",
                            "with q as (select * from t) select * from q",
                            "select a from t union select b from t",
                            "select distinct v from t",
                            "select v from t group by v",
                            "select * from f(1)",
                            "select sum(a) over () from t",
                            "select * from 't'",
                            "values (1)",
                            "select a is not distinct from b from t",
                            "select 1; select * from t",
                            "select * from",
                            "select * from t natural left join u",
                            "explain select * from t"})
        EXPECT_FALSE(ParseOneTableQuery(sql)) << sql;
}

TEST(OneTableQuery, NamesAreQuoted) { EXPECT_EQ(QuoteName("a\"b"), "\"a\"\"b\""); }

TEST(OneTableQuery, NormalisedTextKeepsWhatIsQuoted) {
    EXPECT_EQ(NormaliseSql("select  A/**/, 'a  B' -- c\nfrom \"t\""),
              "SELECT A , 'a  B' FROM \"t\"");
    EXPECT_NE(NormaliseSql("select 'a'"), NormaliseSql("select 'A'"));
    EXPECT_NE(NormaliseSql("select 'a'"), NormaliseSql("select \"a\""));
}

} // namespace
} // namespace vnquery

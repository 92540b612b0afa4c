// Edited cells on their way to the table and back.
#include "examples/vnquery/result/PendingEdits.h"

#include "examples/vnquery/result/CellText.h"
#include "examples/vnquery/tasks/Failure.h"

#include "tests/vnquery/EditTest.h"

namespace vnquery {
namespace {

using test::MakeValue;

class PendingEditsTest : public test::EditTest {
protected:
    /// The value of a query with one.
    std::string Ask(const std::string& sql) {
        const auto source = OpenSource(m_connection, sql, SourceUse::ReadOnly);
        ResultSet result(*source);
        result.Fetch(*source, m_progress);
        return result.GetRowCount() == 1 ? FormatCell(result.GetValue(0, 0), {}) : "no row";
    }
};

constexpr char kFilms[] =
    "create table film(id integer primary key, title text not null, length int default 90, "
    "poster blob, double as (length * 2));"
    "insert into film values (1, 'Brazil', 143, x'00'), (2, 'Das Boot', 149, null),"
    "(3, 'Alien', 117, null)";

TEST_F(PendingEditsTest, WhatIsEditable) {
    MakeDatabase(std::string(kFilms) +
                 ";create view v as select * from film;"
                 "create table k(a text, b text, v text, primary key (a, b)) without rowid;"
                 "insert into k values ('a', 'b', 'v');");
    Query("select id, title, length + 0, double, poster, rowid from film");
    EXPECT_EQ(m_plan.readOnly, ReadOnlyReason::None);
    const ReadOnlyReason expected[] = {ReadOnlyReason::Key,      ReadOnlyReason::None,
                                       ReadOnlyReason::Computed, ReadOnlyReason::Computed,
                                       ReadOnlyReason::None,     ReadOnlyReason::Key};
    for (std::size_t i = 0; i < std::size(expected); ++i)
        EXPECT_EQ(m_plan.GetReadOnlyReason(i), expected[i]) << i;
    EXPECT_FALSE(m_plan.columns[1].isNullable);

    for (const char* sql :
         {"select * from v", "select title from film union select 'x'",
          "select a.title from film a, film b", "select count(*) from film", "select 1"}) {
        Query(sql);
        EXPECT_NE(m_plan.GetReadOnlyReason(0), ReadOnlyReason::None) << sql;
    }
    Query("select a, v from k");
    EXPECT_EQ(m_plan.GetReadOnlyReason(1), ReadOnlyReason::NoKey);
    Query("select b, v, a from k");
    EXPECT_EQ(m_plan.GetReadOnlyReason(1), ReadOnlyReason::None);
    Set(0, 1, "w");
    Write();
    EXPECT_EQ(Ask("select v from k"), "w");
}

TEST_F(PendingEditsTest, ValuesAreWrittenAndReadBackAsTheTableHasThem) {
    MakeDatabase(kFilms);
    Query("select title, length, poster from film order by title desc");
    Set(1, 0, "Tr\xC3\xA4ume");
    Set(0, 1, "100"); // a text for an integer column
    const std::string bytes = test::SomeBytes(3000000, 5);
    Set(2, 2, bytes, Value::Type::Binary);
    m_edits.Set({2, 1}, {true, {}}, m_result);
    Set(0, 0, "Das Boot"); // what it is already
    EXPECT_EQ(m_edits.GetCount(), 4u);
    EXPECT_EQ(m_edits.GetRowCount(), 3u);

    Write(false);
    EXPECT_EQ(Ask("select group_concat(title) from film"), "Brazil,Das Boot,Alien");
    AcceptReport(Write(), m_result, m_edits);
    EXPECT_TRUE(m_edits.IsEmpty());
    EXPECT_EQ(Ask("select typeof(length) || length from film where id = 2"), "integer100");
    EXPECT_EQ(m_result.GetValue(0, 1).GetType(), Value::Type::Number);
    EXPECT_EQ(m_result.GetValue(2, 1).GetBytes(), "90");
    EXPECT_EQ(Ask("select title from film where id = 1"), "Tr\xC3\xA4ume");
    Query("select poster from film where id = 3");
    EXPECT_EQ(m_result.GetValue(0, 0).GetBytes(), bytes);
}

TEST_F(PendingEditsTest, WhatSomebodyElseChangedIsNotOverwrittenUnseen) {
    MakeDatabase(kFilms);
    Query("select title, poster from film order by id");
    Set(0, 0, "mine 1");
    Set(1, 0, "mine 2");
    Set(2, 0, "mine 3");
    MakeDatabase("update film set title = 'theirs' where id = 2; delete from film where id = 3");
    WriteReport report = Write();
    ASSERT_EQ(report.written.size(), 1u);
    ASSERT_EQ(report.conflicts.size(), 1u);
    EXPECT_EQ(report.conflicts[0].now.GetBytes(), "theirs");
    EXPECT_EQ(report.lostRows, (std::vector<CellPlace>{{2, 0}}));
    AcceptReport(std::move(report), m_result, m_edits);
    EXPECT_EQ(Ask("select title from film where id = 2"), "theirs");
    EXPECT_EQ(m_edits.GetCount(), 1u);
    report = Write(); // seen, and wanted all the same
    EXPECT_EQ(report.written.size(), 1u);
    EXPECT_EQ(Ask("select title from film where id = 2"), "mine 2");
}

TEST_F(PendingEditsTest, ARefusalUndoesAll) {
    MakeDatabase(std::string(kFilms) + "; create unique index i on film(title)");
    Query("select title from film order by id");
    Set(0, 0, "new");
    Set(1, 0, "Alien");
    try {
        Write();
        FAIL() << "two films with one title";
    } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.what()).find("UNIQUE"), std::string::npos);
    }
    EXPECT_EQ(Ask("select title from film where id = 1"), "Brazil");
    EXPECT_EQ(m_edits.GetCount(), 2u);
}

} // namespace
} // namespace vnquery

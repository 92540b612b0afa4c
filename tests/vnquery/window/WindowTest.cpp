// Running queries in the window, and the ways to look at their results.
#include "tests/vnquery/window/WindowRun.h"

#include <QApplication>

namespace vnquery::test {
namespace {

constexpr char kNumbers[] =
    "create table n(i integer, r real, t text); insert into n values (10, 2.5, 'b'), (9, 10.25, "
    "'A'), (null, null, null), (100, -1.0, 'a')";

TEST_F(WindowTest, AQueryIsTypedAndRunByKeys) {
    MakeDatabase(kNumbers);
    Open();
    Type("select t from n");
    Key(Qt::Key_F5);
    WaitFor([&] { return !View().IsBusy(); });
    ASSERT_EQ(List().GetCount(), 4);
    EXPECT_EQ(Cell(0, 0), "b");
    EXPECT_EQ(Status().substr(0, 6), "4 rows");
    EXPECT_EQ(ToString(Window().GetPaneText(0)), "Row 1 of 4");
    Key(Qt::Key_Down);
    EXPECT_EQ(ToString(Window().GetPaneText(0)), "Row 2 of 4");
    Key(Qt::Key_T, Qt::ControlModifier);
    Type("select 1");
    Key(Qt::Key_Return, Qt::ControlModifier);
    WaitFor([&] { return !View().IsBusy(); });
    EXPECT_EQ(List().GetCount(), 1);
}

TEST_F(WindowTest, ColumnsSortByTheirTypes) {
    MakeDatabase(kNumbers);
    Open("select i, r, t from n");
    const auto column = [&](int which) {
        std::string text;
        for (int row = 0; row < List().GetCount(); ++row)
            text += Cell(row, which) + " ";
        return text;
    };
    List().Sort(0);
    EXPECT_EQ(column(0), "- 9 10 100 ");
    List().Sort(1);
    EXPECT_EQ(column(1), "- -1.0 2.5 10.25 ");
    List().Sort(1);
    EXPECT_EQ(column(1), "10.25 2.5 -1.0 - ");
    List().Sort(2);
    EXPECT_EQ(column(2), "- A a b ");
    // Rows stay together, in the list and in the document.
    EXPECT_EQ(column(0), "- 9 100 10 ");
    EXPECT_EQ(Document().GetCellText(3, 0) + Document().GetCellText(3, 1) + "b", "102.5b");
    // Texts in a column of numbers come last, those among them that a reader of numbers would take.
    MakeDatabase("create table m(i integer); insert into m values (3), ('nan'), (1), ('x'), (2)");
    Open("select i from m");
    List().Sort(0);
    EXPECT_EQ(column(0), "1 2 3 nan x ");
}

/// Widths, order and sort come back with the query, in a new window too.
TEST_F(WindowTest, TheLayoutIsKept) {
    MakeDatabase(kNumbers);
    Open("select i, r, t from n");
    List().SetColumnWidth(0, 123);
    List().SetCurrentCell(0, 2);
    View().MoveColumn(-1);
    List().Sort(0);
    List().Sort(0);
    Window().SendMessage(WM_CLOSE);
    Open("SELECT i,r,t FROM n");
    EXPECT_EQ(List().GetColumnWidth(0), 123);
    EXPECT_EQ(ToString(List().GetColumnName(1)), "t");
    EXPECT_EQ(Cell(0, 0) + Cell(0, 1) + Cell(0, 2), "100a-1.0");
    View().ResetColumns();
    EXPECT_EQ(ToString(List().GetColumnName(1)), "r");
}

TEST_F(WindowTest, FailuresAreToldAndLeaveTheWindowUsable) {
    MakeDatabase(kNumbers);
    Open();
    m_answers.m_answers = {IDOK, IDOK, IDOK};
    RunQuery("selec");
    RunQuery("  ;");
    RunQuery("delete from n");
    ASSERT_EQ(m_answers.m_texts.size(), 3u);
    EXPECT_NE(m_answers.m_texts[0].find("syntax error"), std::string::npos);
    EXPECT_EQ(m_answers.m_texts[0][0], 'C');
    EXPECT_NE(m_answers.m_texts[1].find("no query"), std::string::npos);
    RunQuery("select count(*) from n");
    EXPECT_EQ(Cell(0, 0), "4");
    // The rows before a failure are shown.
    m_answers.m_answers = {IDOK};
    RunQuery("select abs(column1) from (values (1), (2), (-9223372036854775807 - 1))");
    EXPECT_EQ(List().GetCount(), 2);
    EXPECT_EQ(Status(), "The query failed after 2 rows; these are shown.");
}

TEST_F(WindowTest, WhatTheLibraryThrowsInAMessageIsShown) {
    m_answers.m_answers = {IDOK};
    EXPECT_EQ(
        TellFailures([]() -> LRESULT { throw new CCacheException(CCacheException::kWriteFailed); }),
        0);
    ASSERT_EQ(m_answers.m_texts.size(), 1u);
    EXPECT_NE(m_answers.m_texts[0].find("swap file"), std::string::npos) << m_answers.m_texts[0];
}

/// The loop turns while 100,000 rows come, and Escape ends a query without an end.
TEST_F(WindowTest, LongResultsLeaveTheWindowAlive) {
    MakeDatabase(kNumbers);
    Open();
    const std::string rows = "with recursive c(x) as (select 1 union all select x + 1 from c";
    View().SetSql(rows + " limit 100000) select x, 'row ' || x, x * 1.5 from c");
    View().Run();
    int turns = 0;
    WaitFor([&] {
        ++turns;
        return !View().IsBusy();
    });
    EXPECT_EQ(List().GetCount(), 100000);
    EXPECT_GT(turns, 1);
    EXPECT_EQ(Cell(99999, 1), "row 100000");

    View().SetSql(rows + ") select sum(x) from c");
    View().FocusSql();
    Key(Qt::Key_F5);
    EXPECT_TRUE(View().IsBusy());
    Key(Qt::Key_Escape);
    WaitFor([&] { return !View().IsBusy(); });
    EXPECT_NE(Status().find("Cancelled"), std::string::npos) << Status();
}

TEST_F(WindowTest, ClosingWhileAQueryRuns) {
    MakeDatabase(kNumbers);
    Open();
    View().SetSql(
        "with recursive c(x) as (select 1 union all select x + 1 from c) select x from c");
    View().Run();
    Pump();
    Window().SendMessage(WM_CLOSE);
    EXPECT_EQ(Window().GetSafeHwnd(), nullptr);
}

TEST_F(WindowTest, AThousandColumnsAndSeparatorsInValues) {
    MakeDatabase(kNumbers);
    std::string sql = "select char(31) || 'x' || char(9), 0";
    for (int i = 1; i < 999; ++i)
        sql += ", " + std::to_string(i);
    Open(sql);
    ASSERT_EQ(List().GetNumColumns(), 1000);
    EXPECT_EQ(Cell(0, 0), "\\x1Fx\\t");
    EXPECT_EQ(Cell(0, 999), "998");
}

TEST_F(WindowTest, AFileDroppedOnTheWindowIsOpened) {
    MakeDatabase(kNumbers);
    Open("select * from n");
    Window().Connect({File("other.sqlite"), ""});
    EXPECT_EQ(GetText(Window()), File("other.sqlite") + " - vnquery");
    m_answers.m_answers = {IDOK};
    RunQuery("select 1");
    EXPECT_NE(m_answers.m_texts.back().find("no such file"), std::string::npos);
}

TEST_F(WindowTest, HelpLooksForItsPages) {
    MakeDatabase(kNumbers);
    Open();
    m_answers.m_answers = {IDOK}; // the test has no help folder beside it, and is told so
    Key(Qt::Key_F1);
    ASSERT_EQ(m_answers.m_texts.size(), 1u);
    EXPECT_NE(m_answers.m_texts[0].find("vnquery_window_test.ind"), std::string::npos);
}

} // namespace
} // namespace vnquery::test

// Running queries in the window, and the ways to look at their results.
#include "tests/vnquery/window/WindowRun.h"

#include "examples/vnquery/window/Guard.h"
#include "examples/vnquery/window/IsolatingDelegate.h"
#include "examples/vnquery/window/Translation.h"

#include "vnbytstr/CacheException.h"
#include "vnbytstr/GlobalVars.h"

#include <QApplication>
#include <QLabel>

namespace vnquery::test {
namespace {

constexpr char kNumbers[] =
    "create table n(i integer, r real, t text); insert into n values (10, 2.5, 'b'), (9, 10.25, "
    "'A'), (null, null, null), (100, -1.0, 'a')";

TEST_F(WindowTest, AQueryIsTypedAndRunByKeys) {
    MakeDatabase(kNumbers);
    Open();
    const auto Rows = [&] { return Window().findChild<QLabel*>("rows")->text().toStdString(); };
    Type("select t from n");
    Key(Qt::Key_F5);
    WaitFor([&] { return !Page().IsBusy(); });
    ASSERT_EQ(List().GetCount(), 4);
    EXPECT_EQ(Cell(0, 0), "b");
    EXPECT_EQ(Status().substr(0, 6), "4 rows");
    EXPECT_EQ(Rows(), "Row 1 of 4");
    Key(Qt::Key_F6);
    Key(Qt::Key_Down);
    EXPECT_EQ(Rows(), "Row 2 of 4");
    Key(Qt::Key_T, Qt::ControlModifier);
    Type("; select 1");
    Key(Qt::Key_Return, Qt::ControlModifier);
    WaitFor([&] { return !Page().IsBusy(); });
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
    List().SortBy(0, false);
    EXPECT_EQ(column(0), "- 9 10 100 ");
    List().SortBy(1, false);
    EXPECT_EQ(column(1), "- -1.0 2.5 10.25 ");
    List().SortBy(1, true);
    EXPECT_EQ(column(1), "10.25 2.5 -1.0 - ");
    List().SortBy(2, false);
    EXPECT_EQ(column(2), "- A a b ");
    // Rows stay together, in the list and in the document.
    EXPECT_EQ(column(0), "- 9 100 10 ");
    EXPECT_EQ(Document().GetCellText(3, 0) + Document().GetCellText(3, 1) + "b", "102.5b");
    // The current row keeps its values; the status line says where it is.
    List().SetCurrentCell(3, 0);
    List().SortBy(0, true);
    EXPECT_EQ(Cell(List().GetCurrentRow(), 0), "10");
    WaitFor([&] { return Window().findChild<QLabel*>("rows")->text() == "Row 2 of 4"; });
    // Texts in a column of numbers come last, those among them that a reader of numbers would take.
    MakeDatabase("create table m(i integer); insert into m values (3), ('nan'), (1), ('x'), (2)");
    Open("select i from m");
    List().SortBy(0, false);
    EXPECT_EQ(column(0), "1 2 3 nan x ");
}

/// Widths, order and sort come back with the query, in a new window too.
TEST_F(WindowTest, TheLayoutIsKept) {
    MakeDatabase(kNumbers);
    Open("select i, r, t from n");
    List().SetColumnWidth(ResultList::ListColumnOf(0), 123);
    List().SetCurrentCell(0, 2);
    View().MoveColumn(-1);
    List().HideColumn(ResultList::ListColumnOf(1));
    List().SortBy(0, true);
    List().SetColumnFilter(ResultList::ListColumnOf(0), "<>9");
    List().SetFrozenColumns(2);
    EXPECT_TRUE(Window().close());
    Open("SELECT i,r,t FROM n");
    EXPECT_EQ(List().GetColumnWidth(ResultList::ListColumnOf(0)), 123);
    EXPECT_EQ(List().GetShownColumns(), (std::vector<std::size_t>{0, 2}));
    EXPECT_EQ(List().GetColumnOrder(), (std::vector<int>{0, 1, 3, 2}));
    EXPECT_EQ(List().GetFrozenColumns(), 2);
    WaitFor([&] { return List().IsFilterDone(); });
    EXPECT_EQ(Cell(0, 0) + Cell(1, 0), "10010");
    EXPECT_EQ(List().GetCount(), 2);
    View().ResetColumns();
    EXPECT_EQ(List().GetShownColumns(), (std::vector<std::size_t>{0, 1, 2}));
    WaitFor([&] { return List().GetCount() == 4; });
}

/// They stand above the result, which stays; nothing has to be closed.
TEST_F(WindowTest, FailuresAreToldAndLeaveTheFormerResult) {
    MakeDatabase(kNumbers);
    Open("select t from n");
    const auto failure = [&] { return Page().findChild<QLabel*>("failure"); };
    RunQuery("selec");
    EXPECT_TRUE(failure()->isVisible());
    EXPECT_NE(failure()->text().indexOf("syntax error"), -1) << failure()->text().toStdString();
    EXPECT_EQ(failure()->text()[0], 'C');
    EXPECT_EQ(Cell(0, 0), "b");
    RunQuery("delete from n");
    EXPECT_EQ(Ask("select count(*) from n"), "4");
    RunQuery("select count(*) from n");
    EXPECT_FALSE(failure()->isVisible());
    EXPECT_EQ(Cell(0, 0), "4");
    RunQuery("select json('{') from n"); // known when the first row is computed
    EXPECT_TRUE(failure()->isVisible());
    EXPECT_EQ(Cell(0, 0), "4");
    // The rows before a failure are shown.
    RunQuery("select abs(column1) from (values (1), (2), (-9223372036854775807 - 1))");
    EXPECT_EQ(List().GetCount(), 2);
    EXPECT_EQ(Status(), "The query failed after 2 rows; these are shown.");
}

TEST_F(WindowTest, WhatTheLibraryThrowsInAnEventIsShown) {
    m_answers.m_answers = {QMessageBox::Ok};
    Guard(nullptr, [] { throw new CCacheException(CCacheException::kWriteFailed); });
    ASSERT_EQ(m_answers.m_texts.size(), 1u);
    EXPECT_NE(m_answers.m_texts[0].find("swap file"), std::string::npos) << m_answers.m_texts[0];
}

/// The loop turns while 100,000 rows come, and Escape ends a query without an end.
TEST_F(WindowTest, LongResultsLeaveTheWindowAlive) {
    MakeDatabase(kNumbers);
    Open();
    const std::string rows = "with recursive c(x) as (select 1 union all select x + 1 from c";
    Page().RunSql(rows + " limit 100000) select x, 'row ' || x, x * 1.5 from c");
    int turns = 0;
    WaitFor([&] {
        ++turns;
        return !Page().IsBusy();
    });
    EXPECT_EQ(List().GetCount(), 100000);
    EXPECT_GT(turns, 1);
    EXPECT_EQ(Cell(99999, 1), "row 100000");

    Page().GetEditor().setPlainText(QString::fromStdString(rows + ") select sum(x) from c"));
    Key(Qt::Key_F5);
    EXPECT_TRUE(Page().IsBusy());
    Key(Qt::Key_Escape);
    WaitFor([&] { return !Page().IsBusy(); });
    EXPECT_NE(Status().find("Cancelled"), std::string::npos) << Status();
}

TEST_F(WindowTest, ClosingWhileAQueryRuns) {
    MakeDatabase(kNumbers);
    Open();
    Page().RunSql(
        "with recursive c(x) as (select 1 union all select x + 1 from c) select x from c");
    Pump();
    EXPECT_TRUE(Window().close());
}

TEST_F(WindowTest, AThousandColumnsAndSeparatorsInValues) {
    MakeDatabase(kNumbers);
    std::string sql = "select char(31) || 'x' || char(9), 0";
    for (int i = 1; i < 999; ++i)
        sql += ", " + std::to_string(i);
    Open(sql);
    ASSERT_EQ(List().GetNumColumns(), 1001);
    EXPECT_EQ(Cell(0, 0), "\\x1Fx\\t");
    EXPECT_EQ(Cell(0, 999), "998");
}

/// What cannot be opened is told at once, and no tab pretends that it is open.
TEST_F(WindowTest, OpeningChecksTheDatabase) {
    MakeDatabase(kNumbers);
    m_files.Write("text", "no database");
    Open("select * from n");
    ConnectionPage* const page = &Page();
    for (const std::string& name : {File("missing.sqlite"), File("text"), m_files.Path()}) {
        m_answers.m_answers = {QMessageBox::Ok};
        EXPECT_FALSE(Window().OpenConnection({name, ""}));
        EXPECT_EQ(&Page(), page);
    }
    EXPECT_NE(m_answers.m_texts[0].find("no such file"), std::string::npos);
}

TEST_F(WindowTest, AnotherLanguageTurnsTheWindowAtOnce) {
    MakeDatabase(kNumbers);
    Open("select i, t from n");
    const auto choose = [&](const char* code) {
        SetTextLanguage(code);
        Pump();
    };
    choose("ARE");
    EXPECT_EQ(Window().layoutDirection(), Qt::RightToLeft);
    // Paths keep their slashes at their ends.
    const QString isolated = QStringLiteral("\u2068/tmp/x/\u2069");
    EXPECT_TRUE(Label(IDS_VQ_W_SAVED, {"a", "/tmp/x/"}).contains(isolated));
    EXPECT_EQ(IsolatingDelegate().displayText("/tmp/x/", {}), isolated);
    EXPECT_NE(List().GetExStyle() & WS_EX_LAYOUTRTL, 0u);
    choose("DEU");
    EXPECT_EQ(Window().layoutDirection(), Qt::LeftToRight);
    EXPECT_EQ(List().GetExStyle() & WS_EX_LAYOUTRTL, 0u);
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"), "Abbrechen");
    EXPECT_EQ(Changes(), Text(IDS_VQ_W_NO_CHANGES));
    EXPECT_EQ(std::string(CGlobalVars::Get(CGlobalVars::TLXAO_NLF_LANG)), "Deutsch");
    choose("ENU");
    EXPECT_EQ(Changes(), "No changes");
    EXPECT_EQ(Label(IDS_VQ_W_SAVED, {"a", "/x"}).count(QChar(0x2068)), 0);
}

/// Briefly: the name under which it is saved, if it is.
TEST_F(WindowTest, TitleAndTabSayWhatIsOpen) {
    MakeDatabase(kNumbers);
    Open("select i from n");
    EXPECT_EQ(Window().windowTitle().toStdString(), Database() + "[*] - vnquery");
    ASSERT_TRUE(Window().OpenConnection({Database(), "", "Films [*] & more"}));
    EXPECT_EQ(Window().windowTitle(), "Films [*][*] & more[*] - vnquery");
    const auto* const tabs = Window().centralWidget()->findChild<QTabWidget*>();
    EXPECT_EQ(tabs->tabText(1), "Films [*] && more");
    EXPECT_EQ(tabs->tabToolTip(1).toStdString(), Database());
}

} // namespace
} // namespace vnquery::test

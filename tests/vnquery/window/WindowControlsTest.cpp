// Mouse, keys and signals; transactions; what the parts of the window do together.
#include "tests/vnquery/window/WindowRun.h"

#include "examples/vnquery/console/Process.h"
#include "examples/vnquery/tasks/Interruption.h"
#include "examples/vnquery/window/CatalogTree.h"
#include "examples/vnquery/window/ValuePane.h"

#include "vnbytstr/window/ListBox.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDialog>
#include <QFileDialog>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QTreeView>

namespace vnquery::test {
namespace {

constexpr char kEndless[] =
    "with recursive c(x) as (select 1 union all select x + 1 from c) select sum(x) from c";
constexpr char kNotes[] = "create table note(id integer primary key, t text, b blob);"
                          "insert into note values (1, 'one', zeroblob(100000)), (2, 'two', null)";

class WindowControls : public WindowTest {
protected:
    void OpenNotes() {
        MakeDatabase(kNotes);
        Open("select t, b from note order by id");
        List().SetFocus();
    }
    void RunText(const char* sql) {
        Page().GetEditor().setPlainText(sql);
        Key(Qt::Key_F5);
        WaitFor([&] { return !Page().IsBusy(); });
    }
};

/// Clicks choose cells, also in the row that is selected; only a second click at once edits.
TEST_F(WindowControls, AClickOpensNoEditor) {
    OpenNotes();
    for (const int column : {0, 1, 0, 0}) {
        ClickCell(1, column);
        QTest::qWait(QApplication::doubleClickInterval() + 50);
        EXPECT_EQ(List().GetActiveEditor(), nullptr);
        EXPECT_EQ(List().GetCurrentColumn(), column);
    }
    ClickCell(1, 0, true);
    EXPECT_NE(List().GetActiveEditor(), nullptr);
    Key(Qt::Key_Escape);
    EXPECT_EQ(List().GetActiveEditor(), nullptr);
}

/// A signal closes dialogs and the window, after what is not written has been asked for.
TEST_F(WindowControls, SignalsEndTheWindowInOrder) {
    PrepareProcess();
    OpenNotes();
    List().SetCurrentCell(0, 0);
    Key(Qt::Key_F2);
    Type("new one");
    Key(Qt::Key_Return);
    m_answers.m_answers = {QMessageBox::Cancel};
    QTimer::singleShot(100, [&] { std::raise(SIGTERM); });
    Window().EditVariables(); // ends by itself
    WaitFor([&] { return m_answers.m_answers.empty(); });
    EXPECT_TRUE(Window().isVisible());
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        m_answers.m_answers = {number == SIGTERM ? QMessageBox::Yes : QMessageBox::Cancel};
        std::raise(number);
        WaitFor([&] { return m_answers.m_answers.empty(); });
    }
    WaitFor([&] { return !Window().isVisible(); });
    EXPECT_EQ(Window().GetEndingSignal(), SIGTERM);
    EXPECT_EQ(Ask("select t from note where id = 1"), "new one");
    EXPECT_EQ(InterruptingSignal(), 0);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        std::signal(number, SIG_DFL);
}

/// The program as a whole, while it reads: it says so with its exit code and leaves no file.
TEST_F(WindowControls, ASignalEndsTheProgram) {
    MakeDatabase(kNotes);
    // Else Qt makes itself a folder among the temporary files.
    std::filesystem::permissions(m_files.Path(), std::filesystem::perms::owner_all);
    setenv("XDG_RUNTIME_DIR", m_files.Path().c_str(), 1);
    // What the libraries below the window keep for good is no matter of this program's exit code.
    setenv("LSAN_OPTIONS", "detect_leaks=0", 1);
    const pid_t process =
        Start({VNQUERY_PROGRAM, "--window", "--db", Database(), "--sql",
               "select zeroblob(6000000) union all select * from (" + std::string(kEndless) + ")"});
    while (m_temporary.Names().empty())
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::this_thread::sleep_for(std::chrono::milliseconds(500)); // till its loop runs
    kill(process, SIGTERM);
    EXPECT_EQ(Wait(process).code, 128 + SIGTERM);
    EXPECT_TRUE(m_temporary.Names().empty());
}

TEST_F(WindowControls, ADisplayThatIsNotThereIsToldWithoutACrash) {
    const std::string platform = qgetenv("QT_QPA_PLATFORM").toStdString();
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    const std::string display = qgetenv("DISPLAY").toStdString();
    setenv("DISPLAY", ":4711", 1);
    const RunResult result = Run({"--window"});
    setenv("QT_QPA_PLATFORM", platform.c_str(), 1);
    if (display.empty())
        unsetenv("DISPLAY");
    else
        setenv("DISPLAY", display.c_str(), 1);
    EXPECT_EQ(result.code, 2);
    EXPECT_NE(result.error.find("cannot be reached"), std::string::npos) << result.error;
}

/// Nothing changes before changes are allowed, and nothing is final before Commit.
TEST_F(WindowControls, StatementsChangeTheDatabaseWithCommitOnly) {
    OpenNotes();
    auto* const bar = Page().findChild<QWidget*>("transaction");
    EXPECT_FALSE(bar->isVisible());
    RunText("delete from note");
    EXPECT_EQ(Ask("select count(*) from note"), "2");
    ASSERT_TRUE(Page().AllowChanges(true));
    EXPECT_TRUE(bar->isVisible());
    RunText("insert into note(t) values ('three'), ('four'); delete from note where id = 1;"
            " select count(*) from note");
    EXPECT_EQ(Cell(0, 0), "3"); // sees what is not committed
    EXPECT_EQ(Ask("select count(*) from note"), "2");
    EXPECT_TRUE(Page().HasUncommitted());
    EXPECT_TRUE(Page().GetTitle().endsWith("*"));
    Page().RollBack();
    EXPECT_FALSE(Page().HasUncommitted());
    WaitFor([&] { return Cell(0, 0) == "2" && !Page().IsBusy(); }); // is read again
    RunText("update note set t = 'TWO' where id = 2");
    EXPECT_EQ(Status().substr(0, 16), "Rows changed: 1,") << Status();
    // Closing asks; Cancel stays, No rolls back, Yes commits.
    m_answers.m_answers = {QMessageBox::Cancel};
    EXPECT_FALSE(Window().close());
    m_answers.m_answers = {QMessageBox::Yes};
    EXPECT_TRUE(Page().AllowChanges(false));
    EXPECT_FALSE(bar->isVisible());
    EXPECT_EQ(Ask("select t from note where id = 2"), "TWO");
    ASSERT_TRUE(Page().AllowChanges(true));
    const auto* const tree = Window().findChild<CatalogTree*>();
    RunText("create table more(x)");
    Page().Commit();
    WaitFor([&] { return tree->GetCatalog() && tree->GetCatalog()->tables.size() == 2; });
    // What is written from the result belongs to the transaction, too.
    RunText("select id, t from note");
    View().SetValue({0, 1}, {false, Value(Value::Type::Text, "ONE")});
    m_answers.m_answers = {QMessageBox::Yes};
    EXPECT_TRUE(View().WriteChanges());
    EXPECT_TRUE(Page().findChild<QPushButton*>()->isEnabled());
    Page().RollBack();
    WaitFor([&] { return Cell(0, 1) == "one" && !Page().IsBusy(); });
    RunText("delete from note");
    m_answers.m_answers = {QMessageBox::No};
    EXPECT_TRUE(Window().close());
    EXPECT_EQ(Ask("select count(*) from note"), "2");
}

TEST_F(WindowControls, AFileIsNamedAfterItsColumn) {
    OpenNotes();
    RunText("select t as \"a/b\", t as 'c' from note");
    WithDialog([&] { View().SaveCell(); },
               [](QDialog& dialog) {
                   const auto files = qobject_cast<QFileDialog*>(&dialog)->selectedFiles();
                   EXPECT_TRUE(files.value(0).endsWith("/a_b.txt"));
                   dialog.reject();
               });
}

class RolledBack : public WindowControls {
protected:
    RolledBack() {
        OpenNotes();
        EXPECT_TRUE(Page().AllowChanges(true));
    }
    bool IsOutdated() { return Page().findChild<QWidget*>("outdated")->isVisible(); }
    QPushButton* Refresh() {
        return Page().findChild<QWidget*>("outdated")->findChild<QPushButton*>();
    }
    void WaitForRows(int count) {
        WaitFor([&] { return !Page().IsBusy() && List().GetCount() == count; });
    }
};

/// The result is read again, in the same place.
TEST_F(RolledBack, RowsAreShownNoLonger) {
    RunText("insert into note(t) values ('three'); select id, t from note order by id");
    ASSERT_EQ(List().GetCount(), 3);
    List().SetCurrentCell(1, 1);
    Page().RollBack();
    WaitForRows(2);
    EXPECT_EQ(List().GetCurrentRow(), 1);
    EXPECT_EQ(List().GetCurrentColumn(), 1);
    EXPECT_FALSE(IsOutdated());
    EXPECT_EQ(Status().substr(0, 12), "Rolled back;");
    // Changes that were written into the transaction, when the connection's changes end.
    View().SetValue({1, 1}, {false, Value(Value::Type::Text, "TWO")});
    m_answers.m_answers = {QMessageBox::Yes, QMessageBox::No};
    ASSERT_TRUE(View().WriteChanges());
    EXPECT_EQ(Cell(1, 1), "TWO");
    EXPECT_TRUE(Page().AllowChanges(false));
    WaitFor([&] { return Cell(1, 1) == "two" && !Page().IsBusy(); });
    EXPECT_FALSE(IsOutdated());
    // A closed tab reads nothing any more.
    EXPECT_TRUE(Page().AllowChanges(true));
    RunText("delete from note; select t from note");
    m_answers.m_answers = {QMessageBox::No};
    Window().CloseTab(-1);
    Pump();
    EXPECT_EQ(Window().GetPage(), nullptr);
}

/// What the database undoes by itself: a failure, also between rows, and Escape.
TEST_F(RolledBack, FailuresAndCancellingCountToo) {
    const auto* const failure = Page().findChild<QLabel*>("failure");
    for (const char* sql : {"insert or rollback into note(id) values (2)",
                            "insert or rollback into note(id) values (2) returning id"}) {
        RunText("delete from note where id = 1; select id, t from note");
        ASSERT_EQ(List().GetCount(), 1);
        RunText(sql);
        WaitForRows(2);
        EXPECT_TRUE(failure->isVisible());
        EXPECT_TRUE(failure->text().contains("UNIQUE")) << failure->text().toStdString();
        EXPECT_TRUE(failure->text().contains("not committed")) << failure->text().toStdString();
    }
    RunText("delete from note where id = 1; select id, t from note");
    Page().RunSql(std::string("insert into note(t) ") + kEndless);
    QTest::qWait(50);
    Page().Stop();
    WaitForRows(2);
    EXPECT_TRUE(failure->text().contains("not committed")) << failure->text().toStdString();
}

/// What the user has typed, in cells or in the value pane, is not given up for it.
TEST_F(RolledBack, WhatIsNotWrittenStays) {
    RunText("delete from note where id = 1; select id, t from note order by id");
    View().SetValue({0, 1}, {false, Value(Value::Type::Text, "TWO")});
    Page().RollBack();
    Pump();
    EXPECT_TRUE(IsOutdated());
    EXPECT_EQ(Changes(), "1 change not written");
    EXPECT_EQ(Cell(0, 1), "TWO");
    m_answers.m_answers = {QMessageBox::Yes};
    Refresh()->click();
    WaitForRows(2);
    EXPECT_FALSE(IsOutdated());
    EXPECT_EQ(Cell(0, 1) + Cell(1, 1), "oneTWO");
    EXPECT_TRUE(Page().HasUncommitted());
    List().SetCurrentCell(1, 1);
    Window().ShowValue();
    Type("my ");
    Page().RollBack();
    Pump();
    EXPECT_TRUE(IsOutdated());
    EXPECT_EQ(Cell(1, 1), "my TWO");
    m_answers.m_answers = {QMessageBox::No};
    RunText("select t from note order by id");
    EXPECT_FALSE(IsOutdated());
    EXPECT_EQ(Cell(1, 0), "two");
    // A statement that changed something is not run again.
    RunText("insert into note(t) values ('three') returning t");
    Page().RollBack();
    Pump();
    EXPECT_TRUE(IsOutdated());
    EXPECT_FALSE(Refresh()->isVisible());
    EXPECT_EQ(Ask("select count(*) from note"), "2");
}

TEST_F(WindowControls, HelpThatCannotBeShownIsToldInTheWindow) {
    // The index is named after the program.
    const auto pages =
        std::filesystem::read_symlink("/proc/self/exe").parent_path() / "Help" / "l.ENU";
    std::filesystem::copy_file(pages / "vnquery.ind", pages / "vnquery_window_test.ind",
                               std::filesystem::copy_options::overwrite_existing);
    OpenNotes();
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", m_files.Path().c_str());
    const auto press = [&](const char* opener) {
        if (*opener) {
            m_files.Write("xdg-open", opener);
            std::filesystem::permissions(File("xdg-open"), std::filesystem::perms::owner_all);
        }
        m_answers.m_texts.clear();
        Key(Qt::Key_F1);
    };
    for (const char* opener : {"", "#!/bin/sh\nexit 3\n", "#!/none\n"}) {
        m_answers.m_answers = {QMessageBox::Ok};
        press(opener);
        WaitFor([&] { return m_answers.m_answers.empty(); });
        EXPECT_NE(m_answers.m_texts.at(0).find("contents.htm"), std::string::npos);
        EXPECT_NE(m_answers.m_texts.at(0).find("xdg-utils"), std::string::npos);
    }
    press("#!/bin/sh\nprintf %s \"$1\" > \"$0.out\"\n");
    const auto opened = [&] {
        std::ifstream file(File("xdg-open.out"));
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    WaitFor([&] { return opened().ends_with("/contents.htm"); });
    EXPECT_EQ(opened(), "file://" + (pages / "contents.htm").string());
    Pump();
    // Without the pages.
    std::filesystem::remove(pages / "vnquery_window_test.ind");
    m_answers.m_answers = {QMessageBox::Ok};
    press("");
    EXPECT_NE(m_answers.m_texts.at(0).find("vnquery_window_test.ind"), std::string::npos);
    qputenv("PATH", path);
}

TEST_F(WindowControls, NamesInAStatementAreAskedFor) {
    OpenNotes();
    WithDialog([&] { RunText("select t from note where id = :id"); },
               [](QDialog& dialog) {
                   dialog.findChild<QLineEdit*>()->setText("2");
                   dialog.accept();
               });
    EXPECT_EQ(List().GetCount(), 1);
    EXPECT_EQ(Cell(0, 0), "two");
    WithDialog([&] { RunText("select 'no' from note where id = :id"); },
               [](QDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(Cell(0, 0), "two"); // nothing ran
}

TEST_F(WindowControls, TextsAreFoundAndCopied) {
    OpenNotes();
    Key(Qt::Key_F, Qt::ControlModifier);
    Type("TW");
    Key(Qt::Key_Return);
    EXPECT_EQ(List().GetCurrentRow(), 1);
    EXPECT_EQ(List().GetCurrentColumn(), 0);
    View().findChildren<QLineEdit*>().at(1)->setText("T");
    View().Replace();
    EXPECT_EQ(Cell(1, 0), "To");
    View().Undo();
    EXPECT_EQ(Cell(1, 0), "two");
    // All at once after a question, and taken back at once.
    View().findChildren<QLineEdit*>().at(0)->setText("o");
    m_answers.m_answers = {QMessageBox::No, QMessageBox::Yes};
    View().ReplaceAll();
    EXPECT_EQ(Changes(), "No changes");
    View().ReplaceAll();
    EXPECT_NE(m_answers.m_texts.back().find("Cells: 2"), std::string::npos);
    EXPECT_EQ(Cell(0, 0) + Cell(1, 0), "TnetwT");
    View().Undo();
    EXPECT_EQ(Cell(0, 0) + Cell(1, 0), "onetwo");
    // The rows' numbers are no texts of the result.
    List().SetCurrentCell(1, 0);
    View().findChildren<QLineEdit*>().at(0)->setText("2");
    View().FindNext(true);
    EXPECT_NE(Status().find("not found"), std::string::npos) << Status();
    Key(Qt::Key_Escape);
    const auto clipboard = [] { return QGuiApplication::clipboard()->text().toStdString(); };
    View().Copy(CopyForm::Cell);
    EXPECT_EQ(clipboard(), "two");
    RunText("select id, t, 'a\"b' as q from note order by id desc");
    List().SetFocus();
    Key(Qt::Key_A, Qt::ControlModifier);
    View().Copy(CopyForm::RowsWithHeadings);
    EXPECT_EQ(clipboard(), "id\tt\tq\n2\ttwo\t\"a\"\"b\"\n1\tone\t\"a\"\"b\"\n");
    List().HideColumn(ResultList::ListColumnOf(2));
    List().SortBy(0, false);
    View().Copy(CopyForm::Json);
    EXPECT_EQ(clipboard(), "[\n{\"id\":1,\"t\":\"one\"},\n{\"id\":2,\"t\":\"two\"}\n]\n");
    View().Copy(CopyForm::Insert);
    EXPECT_NE(clipboard().find("VALUES(2,'two');"), std::string::npos) << clipboard();
}

TEST_F(WindowControls, ACutTextHasATip) {
    OpenNotes();
    List().SetColumnWidth(ResultList::ListColumnOf(0), 12);
    QWidget* const list = List().GetWidget();
    RECT rect{};
    List().SendMessage(LB_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&rect));
    const auto tip = [&](int column) {
        CRect heading;
        EXPECT_TRUE(List().GetHeadings()->GetRect(ResultList::ListColumnOf(column), &heading));
        const QPoint place(static_cast<int>(heading.left) + 4, static_cast<int>(rect.top) + 4);
        QHelpEvent event(QEvent::ToolTip, place, list->mapToGlobal(place));
        QApplication::sendEvent(list, &event);
        return QToolTip::text().toStdString();
    };
    EXPECT_EQ(tip(1), "");
    EXPECT_NE(tip(0).find("two"), std::string::npos) << tip(0);
}

/// The pane follows the current cell; what is typed there becomes a change of that cell.
TEST_F(WindowControls, TheValuePaneShowsAndChangesTheCurrentCell) {
    OpenNotes();
    auto* const text = Window().GetValuePane().findChild<QPlainTextEdit*>();
    List().SetCurrentCell(1, 0);
    EXPECT_EQ(text->toPlainText(), "two");
    Key(Qt::Key_F2, Qt::ShiftModifier);
    ASSERT_TRUE(text->hasFocus());
    EXPECT_FALSE(text->textCursor().hasSelection());
    Key(Qt::Key_End, Qt::ControlModifier);
    Key(Qt::Key_Return);
    Type("lines");
    Key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(Changes(), "1 change not written");
    EXPECT_EQ(Cell(1, 0), "two \u2026 [9 B]");
    m_answers.m_answers = {QMessageBox::Yes};
    Key(Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(Ask("select t from note where id = 2"), "two\nlines");
    // What was typed goes to its own cell when another one is chosen, and with Write.
    List().SetCurrentCell(0, 0);
    Window().ShowValue();
    Type("x");
    List().SetCurrentCell(1, 0);
    EXPECT_EQ(Cell(0, 0), "xone");
    EXPECT_EQ(Cell(1, 0), "two \u2026 [9 B]");
    List().SetCurrentCell(0, 0);
    Window().ShowValue();
    Type("y");
    m_answers.m_answers = {QMessageBox::Yes};
    Window().WriteChanges();
    EXPECT_EQ(Ask("select t from note where id = 1"), "yxone");
}

/// Nor is it lost where the column does not take it, or while rows come or are sorted.
TEST_F(WindowControls, WhatIsTypedInTheValuePaneStays) {
    MakeDatabase("create table n(id integer primary key, x int, t text);"
                 "insert into n values (1, 10, 'one'), (2, 20, 'two')");
    Open("select x, t from n order by id");
    auto* const text = Window().GetValuePane().findChild<QPlainTextEdit*>();
    List().SetCurrentCell(0, 0);
    Window().ShowValue();
    Type("a");
    m_answers.m_answers = {QMessageBox::Ok};
    List().SetCurrentCell(1, 1);
    EXPECT_EQ(text->toPlainText(), "a10");
    Window().GetValuePane().UndoDraft();
    List().SetCurrentCell(1, 0);
    List().SetCurrentCell(1, 1);
    Window().ShowValue();
    Type("my ");
    List().SortBy(0, true); // the cell is another row's place then
    WaitFor([&] { return !Page().IsBusy(); });
    View().Undo();
    EXPECT_EQ(text->toPlainText(), "my two");
    List().SetCurrentCell(1, 0);
    EXPECT_EQ(Cell(0, 1), "my two");
    m_answers.m_answers = {QMessageBox::No};
    Page().RunSql(kEndless);
    EXPECT_TRUE(text->isReadOnly());
    Page().Stop();
    WaitFor([&] { return !Page().IsBusy(); });
}

/// Home and End go through the row, with Ctrl to the first and last cell; a menu opens by key and
/// once by mouse, and leaves the status line alone.
TEST_F(WindowControls, KeysGoEverywhere) {
    OpenNotes();
    const auto place = [&] { return std::pair(List().GetCurrentRow(), List().GetCurrentColumn()); };
    Key(Qt::Key_End);
    EXPECT_EQ(place(), std::pair(0, 1));
    Key(Qt::Key_Home);
    EXPECT_EQ(place(), std::pair(0, 0));
    Key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(place(), std::pair(1, 1));
    const std::string status = Status();
    int menus = 0;
    QTimer closing;
    QObject::connect(&closing, &QTimer::timeout, [&] {
        if (QWidget* const menu = QApplication::activePopupWidget()) {
            ++menus;
            menu->close();
        }
    });
    closing.start(20);
    Key(Qt::Key_F10);
    WaitFor([&] { return menus == 1; });
    EXPECT_EQ(Status(), status);
    QWidget* const list = List().GetWidget();
    const QPoint at(60, 10);
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, list->mapToGlobal(at));
    QApplication::sendEvent(list, &event);
    Pump();
    EXPECT_EQ(menus, 2);
}

TEST_F(WindowControls, TheTreeBrowsesATable) {
    OpenNotes();
    auto* const tree = Window().findChild<CatalogTree*>();
    WaitFor([&] { return tree->GetCatalog() && !tree->GetCatalog()->tables.empty(); });
    Q_EMIT tree->Browse("select * from note");
    WaitFor([&] { return !Page().IsBusy() && List().GetNumColumns() == 4; });
    EXPECT_EQ(Cell(1, 1), "two");
}

} // namespace
} // namespace vnquery::test

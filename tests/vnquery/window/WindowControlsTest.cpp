// Mouse and keys in the window: its buttons, clicks on cells, the zoom as it opens.
#include "tests/vnquery/window/WindowRun.h"

#include "examples/vnquery/console/Process.h"
#include "examples/vnquery/tasks/Interruption.h"
#include "examples/vnquery/window/Commands.h"
#include "vnbytstr/window/Edit.h"

#include <csignal>
#include <thread>

#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTimer>

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
    }
    /// Does something that opens a dialog, whose class the window library need not know, and
    /// closes that.
    bool OpensDialog(const std::function<void()>& action) {
        bool came = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (QWidget* const dialog = QApplication::activeModalWidget()) {
                came = true;
                dialog->close();
            }
        });
        timer.start(30);
        action();
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
        while (!came && std::chrono::steady_clock::now() < end)
            AfxPumpMessages(20);
        Pump();
        Window().GetWidget()->activateWindow();
        Pump();
        return came;
    }
    CRect PlaceOf(CWnd& control) {
        CRect rect;
        control.GetWindowRect(rect);
        return rect;
    }
};

TEST_F(WindowControls, TheFourButtonsWorkByMouseAndByKey) {
    OpenNotes();
    const struct {
        unsigned command;
        int key;
    } kDialogs[] = {{kCmdOpen, Qt::Key_O}, {kCmdConnect, Qt::Key_C}};
    for (const auto& [command, key] : kDialogs) {
        EXPECT_TRUE(OpensDialog([&] { ClickControl(static_cast<int>(command)); })) << command;
        EXPECT_TRUE(OpensDialog([&] { Key(key, Qt::AltModifier); })) << command;
        View().GetDlgItem(static_cast<int>(command))->SetFocus();
        EXPECT_TRUE(OpensDialog([&] { Key(Qt::Key_Space); })) << command;
    }
    for (const bool byMouse : {true, false}) {
        View().SetSql("select id from note");
        byMouse ? ClickControl(kCmdRun) : Key(Qt::Key_R, Qt::AltModifier);
        WaitFor([&] { return !View().IsBusy() && Cell(1, 0) == "2"; });
        View().SetSql(kEndless);
        View().Run();
        byMouse ? ClickControl(kCmdStop) : Key(Qt::Key_A, Qt::AltModifier);
        WaitFor([&] { return !View().IsBusy(); });
        EXPECT_NE(Status().find("Cancelled"), std::string::npos) << Status();
    }
}

TEST_F(WindowControls, TheBarIsThereWhileAQueryRuns) {
    OpenNotes();
    m_window.reset();
    Open();
    QWidget* const bar = View().GetDlgItem(kIdProgress)->GetWidget();
    EXPECT_FALSE(bar->isVisible());
    View().SetSql(kEndless);
    View().Run();
    EXPECT_TRUE(bar->isVisible());
    View().Stop();
    WaitFor([&] { return !View().IsBusy(); });
    EXPECT_FALSE(bar->isVisible());
}

/// Clicks choose cells, also in the row that is selected; only a second click at once edits.
TEST_F(WindowControls, AClickOpensNoEditor) {
    OpenNotes();
    for (const int column : {0, 1, 0, 0}) {
        ClickCell(1, column);
        QTest::qWait(QApplication::doubleClickInterval() + 50);
        EXPECT_EQ(List().GetActiveEditor(), nullptr);
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        EXPECT_EQ(List().GetCurrentColumn(), column);
    }
    ClickCell(1, 0, true);
    EXPECT_NE(List().GetActiveEditor(), nullptr);
    Key(Qt::Key_Escape);
}

/// A signal closes dialogs and the window, after what is not written has been asked for.
TEST_F(WindowControls, SignalsEndTheWindowInOrder) {
    PrepareProcess();
    OpenNotes();
    List().SetCurrentCell(0, 0);
    m_answers.m_answers = {IDCANCEL};
    QTimer::singleShot(300, [&] {
        Type("new ");
        std::raise(SIGTERM);
    });
    View().Zoom(); // ends by itself
    WaitFor([&] { return m_answers.m_answers.empty(); });
    EXPECT_NE(Window().GetSafeHwnd(), nullptr); // Cancel
    EXPECT_EQ(Cell(0, 0), "new one");
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        m_answers.m_answers = {number == SIGTERM ? IDYES : IDCANCEL};
        std::raise(number);
        WaitFor([&] { return m_answers.m_answers.empty(); });
    }
    WaitFor([&] { return Window().GetSafeHwnd() == nullptr; });
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

TEST_F(WindowControls, TheZoomOpensWithNothingSelected) {
    OpenNotes();
    for (const int column : {0, 1}) {
        List().SetCurrentCell(0, column);
        WithDialog([&] { View().Zoom(); },
                   [&](CWnd& dialog) {
                       Pump();
                       CWnd* const field = CWnd::GetFocus();
                       ASSERT_NE(field, nullptr);
                       DWORD begin = 1;
                       DWORD end = 2;
                       field->SendMessage(EM_GETSEL, reinterpret_cast<WPARAM>(&begin),
                                          reinterpret_cast<LPARAM>(&end));
                       EXPECT_EQ(begin, end) << column;
                       EXPECT_NE(GetText(*field).find(column == 0 ? "one" : "000010"),
                                 std::string::npos);
                       dialog.SendMessage(WM_COMMAND, IDOK);
                   });
    }
    EXPECT_TRUE(Document().GetEdits().IsEmpty());
}

TEST_F(WindowControls, TheBytesStandAboveTheirButtons) {
    OpenNotes();
    List().SetCurrentCell(0, 1);
    WithDialog([&] { View().Zoom(); },
               [&](CWnd& dialog) {
                   CRect bytes;
                   int checked = 0;
                   for (CWnd* child = dialog.GetWindow(GW_CHILD); child;
                        child = child->GetWindow(GW_HWNDNEXT))
                       if (GetText(*child).find("000010") != std::string::npos)
                           bytes = PlaceOf(*child);
                   for (CWnd* child = dialog.GetWindow(GW_CHILD); child;
                        child = child->GetWindow(GW_HWNDNEXT)) {
                       CRect overlap;
                       if (!child->IsWindowVisible() || PlaceOf(*child) == bytes)
                           continue;
                       ++checked;
                       EXPECT_FALSE(overlap.IntersectRect(bytes, PlaceOf(*child)))
                           << GetText(*child);
                   }
                   EXPECT_GT(checked, 8);
                   dialog.SendMessage(WM_COMMAND, IDCANCEL);
               });
}

} // namespace
} // namespace vnquery::test

// The program's window on an offscreen platform, driven as a user would drive it.
#pragma once

#include "examples/vnquery/window/ConnectionPage.h"
#include "examples/vnquery/window/MainWindow.h"
#include "examples/vnquery/window/ResultView.h"
#include "tests/vnquery/ProgramRun.h"

#include <deque>
#include <functional>
#include <memory>

#include <QMessageBox>
#include <QTimer>

namespace vnquery::test {

/// Presses buttons of message boxes by a list; a box that is not expected fails the test.
class Answers {
public:
    Answers();

    std::deque<QMessageBox::StandardButton> m_answers; ///< to the next boxes
    std::function<void()> m_meanwhile; ///< what happens while a box waits for its answer
    std::vector<std::string> m_texts;  ///< of the boxes that came

private:
    void Look();
    QTimer m_timer;
};

class WindowTest : public ProgramTest {
protected:
    WindowTest();
    ~WindowTest() override;

    /// Opens the window on the database and runs the query, if there is one.
    void Open(const std::string& sql = {});
    void RunQuery(const std::string& sql);
    /// Handles events until the condition holds; fails after ten seconds.
    void WaitFor(const std::function<bool()>& condition);
    void Pump();
    void ActivateAgain();

    /// A key with its modifiers to whatever has the focus.
    void Key(int qtKey, int qtModifiers = 0);
    void Type(const std::string& text);
    /// Clicks on a cell of the result: a row of the list and a column of the result.
    void ClickCell(int row, int column, bool twice = false);
    /// What the list shows.
    std::string Cell(int row, int column);
    std::string Status();
    std::string Changes();
    /// The first value of a query's result.
    std::string Ask(const std::string& sql);
    /// Does something while a dialog is open: `inside` gets the dialog, and must close it.
    void WithDialog(const std::function<void()>& open, const std::function<void(QDialog&)>& inside);

    MainWindow& Window() { return *m_window; }
    ConnectionPage& Page() { return *m_window->GetPage(); }
    ResultView& View() { return Page().GetResult(); }
    ResultList& List() { return View().GetList(); }
    ResultDocument& Document() { return View().GetDocument(); }

    Answers m_answers;
    std::unique_ptr<MainWindow> m_window;
};

} // namespace vnquery::test

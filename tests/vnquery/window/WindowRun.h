// The program's window on an offscreen platform, driven as a user would drive it.
#pragma once

#include "examples/vnquery/window/MainWindow.h"
#include "tests/vnquery/ProgramRun.h"

#include <deque>
#include <functional>
#include <memory>

namespace vnquery::test {

/// Answers message boxes by a list; a box that is not expected fails the test.
class Answers : public vnbytstr::Interaction {
public:
    int MessageBox(const char* text, const char* caption, UINT type, UINT helpContext) override;
    int ShellExecute(const char* verb, const char* file, const char* parameters, const char* folder,
                     int show) override;

    std::deque<int> m_answers;         ///< to the next boxes
    std::function<void()> m_meanwhile; ///< what happens while a box waits for its answer
    std::vector<std::string> m_texts;  ///< of the boxes that came
    std::vector<std::string> m_opened; ///< parameters of programs that were started
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

    /// A key with its modifiers to whatever has the focus.
    void Key(int qtKey, int qtModifiers = 0);
    void Type(const std::string& text);
    /// Clicks on a cell of the result.
    void ClickCell(int row, int column, bool twice = false);
    /// Presses a child of the view with the mouse.
    void ClickControl(int id);
    /// What the list shows.
    std::string Cell(int row, int column);
    std::string Status();
    std::string Ask(const std::string& sql);
    /// Does something while a dialog is open: `inside` gets the dialog, and must close it.
    void WithDialog(const std::function<void()>& open, const std::function<void(CWnd&)>& inside);
    void SavePicture(CWnd& window, const std::string& name);

    MainWindow& Window() { return *m_window; }
    QueryView& View() { return m_window->GetView(); }
    ResultList& List() { return m_window->GetView().GetList(); }
    ResultDocument& Document() { return m_window->GetView().GetDocument(); }

    Answers m_answers;
    std::unique_ptr<vnbytstr::ScopedInteraction> m_scope;
    std::unique_ptr<MainWindow> m_window;
};

} // namespace vnquery::test

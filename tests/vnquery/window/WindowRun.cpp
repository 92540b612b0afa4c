#include "tests/vnquery/window/WindowRun.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/window/ListBox.h"

#include <chrono>
#include <sqlite3.h>

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <QWidget>

namespace vnquery::test {

namespace {

bool IsShown(HWND window) { return CWnd::FromHandle(window)->IsWindowVisible() != FALSE; }

} // namespace

int Answers::MessageBox(const char* text, const char*, UINT, UINT) {
    m_texts.emplace_back(text ? text : "");
    if (m_meanwhile)
        m_meanwhile();
    if (m_answers.empty()) {
        ADD_FAILURE() << "an unexpected message: " << text;
        return IDCANCEL;
    }
    const int answer = m_answers.front();
    m_answers.pop_front();
    return answer;
}

int Answers::ShellExecute(const char*, const char*, const char* parameters, const char*, int) {
    m_opened.emplace_back(parameters ? parameters : "");
    return vnbytstr::kShellStarted;
}

WindowTest::WindowTest() {
    AfxInitWindows();
    GetGlobals().Initialize();
    LoadTexts();
    m_scope = std::make_unique<vnbytstr::ScopedInteraction>(m_answers);
}

WindowTest::~WindowTest() {
    m_window.reset();
    Pump();
    EXPECT_TRUE(m_answers.m_answers.empty()) << "an expected message did not come";
}

void WindowTest::Open(const std::string& sql) {
    m_window = std::make_unique<MainWindow>();
    ASSERT_TRUE(m_window->Open());
    m_window->Connect({Database(), ""});
    m_window->GetWidget()->activateWindow();
    static_cast<void>(QTest::qWaitForWindowActive(m_window->GetWidget(), 2000));
    if (!sql.empty())
        RunQuery(sql);
}

void WindowTest::RunQuery(const std::string& sql) {
    View().SetSql(sql);
    View().Run();
    WaitFor([&] { return !View().IsBusy(); });
}

void WindowTest::WaitFor(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition() && std::chrono::steady_clock::now() < end)
        AfxPumpMessages(20);
    EXPECT_TRUE(condition());
}

void WindowTest::Pump() {
    for (int i = 0; i < 3; ++i)
        AfxPumpMessages(20);
}

void WindowTest::Key(int qtKey, int qtModifiers) {
    QWidget* const focus = QApplication::focusWidget();
    ASSERT_NE(focus, nullptr);
    QTest::keyClick(focus, static_cast<Qt::Key>(qtKey),
                    static_cast<Qt::KeyboardModifiers>(qtModifiers));
    Pump();
}

void WindowTest::Type(const std::string& text) {
    QTest::keyClicks(QApplication::focusWidget(), QString::fromStdString(text));
    Pump();
}

void WindowTest::ClickCell(int row, int column, bool twice) {
    RECT rect{};
    List().SendMessage(LB_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&rect));
    int left = 0;
    for (int i = 0; i < column; ++i)
        left += List().GetColumnWidth(i);
    CPoint point(left + 8, (rect.top + rect.bottom) / 2);
    List().ClientToScreen(&point);
    QWidget* const top = Window().GetWidget();
    const QPoint global(point.x, point.y);
    QWidget* const under = top->childAt(top->mapFromGlobal(global));
    ASSERT_NE(under, nullptr);
    const QPoint local = under->mapFromGlobal(global);
    if (twice)
        QTest::mouseDClick(under, Qt::LeftButton, {}, local);
    else
        QTest::mouseClick(under, Qt::LeftButton, {}, local);
    Pump();
}

void WindowTest::ClickControl(int id) {
    CWnd* const control = View().GetDlgItem(id);
    ASSERT_NE(control, nullptr);
    QWidget* const around = control->GetWidget();
    QWidget* const inner = around->childAt(around->rect().center()); // of the window system
    QTest::mouseClick(inner ? inner : around, Qt::LeftButton);
    Pump();
}

std::string WindowTest::Cell(int row, int column) {
    CString text;
    List().GetStringItem(row, column, text);
    return ToString(text);
}

std::string WindowTest::Status() { return ToString(Window().GetPaneText(-1)); }

std::string WindowTest::Ask(const std::string& sql) {
    sqlite3* database = nullptr;
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_open(Database().c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr), SQLITE_OK);
    std::string answer;
    if (sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_text(statement, 0))
        answer.assign(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)),
                      static_cast<std::size_t>(sqlite3_column_bytes(statement, 0)));
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return answer;
}

void WindowTest::WithDialog(const std::function<void()>& open,
                            const std::function<void(CWnd&)>& inside) {
    bool came = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        CWnd* const dialog = CWnd::GetActiveWindow();
        if (came || !dialog || dialog == m_window.get())
            return;
        came = true;
        timer.stop();
        const HWND handle = dialog->GetSafeHwnd();
        inside(*dialog);
        if (IsWindow(handle) && IsShown(handle)) {
            ADD_FAILURE() << "the dialog is still open";
            SendMessage(handle, WM_COMMAND, IDCANCEL, 0);
        }
    });
    timer.start(30);
    open();
    EXPECT_TRUE(came) << "no dialog came";
    Pump();
}

void WindowTest::SavePicture(CWnd& window, const std::string& name) {
    Pump();
    window.GetWidget()->grab().save(QString::fromStdString(name));
}

} // namespace vnquery::test

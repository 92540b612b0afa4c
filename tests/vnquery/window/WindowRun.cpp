#include "tests/vnquery/window/WindowRun.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/window/ListBox.h"

#include <chrono>
#include <sqlite3.h>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPointer>
#include <QStatusBar>
#include <QTest>

namespace vnquery::test {

Answers::Answers() {
    QObject::connect(&m_timer, &QTimer::timeout, [this] { Look(); });
    m_timer.start(10);
}

void Answers::Look() {
    auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible())
        return;
    m_texts.push_back(box->text().toStdString());
    if (m_meanwhile)
        m_meanwhile();
    auto answer = QMessageBox::Cancel;
    if (m_answers.empty()) {
        ADD_FAILURE() << "an unexpected message: " << m_texts.back();
    } else {
        answer = m_answers.front();
        m_answers.pop_front();
    }
    if (QAbstractButton* const button = box->button(answer))
        button->click();
    else
        box->reject();
}

WindowTest::WindowTest() { GetGlobals().Initialize(); }

WindowTest::~WindowTest() {
    m_answers.m_meanwhile = {};
    m_window.reset();
    Pump();
    EXPECT_TRUE(m_answers.m_answers.empty()) << "an expected message did not come";
}

void WindowTest::Open(const std::string& sql) {
    m_window = std::make_unique<MainWindow>();
    m_window->show();
    m_window->activateWindow();
    static_cast<void>(QTest::qWaitForWindowActive(m_window.get(), 2000));
    ASSERT_TRUE(m_window->OpenConnection({Database(), ""}, sql));
    if (!sql.empty())
        RunQuery(sql);
}

void WindowTest::RunQuery(const std::string& sql) {
    Page().RunSql(sql);
    WaitFor([&] { return !Page().IsBusy(); });
}

void WindowTest::WaitFor(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition() && std::chrono::steady_clock::now() < end)
        QTest::qWait(5);
    EXPECT_TRUE(condition());
}

void WindowTest::Pump() { QTest::qWait(20); }

/// The offscreen platform does not make the window active again after a dialog or popup.
void WindowTest::ActivateAgain() {
    if (!m_window || QApplication::activeModalWidget() || QApplication::activePopupWidget() ||
        QApplication::activeWindow() == m_window.get())
        return;
    m_window->activateWindow();
    Pump();
}

void WindowTest::Key(int qtKey, int qtModifiers) {
    ActivateAgain();
    QWidget* const focus = QApplication::focusWidget();
    ASSERT_NE(focus, nullptr);
    QTest::keyClick(focus, static_cast<Qt::Key>(qtKey),
                    static_cast<Qt::KeyboardModifiers>(qtModifiers));
    Pump();
}

void WindowTest::Type(const std::string& text) {
    ActivateAgain();
    QTest::keyClicks(QApplication::focusWidget(), QString::fromStdString(text));
    Pump();
}

void WindowTest::ClickCell(int row, int column, bool twice) {
    RECT rect{};
    List().SendMessage(LB_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&rect));
    CRect heading;
    ASSERT_TRUE(List().GetHeadings()->GetRect(ResultList::ListColumnOf(column), &heading));
    CPoint point(heading.left + 8, (rect.top + rect.bottom) / 2);
    List().ClientToScreen(&point);
    const QPoint global(point.x, point.y);
    QWidget* const under = m_window->childAt(m_window->mapFromGlobal(global));
    ASSERT_NE(under, nullptr);
    const QPoint local = under->mapFromGlobal(global);
    if (twice)
        QTest::mouseDClick(under, Qt::LeftButton, {}, local);
    else
        QTest::mouseClick(under, Qt::LeftButton, {}, local);
    Pump();
}

std::string WindowTest::Cell(int row, int column) {
    CString text;
    List().GetStringItem(row, ResultList::ListColumnOf(column), text);
    return static_cast<const char*>(text);
}

std::string WindowTest::Status() { return m_window->statusBar()->currentMessage().toStdString(); }

std::string WindowTest::Changes() {
    return m_window->findChild<QLabel*>("changes")->text().toStdString();
}

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
                            const std::function<void(QDialog&)>& inside) {
    bool came = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (came || !dialog || qobject_cast<QMessageBox*>(dialog))
            return;
        came = true;
        timer.stop();
        const QPointer<QDialog> life = dialog;
        inside(*dialog);
        if (life && life->isVisible()) {
            ADD_FAILURE() << "the dialog is still open";
            life->reject();
        }
    });
    timer.start(30);
    open();
    EXPECT_TRUE(came) << "no dialog came";
    Pump();
}

} // namespace vnquery::test

// A user who presses keys and buttons at random: vnquery_random_user [SEED [SECONDS]]. Nothing is
// expected of the program but that it goes on; run it under the sanitizers. Files are not touched: file
// dialogs are closed. The database is one of its own in a temporary folder.
#include "vnquery/messages/Messages.h"
#include "vnquery/window/ConnectionPage.h"
#include "vnquery/window/MainWindow.h"

#include "vnbytstr/GlobalVars.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QMenu>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <random>

namespace vnquery {
namespace {

constexpr char kTables[] =
    "create table film(id integer primary key, title text not null, year int, price decimal(8,2),"
    " notes text, poster blob);"
    "with recursive n(i) as (select 1 union all select i + 1 from n where i < 2000)"
    " insert into film select i, 'Title ' || i, 1900 + i % 120, i * 1.25,"
    " case when i % 4 then hex(randomblob(i % 300)) end, randomblob(i * 37 % 5000) from n;"
    "create table named(name text primary key, data);"
    "insert into named values('long', zeroblob(5000000)), ('json', '{\"a\":[1,2,{\"b\":null}]}'),"
    " ('xml', '<a><b c=\"1\">t</b></a>'), ('empty', ''), ('null', null);"
    "create table nokey(x, y); insert into nokey values(null, 1), ('a', 2);"
    "create table noid(k text primary key, v) without rowid; insert into noid values('a', x'00ff');"
    "create view seen as select title, year from film;";

constexpr const char* kStatements[] = {
    "select * from film",
    "select * from film order by random()",
    "select name, data from named",
    "select * from nokey",
    "select * from noid",
    "select * from seen",
    "select * from film where id > :x",
    "select &TLXAO_USER_ID",
    "select 1; select 2; select 3",
    "select zeroblob(3000000)",
    "with recursive n(i) as (select 1 union all select i + 1 from n) select i from n",
    "update film set title = title || 'x' where id % 3 = 0",
    "delete from film where id % 7 = 5",
    "insert into film(title) values ('new')",
    "create table q(a)",
    "drop table q",
    "pragma table_info(film)",
    "begin",
    "vacuum",
    "select",
};

constexpr Qt::Key kKeys[] = {
    Qt::Key_Return, Qt::Key_Escape, Qt::Key_Tab,      Qt::Key_Backtab,  Qt::Key_Up,
    Qt::Key_Down,   Qt::Key_Left,   Qt::Key_Right,    Qt::Key_Home,     Qt::Key_End,
    Qt::Key_PageUp, Qt::Key_Delete, Qt::Key_PageDown, Qt::Key_F2,       Qt::Key_F3,
    Qt::Key_F4,     Qt::Key_F5,     Qt::Key_F6,       Qt::Key_F9,       Qt::Key_Insert,
    Qt::Key_Space,  Qt::Key_Menu,   Qt::Key_A,        Qt::Key_C,        Qt::Key_V,
    Qt::Key_X,      Qt::Key_Z,      Qt::Key_F,        Qt::Key_H,        Qt::Key_D,
    Qt::Key_S,      Qt::Key_1,      Qt::Key_Plus,     Qt::Key_Backspace};

class RandomUser {
public:
    RandomUser(unsigned seed, std::string file) : m_random(seed), m_file(std::move(file)) {}

    /// Does something again and again, also while dialogs are open.
    void Begin() {
        QTimer::singleShot(1, [this] { Step(); });
    }
    /// From now on everything is closed.
    void End() { m_isEnding = true; }
    long GetSteps() const { return m_steps; }

private:
    static constexpr int kDeepest = 4; ///< dialogs over dialogs

    std::size_t Pick(std::size_t count) { return count == 0 ? 0 : m_random() % count; }
    bool OneIn(std::size_t count) { return Pick(count) == 0; }
    template <class Items>
    auto One(Items&& items) {
        return *std::next(std::begin(items), static_cast<std::ptrdiff_t>(Pick(std::size(items))));
    }
    QPoint Place(const QWidget* widget) {
        return {static_cast<int>(Pick(static_cast<std::size_t>(widget->width()))),
                static_cast<int>(Pick(static_cast<std::size_t>(widget->height())))};
    }

    void Step() {
        Begin();
        ++m_depth;
        ++m_steps;
        QWidget* const popup = QApplication::activePopupWidget();
        QWidget* const modal = QApplication::activeModalWidget();
        if (popup)
            UsePopup(*popup);
        else if (modal)
            UseDialog(*modal);
        else if (m_isEnding && m_depth == 1)
            QApplication::exit(); // quit() asks about changes, and every question is closed
        else if (!m_isEnding)
            UseWindow();
        --m_depth;
    }
    void UsePopup(QWidget& popup) {
        auto* const menu = qobject_cast<QMenu*>(&popup);
        QAction* const action = menu && !menu->actions().isEmpty() ? One(menu->actions()) : nullptr;
        if (m_isEnding || m_depth > kDeepest || OneIn(3)) {
            popup.close();
        } else if (action && OneIn(2) && !action->menu()) {
            popup.close();
            action->trigger();
        } else {
            QTest::keyClick(&popup, One(kKeys));
        }
    }
    void UseDialog(QWidget& modal) {
        const auto buttons = modal.findChildren<QAbstractButton*>();
        auto* const dialog = qobject_cast<QDialog*>(&modal);
        const bool isClosed = m_isEnding || m_depth > kDeepest || OneIn(6);
        if (dialog && (isClosed || qobject_cast<QFileDialog*>(dialog)))
            dialog->reject(); // also a question that can only be answered
        else if (!buttons.isEmpty() && OneIn(3))
            One(buttons)->click();
        else if (OneIn(2))
            UseMouse(modal);
        else
            PressKey();
    }
    void UseWindow() {
        ConnectionPage* const page = m_window.GetPage();
        if (!m_window.isVisible())
            m_window.show();
        if (!page && OneIn(3)) {
            m_window.OpenConnection({m_file, ""}, "select * from film");
            return;
        }
        const std::size_t what = Pick(100);
        if (what < 30)
            PressKey();
        else if (what < 65)
            UseMouse(m_window);
        else if (what < 80)
            Trigger(One(m_window.findChildren<QAction*>()));
        else if (what < 92 && page)
            page->RunSql(One(kStatements));
        else if (what < 94)
            m_window.resize(static_cast<int>(100 + Pick(1300)), static_cast<int>(80 + Pick(900)));
        else if (what < 96 && page)
            page->AllowChanges(!OneIn(3));
        else if (what < 98)
            QGuiApplication::clipboard()->setText(OneIn(2) ? "a\tb\nc\td" : "xyz");
        else if (QWidget* const focus = QApplication::focusWidget())
            QTest::keyClicks(focus, "Hello 12");
    }
    static void Trigger(QAction* action) {
        if (action->isEnabled() && !action->menu())
            action->trigger();
    }
    void PressKey() {
        QWidget* focus = QApplication::focusWidget();
        if (!focus)
            focus = QApplication::activeWindow();
        QTest::keyClick(focus ? focus : &m_window, One(kKeys), Modifiers());
    }
    Qt::KeyboardModifiers Modifiers() {
        return OneIn(4)   ? Qt::ControlModifier
               : OneIn(5) ? Qt::ShiftModifier
               : OneIn(9) ? Qt::AltModifier
                          : Qt::NoModifier;
    }
    void UseMouse(QWidget& top) {
        QList<QWidget*> seen;
        for (QWidget* child : top.findChildren<QWidget*>())
            if (child->isVisible() && child->width() > 2 && child->height() > 2)
                seen << child;
        const QPointer<QWidget> widget = seen.isEmpty() ? &top : One(seen);
        const Qt::KeyboardModifiers modifiers = Modifiers();
        const Qt::MouseButton button = OneIn(6) ? Qt::RightButton : Qt::LeftButton;
        const QPoint place = Place(widget);
        switch (Pick(5)) {
        case 0:
            QTest::mouseDClick(widget, button, modifiers, place);
            break;
        case 1:
            QTest::mousePress(widget, button, modifiers, place);
            for (int i = 0; i < 4 && widget; ++i)
                QTest::mouseMove(widget, Place(widget));
            if (widget)
                QTest::mouseRelease(widget, button, modifiers, Place(widget));
            break;
        case 2: {
            QWheelEvent turn(place, widget->mapToGlobal(place), {},
                             {0, static_cast<int>(Pick(480)) - 240}, Qt::NoButton, modifiers,
                             Qt::NoScrollPhase, false);
            QApplication::sendEvent(widget, &turn);
            break;
        }
        default:
            QTest::mouseClick(widget, button, modifiers, place);
        }
    }

    std::mt19937 m_random;
    const std::string m_file;
    MainWindow m_window;
    int m_depth = 0;
    long m_steps = 0;
    bool m_isEnding = false;
};

std::string MakeDatabase(const QTemporaryDir& folder) {
    const std::string file = folder.filePath("random.sqlite").toStdString();
    sqlite3* database = nullptr;
    if (sqlite3_open(file.c_str(), &database) != SQLITE_OK ||
        sqlite3_exec(database, kTables, nullptr, nullptr, nullptr) != SQLITE_OK) {
        std::fprintf(stderr, "%s\n", sqlite3_errmsg(database));
        std::exit(2);
    }
    sqlite3_close(database);
    return file;
}

} // namespace
} // namespace vnquery

int main(int argc, char** argv) {
    const unsigned seed = argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 1;
    const int seconds = argc > 2 ? std::atoi(argv[2]) : 60;
    const QTemporaryDir folder;
    qputenv("VNBYTSTR_PROFILE", folder.filePath("profile.ini").toUtf8());
    qputenv("PATH", ""); // pages are not shown to anybody
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    vnquery::LoadTexts();
    GetGlobals().Initialize();
    vnquery::RandomUser user(seed, vnquery::MakeDatabase(folder));
    QTimer::singleShot(seconds * 1000, [&] { user.End(); });
    user.Begin();
    QApplication::exec();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // tabs closed last
    std::printf("%ld steps from seed %u\n", user.GetSteps(), seed);
    return 0;
}

// Changing values in the window and writing them back.
#include "tests/vnquery/window/WindowRun.h"

#include <QApplication>

namespace vnquery::test {
namespace {

constexpr char kFilms[] =
    "create table film(id integer primary key, title text not null, length int default 90, "
    "poster blob, plot clob);"
    "insert into film values (1, 'Brazil', 143, x'89504E470D0A1A0A00', 'A clerk dreams.'),"
    "(2, 'Das Boot', 149, null, null), (3, 'Alien', 117, null, 'In space'), "
    "(4, 'Amarcord', null, null, 'a' || char(10) || 'b')";
constexpr char kQuery[] = "select id, title, length, poster, plot from film order by id";

class WindowEdit : public WindowTest {
protected:
    void OpenFilms() {
        MakeDatabase(kFilms);
        Open(kQuery);
    }
    std::string Changes() { return ToString(Window().GetPaneText(1)); }
};

TEST_F(WindowEdit, AValueIsTypedAndCommitted) {
    OpenFilms();
    ClickCell(1, 1, true);
    ASSERT_NE(List().GetActiveEditor(), nullptr);
    Type("The Boat");
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(1, 1), "The Boat");
    EXPECT_EQ(Changes(), "1 change not written");
    EXPECT_EQ(Ask("select title from film where id = 2"), "Das Boot");
    m_answers.m_answers = {IDYES};
    Key(Qt::Key_S, Qt::ControlModifier);
    EXPECT_NE(m_answers.m_texts.back().find("table film"), std::string::npos);
    EXPECT_EQ(Ask("select title from film where id = 2"), "The Boat");
    EXPECT_EQ(Changes(), "No changes");
}

TEST_F(WindowEdit, NoTakesEverythingBackAndKeepsTheChanges) {
    OpenFilms();
    List().SetCurrentCell(0, 2);
    Key(Qt::Key_F2);
    Type("150");
    Key(Qt::Key_Return);
    Key(Qt::Key_Right);
    Key(Qt::Key_Right);
    Key(Qt::Key_0, Qt::ControlModifier); // the plot becomes NULL
    EXPECT_EQ(Cell(0, 4), "-");
    EXPECT_EQ(Changes(), "2 changes not written");
    m_answers.m_answers = {IDNO};
    View().WriteChanges();
    EXPECT_EQ(Ask("select length || plot from film where id = 1"), "143A clerk dreams.");
    EXPECT_EQ(Changes(), "2 changes not written");
    List().SetCurrentCell(0, 4);
    View().UndoCell();
    EXPECT_EQ(Cell(0, 4), "A clerk dreams.");
    m_answers.m_answers = {IDYES};
    View().DiscardChanges();
    EXPECT_EQ(Cell(0, 2), "143");
    EXPECT_EQ(Changes(), "No changes");
}

TEST_F(WindowEdit, WrongValuesAreRefusedAndTheEditorStays) {
    OpenFilms();
    List().SetCurrentCell(0, 2);
    Key(Qt::Key_F2);
    Type("long");
    m_answers.m_answers = {IDOK};
    Key(Qt::Key_Return);
    EXPECT_NE(m_answers.m_texts.back().find("numbers only"), std::string::npos);
    EXPECT_NE(List().GetActiveEditor(), nullptr);
    Key(Qt::Key_Escape);
    EXPECT_EQ(Cell(0, 2), "143");

    List().SetCurrentCell(0, 1);
    Key(Qt::Key_F2);
    Type("-");
    m_answers.m_answers = {IDOK};
    Key(Qt::Key_Return);
    EXPECT_NE(m_answers.m_texts.back().find("no NULL"), std::string::npos);
    Key(Qt::Key_Escape);
    m_answers.m_answers = {IDOK};
    List().SetCurrentCell(0, 0);
    Key(Qt::Key_F2);
    EXPECT_EQ(List().GetActiveEditor(), nullptr);
    EXPECT_EQ(Changes(), "No changes");
}

TEST_F(WindowEdit, DefaultsAndSortedRowsReachTheirRows) {
    OpenFilms();
    List().Sort(1); // Alien, Amarcord, Brazil, Das Boot
    List().SetCurrentCell(1, 2);
    Key(Qt::Key_F2);
    Type("+");
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(1, 2), "+");
    m_answers.m_answers = {IDYES};
    View().WriteChanges();
    EXPECT_EQ(Cell(1, 2), "90");
    EXPECT_EQ(Ask("select title from film where length = 90"), "Amarcord");
}

TEST_F(WindowEdit, ConflictsAreShownAndNotOverwrittenUnseen) {
    OpenFilms();
    List().SetCurrentCell(0, 1);
    Key(Qt::Key_F2);
    Type("mine");
    Key(Qt::Key_Return);
    MakeDatabase("update film set title = 'theirs' where id = 1");
    m_answers.m_answers = {IDOK};
    View().WriteChanges();
    EXPECT_NE(m_answers.m_texts.back().find("theirs"), std::string::npos);
    EXPECT_EQ(Ask("select title from film where id = 1"), "theirs");
    m_answers.m_answers = {IDYES};
    View().WriteChanges();
    EXPECT_EQ(Ask("select title from film where id = 1"), "mine");
}

TEST_F(WindowEdit, AFileIsDroppedOntoACell) {
    OpenFilms();
    m_files.Write("picture", SomeBytes(200000, 9));
    List().SetCurrentCell(2, 3);
    List().AddFileName(2, File("picture").c_str());
    List().EditColumn(2, 3); // as the drop target does
    WaitFor([&] { return !Document().GetEdits().IsEmpty(); });
    EXPECT_EQ(Cell(2, 3), "<BLOB> 195 KB");
    m_answers.m_answers = {IDYES};
    View().WriteChanges();
    EXPECT_EQ(Ask("select poster from film where id = 3"), SomeBytes(200000, 9));

    m_answers.m_answers = {IDOK};
    List().AddFileName(2, m_files.Path().c_str());
    List().EditColumn(2, 3);
    Pump();
    EXPECT_NE(m_answers.m_texts.back().find("is a folder"), std::string::npos);
}

TEST_F(WindowEdit, LeavingAsksForWhatIsNotWritten) {
    OpenFilms();
    List().SetCurrentCell(0, 1);
    Key(Qt::Key_F2);
    Type("new");
    Key(Qt::Key_Return);
    m_answers.m_answers = {IDCANCEL};
    Window().SendMessage(WM_CLOSE);
    EXPECT_NE(Window().GetSafeHwnd(), nullptr);
    m_answers.m_answers = {IDYES};
    RunQuery("select 1");
    EXPECT_EQ(Ask("select title from film where id = 1"), "new");
}

/// Rows of one database are never written to another one.
TEST_F(WindowEdit, AResultBelongsToItsDatabase) {
    OpenFilms();
    std::filesystem::copy_file(Database(), File("other.sqlite"));
    List().SetCurrentCell(0, 1);
    Key(Qt::Key_F2);
    Type("mine");
    Key(Qt::Key_Return);
    m_answers.m_answers = {IDCANCEL}; // stays, with the change
    Window().Connect({File("other.sqlite"), ""});
    EXPECT_EQ(GetText(Window()), Database() + " - vnquery");
    m_answers.m_answers = {IDNO};
    Window().Connect({File("other.sqlite"), ""});
    EXPECT_EQ(Cell(0, 1), "Brazil");
    List().SetCurrentCell(0, 1);
    const std::size_t before = m_answers.m_texts.size();
    m_answers.m_answers = {IDOK, IDOK, IDOK, IDOK};
    Key(Qt::Key_F2);
    EXPECT_EQ(List().GetActiveEditor(), nullptr);
    WithDialog([&] { ClickCell(0, 1, true); }, // shows the value, and no more
               [](CWnd& zoom) { zoom.SendMessage(WM_COMMAND, IDOK); });
    Key(Qt::Key_0, Qt::ControlModifier);
    Key(Qt::Key_D, Qt::ControlModifier);
    m_answers.m_answers.clear();
    ASSERT_GT(m_answers.m_texts.size(), before);
    EXPECT_NE(m_answers.m_texts[before].find("read from " + Database()), std::string::npos);
    EXPECT_TRUE(Document().GetEdits().IsEmpty());

    RunQuery(kQuery);
    List().SetCurrentCell(0, 1);
    Key(Qt::Key_F2);
    Type("theirs");
    Key(Qt::Key_Return);
    m_answers.m_answers = {IDYES};
    View().WriteChanges();
    EXPECT_EQ(Ask("select title from film where id = 1"), "Brazil");
    m_window.reset();
    std::filesystem::rename(File("other.sqlite"), Database());
    EXPECT_EQ(Ask("select title from film where id = 1"), "theirs");
}

/// The database is everybody's while a question waits for its answer.
TEST_F(WindowEdit, QuestionsHoldNoLock) {
    OpenFilms();
    const auto edit = [&](const char* text) {
        List().SetCurrentCell(0, 1);
        Key(Qt::Key_F2);
        Type(text);
        Key(Qt::Key_Return);
    };
    edit("mine");
    int boxes = 0;
    m_answers.m_meanwhile = [&] {
        MakeDatabase("pragma busy_timeout = 0; update film set length = length + 1 where id = 2");
        ++boxes;
    };
    m_answers.m_answers = {IDYES};
    View().WriteChanges();
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(Ask("select title || length from film where id = 2"), "Das Boot150");
    EXPECT_EQ(Ask("select title from film where id = 1"), "mine");

    // Somebody changes the very value while the question waits: told after it, and not overwritten.
    edit("again");
    m_answers.m_meanwhile = [&] { MakeDatabase("update film set title = 'theirs' where id = 1"); };
    m_answers.m_answers = {IDYES, IDOK};
    View().WriteChanges();
    EXPECT_EQ(Ask("select title from film where id = 1"), "theirs");
    EXPECT_NE(m_answers.m_texts.back().find("theirs"), std::string::npos);
    EXPECT_EQ(Changes(), "1 change not written");
}

TEST_F(WindowEdit, JoinsAreReadOnlyAndSayWhy) {
    MakeDatabase(kFilms);
    Open("select a.title, b.title from film a join film b on a.id = b.id");
    List().SetCurrentCell(0, 0);
    m_answers.m_answers = {IDOK};
    Key(Qt::Key_F2);
    EXPECT_NE(m_answers.m_texts.back().find("one table"), std::string::npos);
}

} // namespace
} // namespace vnquery::test

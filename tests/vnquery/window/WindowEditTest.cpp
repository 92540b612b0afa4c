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
    m_answers.m_answers = {QMessageBox::Yes};
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
    m_answers.m_answers = {QMessageBox::No};
    View().WriteChanges();
    EXPECT_EQ(Ask("select length || plot from film where id = 1"), "143A clerk dreams.");
    EXPECT_EQ(Changes(), "2 changes not written");
    List().SetCurrentCell(0, 4);
    View().Undo();
    EXPECT_EQ(Cell(0, 4), "A clerk dreams."); // the last change
    m_answers.m_answers = {QMessageBox::Yes};
    View().DiscardChanges();
    EXPECT_EQ(Cell(0, 2), "143");
    EXPECT_EQ(Changes(), "No changes");
}

TEST_F(WindowEdit, WrongValuesAreRefusedAndTheEditorStays) {
    OpenFilms();
    List().SetCurrentCell(0, 2);
    Key(Qt::Key_F2);
    Type("long");
    m_answers.m_answers = {QMessageBox::Ok};
    Key(Qt::Key_Return);
    EXPECT_NE(m_answers.m_texts.back().find("numbers only"), std::string::npos);
    EXPECT_NE(List().GetActiveEditor(), nullptr);
    Key(Qt::Key_Escape);
    EXPECT_EQ(Cell(0, 2), "143");

    List().SetCurrentCell(0, 1);
    Key(Qt::Key_F2);
    Type("-");
    m_answers.m_answers = {QMessageBox::Ok};
    Key(Qt::Key_Return);
    EXPECT_NE(m_answers.m_texts.back().find("no NULL"), std::string::npos);
    Key(Qt::Key_Escape);
    m_answers.m_answers = {QMessageBox::Ok};
    List().SetCurrentCell(0, 0);
    Key(Qt::Key_F2);
    EXPECT_EQ(List().GetActiveEditor(), nullptr);
    EXPECT_EQ(Changes(), "No changes");
}

TEST_F(WindowEdit, DefaultsAndSortedRowsReachTheirRows) {
    OpenFilms();
    List().SortBy(1, false); // Alien, Amarcord, Brazil, Das Boot
    List().SetCurrentCell(1, 2);
    Key(Qt::Key_F2);
    Type("+");
    Key(Qt::Key_Return);
    EXPECT_EQ(Cell(1, 2), "+");
    m_answers.m_answers = {QMessageBox::Yes};
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
    m_answers.m_answers = {QMessageBox::Ok};
    View().WriteChanges();
    EXPECT_NE(m_answers.m_texts.back().find("theirs"), std::string::npos);
    EXPECT_EQ(Ask("select title from film where id = 1"), "theirs");
    m_answers.m_answers = {QMessageBox::Yes};
    View().WriteChanges();
    EXPECT_EQ(Ask("select title from film where id = 1"), "mine");
}

/// By the number that the row has on the screen.
TEST_F(WindowEdit, ARefusedValueNamesItsRow) {
    MakeDatabase("create table t(id integer primary key, n int check(n > 0));"
                 "insert into t values (1, 1), (2, 2), (3, 3)");
    Open("select id, n from t");
    List().SortBy(0, true);
    List().SetCurrentCell(2, 1);
    Key(Qt::Key_F2);
    Type("0");
    Key(Qt::Key_Return);
    m_answers.m_answers = {QMessageBox::Yes, QMessageBox::Ok};
    View().WriteChanges();
    EXPECT_EQ(m_answers.m_texts.back().find("Row 3: cannot change the column n"), 0u)
        << m_answers.m_texts.back();
    EXPECT_EQ(Changes(), "1 change not written");
}

TEST_F(WindowEdit, AFileIsDroppedOntoACell) {
    OpenFilms();
    m_files.Write("picture", SomeBytes(200000, 9));
    List().SetCurrentCell(2, 3);
    List().AddFileName(2, File("picture").c_str());
    List().EditColumn(2, ResultList::ListColumnOf(3)); // as the drop target does
    WaitFor([&] { return !Document().GetEdits().IsEmpty(); });
    EXPECT_EQ(Cell(2, 3), "<BLOB 195 KB>");
    m_answers.m_answers = {QMessageBox::Yes};
    View().WriteChanges();
    EXPECT_EQ(Ask("select poster from film where id = 3"), SomeBytes(200000, 9));

    m_answers.m_answers = {QMessageBox::Ok};
    List().AddFileName(2, m_files.Path().c_str());
    List().EditColumn(2, ResultList::ListColumnOf(3));
    Pump();
    EXPECT_NE(m_answers.m_texts.back().find("is a folder"), std::string::npos);
}

TEST_F(WindowEdit, LeavingAsksForWhatIsNotWritten) {
    OpenFilms();
    List().SetCurrentCell(0, 1);
    Key(Qt::Key_F2);
    Type("new");
    Key(Qt::Key_Return);
    m_answers.m_answers = {QMessageBox::Cancel};
    EXPECT_FALSE(Window().close());
    m_answers.m_answers = {QMessageBox::Yes};
    RunQuery("select 1");
    EXPECT_EQ(Ask("select title from film where id = 1"), "new");
}

/// Each connection has its own tab: rows of one database are never written to another one.
TEST_F(WindowEdit, AResultBelongsToItsDatabase) {
    OpenFilms();
    std::filesystem::copy_file(Database(), File("other.sqlite"));
    const auto edit = [&](const char* text) {
        List().SetCurrentCell(0, 1);
        List().SetFocus();
        Key(Qt::Key_F2);
        Type(text);
        Key(Qt::Key_Return);
    };
    edit("mine");
    ConnectionPage* const first = &Page();
    ASSERT_TRUE(Window().OpenConnection({File("other.sqlite"), ""}));
    ASSERT_NE(&Page(), first);
    EXPECT_FALSE(View().HasResult());
    RunQuery(kQuery);
    EXPECT_EQ(Cell(0, 1), "Brazil");
    edit("theirs");
    m_answers.m_answers = {QMessageBox::Yes};
    View().WriteChanges();
    EXPECT_EQ(Ask("select title from film where id = 1"), "Brazil");
    Window().CloseTab(-1);
    ASSERT_EQ(&Page(), first);
    EXPECT_EQ(Cell(0, 1), "mine");
    m_answers.m_answers = {QMessageBox::Yes};
    View().WriteChanges();
    EXPECT_EQ(Ask("select title from film where id = 1"), "mine");
    std::filesystem::rename(File("other.sqlite"), Database());
    EXPECT_EQ(Ask("select title from film where id = 1"), "theirs");
}

TEST_F(WindowEdit, RowsAreInsertedDuplicatedAndDeleted) {
    OpenFilms();
    List().SetCurrentCell(1, 1);
    List().SetFocus();
    Key(Qt::Key_Delete, Qt::ControlModifier);
    View().InsertRow(); // below the current one
    EXPECT_EQ(List().GetCurrentRow(), 2);
    Key(Qt::Key_F2);
    Type("Stalker");
    Key(Qt::Key_Return);
    List().SetCurrentCell(3, 1);
    View().DuplicateRow();
    EXPECT_EQ(Cell(4, 1), "Alien");
    m_answers.m_answers = {QMessageBox::Yes};
    View().WriteChanges();
    EXPECT_EQ(Ask("select group_concat(title, ',') from (select title from film order by id)"),
              "Brazil,Alien,Amarcord,Stalker,Alien");
    EXPECT_EQ(List().GetCount(), 5);
    EXPECT_EQ(Changes(), "No changes");
    // Undo takes back one step of the user at a time.
    List().SetCurrentCell(0, 1);
    Key(Qt::Key_Delete, Qt::ControlModifier);
    View().InsertRow();
    View().Undo();
    View().Undo();
    EXPECT_EQ(Changes(), "No changes");
    EXPECT_EQ(List().GetCount(), 5);
}

/// A filter changes the list's rows, not which row is changed.
TEST_F(WindowEdit, FilteredRowsReachTheirRows) {
    OpenFilms();
    List().SetColumnFilter(ResultList::ListColumnOf(1), "am");
    WaitFor([&] { return List().IsFilterDone() && List().GetCount() == 1; });
    List().SetCurrentCell(0, 2);
    List().SetFocus();
    Key(Qt::Key_F2);
    Type("123");
    Key(Qt::Key_Return);
    m_answers.m_answers = {QMessageBox::Yes};
    View().WriteChanges();
    EXPECT_EQ(Ask("select title from film where length = 123"), "Amarcord");
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
    m_answers.m_answers = {QMessageBox::Yes};
    View().WriteChanges();
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(Ask("select title || length from film where id = 2"), "Das Boot150");
    EXPECT_EQ(Ask("select title from film where id = 1"), "mine");

    // Somebody changes the very value while the question waits: told after it, and not overwritten.
    edit("again");
    m_answers.m_meanwhile = [&] { MakeDatabase("update film set title = 'theirs' where id = 1"); };
    m_answers.m_answers = {QMessageBox::Yes, QMessageBox::Ok};
    View().WriteChanges();
    EXPECT_EQ(Ask("select title from film where id = 1"), "theirs");
    EXPECT_NE(m_answers.m_texts.back().find("theirs"), std::string::npos);
    EXPECT_EQ(Changes(), "1 change not written");
}

TEST_F(WindowEdit, JoinsAreReadOnlyAndSayWhy) {
    MakeDatabase(kFilms);
    Open("select a.title, b.title from film a join film b on a.id = b.id");
    List().SetCurrentCell(0, 0);
    m_answers.m_answers = {QMessageBox::Ok};
    Key(Qt::Key_F2);
    EXPECT_NE(m_answers.m_texts.back().find("one table"), std::string::npos);
}

} // namespace
} // namespace vnquery::test

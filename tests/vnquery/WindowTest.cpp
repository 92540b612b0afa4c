// What a person does in the window, and what becomes of it.
#include "tests/vnquery/WindowRun.h"

namespace vnquery::test {
namespace {

constexpr char kFilms[] =
    "create table film(id integer primary key, title text not null, length int default 90, "
    "poster blob, plot clob);"
    "insert into film values (1, 'Brazil', 143, x'89504E470D0A1A0A00', 'A clerk dreams.'),"
    "(2, 'Das Boot', 149, null, null), (3, 'Alien', 117, null, 'In space'), "
    "(4, 'Amarcord', null, null, 'a' || char(10) || 'b')";

TEST_F(WindowTest, AQueryIsShownAndSorted) {
    MakeDatabase(kFilms);
    Open("select id, title, length, poster from film");
    SavePicture(Window(), "/tmp/vnq/first.png");
    ASSERT_EQ(List().GetCount(), 4);
    EXPECT_EQ(Cell(1, 1), "Das Boot");
}

} // namespace
} // namespace vnquery::test

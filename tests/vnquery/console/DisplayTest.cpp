// What vnquery prints, and that values are right whatever way they came in.
#include "examples/vnquery/messages/Messages.h"
#include "tests/vnquery/ProgramRun.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <thread>

#include <sqlite3.h>

namespace vnquery::test {
namespace {

using Display = ProgramTest;

TEST_F(Display, ColumnsAreAlignedAndKindsOfValuesDiffer) {
    MakeDatabase(
        "create table t(n integer, name text, v);"
        "insert into t values (1, 'short', 1.5), (1000, 'Gr\xC3\xBC\xC3\x9F' || char(10), null),"
        "(-3, '\xE6\x97\xA5', ''), (null, '-', x'00FF'), (5, hex(zeroblob(200)), "
        "9007199254740993)");
    const RunResult run = Query("select n, name, v from t");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, "   n  name          v\n"
                       "----  ------------  ----------------\n"
                       "   1  short         1.5\n"
                       "1000  Gr\xC3\xBC\xC3\x9F\\n        -\n"
                       "  -3  \xE6\x97\xA5\n"
                       "   -  \"-\"           <BLOB 2 B>\n"
                       "   5  <CLOB 400 B>  9007199254740993\n"
                       "(5 rows)\n");
    EXPECT_EQ(run.error, "");
    EXPECT_NE(
        Query("select n from t where n is null", {"--null", "NULL"}).out.find("\nNULL\n(1 row)"),
        std::string::npos);
    EXPECT_NE(Query("select name from t where n = 5", {"--text-limit", "400"}).out.find("000000"),
              std::string::npos);
    EXPECT_EQ(Query("select 0.1 as x, 1e300, -2.0", {}).out, "  x   1e300  -2.0\n"
                                                             "---  ------  ----\n"
                                                             "0.1  1e+300  -2.0\n"
                                                             "(1 row)\n");
    EXPECT_EQ(Query("select n from t where 0").out, "n\n-\n(0 rows)\n");
}

/// The values of all rows, row by row, as SQLite gives them to a plain statement; NULL is left out.
std::vector<std::pair<std::string, std::string>> AskSqlite(const std::string& file,
                                                           const std::string& sql) {
    std::vector<std::pair<std::string, std::string>> values;
    sqlite3* database = nullptr;
    sqlite3_open(file.c_str(), &database);
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr), SQLITE_OK) << sql;
    for (int row = 1; sqlite3_step(statement) == SQLITE_ROW; ++row) {
        for (int column = 0; column < sqlite3_column_count(statement); ++column) {
            if (sqlite3_column_type(statement, column) == SQLITE_NULL)
                continue;
            const void* bytes = sqlite3_column_type(statement, column) == SQLITE_BLOB
                                    ? sqlite3_column_blob(statement, column)
                                    : sqlite3_column_text(statement, column);
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
            values.emplace_back(std::to_string(row) + ":" + std::to_string(column + 1),
                                std::string(static_cast<const char*>(bytes), size));
        }
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return values;
}

/// Every way to a value gives the same bytes: in pieces from the table, through a sorter, out of a
/// join, where the row's number has another name, where the rows have none, out of a view, with a
/// default that is not in the row, as text of a database in UTF-16.
TEST_F(Display, ValuesAreTheSameByEveryWay) {
    const std::string tables =
        "create table t(id integer primary key, k text, v blob);"
        "insert into t values (1, 'b', zeroblob(300000) || x'01'), (2, 'a', 'text' || char(0, "
        "233)),"
        "(3, 'c', hex(zeroblob(200000))), (4, 'd', 17), (5, 'e', ''), (6, 'f', null), (7, 'g', "
        "x'');"
        "create table r(rowid text, v); insert into r(oid, rowid, v) select 10 - id, k, v from t;"
        "create table w(k primary key, v) without rowid; insert into w select k, v from t;"
        "create table g(v text, u text as (upper(v))); insert into g select v from t;"
        "create view s as select a.id, b.k, b.v from t a join t b on a.id <> b.id;"
        "create view y as select * from t;"
        "create table d(id); insert into d values (7);"
        "alter table d add column v text default 'added';"
        "create virtual table f using fts5(v); insert into f select v from t;";
    for (const char* encoding : {"pragma encoding='UTF-8';", "pragma encoding='UTF-16le';"}) {
        std::remove(Database().c_str());
        MakeDatabase(encoding + tables);
        for (const char* sql :
             {"select v from t order by k", "select v, k as v from t order by 2 desc limit 1",
              "select v, id from t order by v", "select max(k), v from t",
              "select max(k), v from t where 0",
              "select id as rowid, length(v), v, v from t where length(v) > 4 order by rowid desc",
              "select a.id, b.v from t a join t b on a.id <> b.id order by a.id, b.id",
              "select v from r order by rowid", "select v from w order by k", "select u, v from g",
              "select v, id from s order by id, k", "select v from y", "select v from d",
              "select distinct v from t", "select v from f", "select t.v from t, d limit 2"}) {
            const auto expected = AskSqlite(Database(), sql);
            std::vector<std::string> arguments = {"--quiet"};
            for (const auto& [cell, bytes] : expected)
                arguments.insert(arguments.end(), {"--save", cell, File(cell)});
            const RunResult run = Query(sql, arguments);
            EXPECT_EQ(run.code, 0) << sql << run.error;
            for (const auto& [cell, bytes] : expected)
                EXPECT_TRUE(m_files.Read(cell) == bytes) << encoding << sql << cell;
        }
    }
}

TEST_F(Display, StatisticsTellWhatIsOnDisk) {
    MakeDatabase("blob", SomeBytes(4 << 20, 1), false);
    const RunResult run =
        Query("select * from t", {"--stats", "--save", "1:2", File("saved"), "--save", "1:1", "x"});
    EXPECT_NE(run.out.find("<BLOB 4.0 MB>"), std::string::npos);
    EXPECT_NE(run.error.find("bytes read         4,194,305 (4.0 MB)\n"), std::string::npos)
        << run.error;
    EXPECT_NE(run.error.find("2 read, 2 kept to be saved: 1 in memory, 1 in a paged store\n"),
              std::string::npos);
    EXPECT_NE(run.error.find("swap file          " + m_temporary.Path() + "~dat-"),
              std::string::npos);
    EXPECT_NE(run.error.find("peak memory"), std::string::npos);
    // What is not saved is not kept.
    EXPECT_EQ(Query("select * from t", {"--stats"}).error.find("swap file"), std::string::npos);
}

/// Rows go out while the query runs: the widths come from the first mebibyte.
TEST_F(Display, ALaterWiderCellPushesItsRowOnly) {
    MakeDatabase("create table t(n, v, w);"
                 "with recursive r(i) as (select 1 union all select i + 1 from r where i < 30000)"
                 "insert into t select i, 'a text that fills a row ' || printf('%06d', i), 'b' "
                 "from r;"
                 "update t set v = v || ' and more' where n = 29999;"
                 "insert into t select null, null, null;");
    const auto last = [](const std::string& text) {
        return text.substr(text.rfind("\n29998") + 1);
    };
    EXPECT_EQ(last(Query("select * from t").out),
              "29998  a text that fills a row 029998  b\n"
              "29999  a text that fills a row 029999 and more  b\n"
              "30000  a text that fills a row 030000  b\n"
              "    -  -                               -\n"
              "(30,001 rows)\n");
    EXPECT_EQ(last(Query("select * from t", {"--widths", "all"}).out).substr(0, 88),
              "29998  a text that fills a row 029998           b\n"
              "29999  a text that fills a row 029999 ");
}

TEST_F(Display, RowsBeforeAFailureAreShown) {
    MakeDatabase("create table t(n, v); insert into t values (1, 'a'), (2, 'b'), (3, '{')");
    const RunResult run = Query("select n, json_extract(case n when 3 then v else '[1]' end, '$')"
                                " as j from t");
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.out, "n  j\n-  ---\n1  [1]\n2  [1]\n");
}

TEST_F(Display, OpensHelpPages) {
    const std::string path = getenv("PATH");
    m_files.Write("xdg-open", "#!/bin/sh\necho \"$@\" > " + File("part") + "\nmv " + File("part") +
                                  " " + File("opened") + "\n");
    std::filesystem::permissions(File("xdg-open"), std::filesystem::perms::owner_all);
    const std::string help =
        std::filesystem::path(VNQUERY_PROGRAM).parent_path().string() + "/Help/";
    setenv("PATH", (m_files.Path() + ":" + path).c_str(), 1);
    for (const auto& [locale, topic, page] :
         std::vector<std::array<std::string, 3>>{{"de_DE.UTF-8", "3", help + "l.DEU/save.htm"},
                                                 {"nl_NL.UTF-8", "3", help + "l.ENU/save.htm"},
                                                 {"C", "77", help + "l.ENU/contents.htm"}}) {
        setenv("LC_ALL", locale.c_str(), 1);
        EXPECT_EQ(Run({"--help-topic", topic}).code, 0);
        for (int i = 0; i < 1000 && !std::filesystem::exists(File("opened")); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_EQ(m_files.Read("opened"), page + "\n");
        std::filesystem::remove(File("opened"));
    }
    unsetenv("LC_ALL");
    setenv("PATH", "/nowhere", 1); // no program that shows pages
    const RunResult run = Run({"--help-topic", "3"});
    EXPECT_EQ(run.code, 3);
    EXPECT_NE(run.error.find("xdg-open"), std::string::npos) << run.error;
    setenv("PATH", path.c_str(), 1);
}

// Every page that the index and the pages lead to is there, and every page can be found.
TEST_F(Display, HelpIsComplete) {
    namespace fs = std::filesystem;
    const fs::path help = fs::path(VNQUERY_PROGRAM).parent_path() / "Help";
    const auto read = [](const fs::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    };
    std::set<std::string> indexes;
    for (const char* folder : {"l.ENU", "l.DEU"}) {
        std::string all = read(help / folder / "vnquery.ind");
        indexes.insert(all.substr(all.find('\n')));
        for (const auto& entry : fs::directory_iterator(help / folder)) {
            const std::string page = entry.path().filename().string();
            if (page.ends_with(".htm")) {
                EXPECT_NE(all.find("," + page), std::string::npos) << page;
                all += read(entry.path());
            }
        }
        const std::regex link(R"((?:href="|\d,)([a-z]+\.htm)(?:#([a-z]+))?)");
        for (std::sregex_iterator each(all.begin(), all.end(), link), end; each != end; ++each) {
            const std::string page = read(help / folder / (*each)[1].str());
            EXPECT_FALSE(page.empty()) << each->str();
            if ((*each)[2].matched) {
                EXPECT_NE(page.find("id=\"" + (*each)[2].str() + "\""), std::string::npos)
                    << each->str();
            }
        }
    }
    EXPECT_EQ(indexes.size(), 1u); // the same topics in each language
}

TEST_F(Display, HelpAndVersion) {
    const RunResult help = Run({"--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_NE(help.out.find("--record-length"), std::string::npos);
    EXPECT_NE(help.out.find("Exit codes"), std::string::npos);
    EXPECT_EQ(Run({"--version"}).code, 0);
    // Nothing of the option parser's own words, in any language.
    for (const char* locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "ja_JP.UTF-8", "he_IL.UTF-8"}) {
        setenv("LC_ALL", locale, 1);
        const std::string text = Run({"--help"}).out;
        EXPECT_NE(text.find("--record-length"), std::string::npos) << locale;
        for (const char* word : {"Usage", "OPTIONS", "Options:", "Excludes", "Print", "Display",
                                 "FILE", "TEXT:", "KIND"}) {
            if (word != std::string("Options:") || locale != std::string("fr_FR.UTF-8")) {
                EXPECT_EQ(text.find(word), std::string::npos) << locale << word;
            }
        }
    }
    setenv("LC_ALL", "C.UTF-8", 1);
}

/// A query may fail while the user chooses another language.
TEST(Messages, TextsAreReadWhileTheyAreLoadedAnew) {
    LoadTexts();
    std::jthread reader([](const std::stop_token& stop) {
        while (!stop.stop_requested())
            EXPECT_EQ(Text(IDS_VQ_APP), "vnquery");
    });
    for (int i = 0; i < 50; ++i)
        LoadTexts();
}

} // namespace
} // namespace vnquery::test

// Wrong input, full disks, Ctrl-C: a message, the right exit code, nothing left behind.
#include "tests/vnquery/ProgramRun.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <sstream>
#include <thread>

namespace vnquery::test {
namespace {

class Faults : public ProgramTest {
protected:
    /// Runs it and expects the code, and a message that has all of the texts.
    void ExpectFailure(int code, const std::vector<std::string>& arguments,
                       const std::vector<std::string>& texts) {
        const std::vector<std::string> before = Names();
        const RunResult run = Run(arguments);
        EXPECT_EQ(run.code, code) << run.error;
        EXPECT_EQ(run.error.substr(0, 9), "vnquery: ");
        for (const std::string& text : texts)
            EXPECT_NE(run.error.find(text), std::string::npos)
                << "no " << text << " in " << run.error;
        EXPECT_EQ(Names(), before) << "a file was left behind";
    }
    std::vector<std::string> Names() const {
        std::vector<std::string> names = m_files.Names();
        std::erase(names, "run.out");
        std::erase(names, "run.err");
        std::ranges::sort(names);
        return names;
    }
};

TEST_F(Faults, WrongCommandLines) {
    MakeDatabase("create table t(v); insert into t values (1), (null)");
    const std::string db = Database();
    ExpectFailure(2, {}, {"--db"});
    ExpectFailure(2, {"--db", db}, {"--sql"});
    ExpectFailure(2, {"--bogus"}, {"--bogus", "--help"});
    ExpectFailure(2, {"--db", db, "--connect", "x", "--sql", "select 1"}, {"--connect"});
    ExpectFailure(2, {"--db", db, "--sql", "select 1", "--save", "1:1"}, {"--save"});
    for (const char* cell :
         {"1", "1:", ":1", "0:1", "1:0", "-1:1", "1:1x", "a:b", "99999999999999999999:1"})
        ExpectFailure(2, {"--db", db, "--sql", "select 1", "--save", cell, File("x")},
                      {"ROW:COL", cell});
    ExpectFailure(2, {"--db", db, "--sql", "select v from t", "--save", "3:1", File("x")},
                  {"row 3"});
    ExpectFailure(2, {"--db", db, "--sql", "select v from t", "--save", "2:1", File("x")},
                  {"NULL"});
    ExpectFailure(2, {"--db", db, "--sql", "select 1", "--export", File("x"), "--ccsid", "9"},
                  {"CCSID 9"});
    ExpectFailure(2, {"--db", db, "--sql", "select 1", "--ccsid", "65537"}, {"--ccsid"});
    ExpectFailure(2, {"--db", db, "--sql", "select 1", "--record-length", "-1"},
                  {"--record-length"});
    ExpectFailure(2, {"--db", db, "--sql", "select 1", "--line-break", "unix"}, {"--line-break"});
    ExpectFailure(2, {"--translate", "37:9", db, File("x")}, {"CCSID 9"});
}

/// What would be ignored is refused, and the message says why.
TEST_F(Faults, OptionsWithoutEffect) {
    MakeDatabase("create table t(v); insert into t values (1)");
    const std::string x = File("x");
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"--ccsid --export", "--ccsid", "37"},
             {"--record-length --export", "--record-length", "80"},
             {"--record-length --ccsid", "--record-length", "80", "--save", "1:1", x},
             {"--strict --export", "--strict"},
             {"--widths csv", "--widths", "all", "--format", "csv"},
             {"--null json", "--null", "-", "--format", "json"},
             {"--headings xml", "--no-headings", "--format", "xml"},
             {"--blobs insert", "--blobs", "hex", "--format", "insert", "--export", x},
             {"--table csv", "--table", "t", "--format", "csv"},
             {"--ccsid json UTF-8", "--ccsid", "37", "--format", "json", "--export", x},
             {"csv separator", "--separator", "", "--format", "csv"},
             {"--format --export", "--format", "csv", "--quiet"},
             {"--des-pad --des", "--des-pad"}}) {
        std::vector<std::string> arguments = {"--db", Database(), "--sql", "select v from t"};
        arguments.insert(arguments.end(), words.begin() + 1, words.end());
        std::vector<std::string> texts;
        std::istringstream expected(words[0]);
        for (std::string text; expected >> text;)
            texts.push_back(text);
        ExpectFailure(2, arguments, texts);
    }
    ExpectFailure(2, {"--translate", "37:1208", Database(), x, "--quiet"}, {"--quiet"});
    ExpectFailure(2, {"--db", Database(), "--sql", "select 1; select 2", "--export", x},
                  {"--export", "2"});
    ExpectFailure(3, {"--db", Database(), "--file", File("none")}, {File("none"), "No such file"});
}

TEST_F(Faults, DatabasesAndQueries) {
    MakeDatabase("create table t(v); insert into t values (1)");
    m_files.Write("none.sqlite", std::string(5000, 'x'));
    ExpectFailure(1, {"--db", File("missing"), "--sql", "select 1"}, {"missing", "no such file"});
    ExpectFailure(1, {"--db", m_files.Path(), "--sql", "select 1"}, {"cannot", "folder"});
    ExpectFailure(1, {"--db", File("none.sqlite"), "--sql", "select 1"},
                  {"none.sqlite", "no SQLite"});
    const std::string db = Database();
    ExpectFailure(1, {"--db", db, "--sql", "selec"}, {"syntax error"});
    ExpectFailure(1, {"--db", db, "--sql", "select x from t"}, {"no such column"});
    ExpectFailure(1, {"--db", db, "--sql", " ; -- "}, {"no query"});
    ExpectFailure(1, {"--db", db, "--sql", "select 1; delete from t; select 2"},
                  {"statement 2", "changes nothing"});
    ExpectFailure(1, {"--db", db, "--sql", "delete from t"}, {"changes nothing"});
    ExpectFailure(1, {"--db", db, "--sql", "select abs(-9223372036854775808)"}, {"overflow"});
    ExpectFailure(1, {"--db", db, "--sql", "delete from t returning v"}, {"not run", "DELETE"});
    ExpectFailure(1, {"--db", db, "--sql", "pragma journal_mode = wal"}, {"not run", "PRAGMA"});
    for (const std::string& sql :
         {"vacuum into '" + File("other") + "'", "attach '" + File("other") + "' as other"})
        ExpectFailure(1, {"--db", db, "--sql", sql}, {"changes nothing"});
    EXPECT_NE(Query("select count(*) || ' row' from t").out.find("1 row"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(File("other")));
    ExpectFailure(1, {"--connect", "DSN=no such source", "--sql", "select 1"},
                  {"cannot connect", "IM002"});
}

/// A file whose header is right and whose pages are not.
TEST_F(Faults, DamagedDatabase) {
    MakeDatabase("blob", SomeBytes(100000, 3), false);
    std::filesystem::resize_file(Database(), 20480);
    ExpectFailure(1, {"--db", Database(), "--sql", "select * from t"}, {"malformed"});
}

TEST_F(Faults, FilesThatCannotBeWritten) {
    MakeDatabase("text", std::string(2000000, 'x'), true);
    m_files.Write("plain", "");
    for (const std::string& target :
         {File("no/such/folder"), m_files.Path(), File("plain/x"), std::string("/dev/full")}) {
        ExpectFailure(3, {"--db", Database(), "--sql", "select v from t", "--export", target},
                      {target});
        ExpectFailure(3, {"--db", Database(), "--sql", "select v from t", "--save", "1:1", target},
                      {target});
        ExpectFailure(3, {"--translate", "37:1208", File("plain"), target + "/"}, {target});
    }
    ExpectFailure(3, {"--translate", "37:1208", File("missing"), File("x")}, {"missing"});
}

/// The old file survives an export that finds no room, and no success is claimed.
TEST_F(Faults, FullDisk) {
    MakeDatabase("text", std::string(200000, 'x'), true);
    m_files.Write("old", "old");
    for (const char* option : {"--export", "--save"}) {
        std::vector<std::string> arguments = {"--db",    Database(), "--sql", "select v from t",
                                              "--quiet", "--ccsid",  "1200",  option};
        if (std::string(option) == "--save")
            arguments.push_back("1:1");
        arguments.push_back(File("old"));
        const RunResult run = RunWithFileLimit(102400, arguments);
        EXPECT_EQ(run.code, 3) << run.error;
        EXPECT_NE(run.error.find(File("old")), std::string::npos) << run.error;
        EXPECT_EQ(run.error.find("Exported"), std::string::npos);
        EXPECT_EQ(m_files.Read("old"), "old");
        EXPECT_EQ(Names(), (std::vector<std::string>{"old", "test.sqlite"}));
    }
}

/// A file that may not be written stays; one that may be, in a folder where none can be made, too.
TEST_F(Faults, ProtectedTargets) {
    if (geteuid() == 0)
        GTEST_SKIP() << "nothing is protected from root";
    MakeDatabase("text", "new", true);
    std::filesystem::create_directory(File("folder"));
    for (const char* name : {"readonly", "folder/old"})
        m_files.Write(name, "old");
    std::filesystem::permissions(File("readonly"), std::filesystem::perms::owner_read);
    std::filesystem::permissions(File("folder"), std::filesystem::perms::owner_read |
                                                     std::filesystem::perms::owner_exec);
    ExpectFailure(3, {"--db", Database(), "--sql", "select v from t", "--export", File("readonly")},
                  {"readonly"});
    EXPECT_EQ(m_files.Read("readonly"), "old");
    EXPECT_EQ(Query("select v from t", {"--quiet", "--export", File("folder/old")}).code, 0);
    EXPECT_EQ(m_files.Read("folder/old"), "new\n");
    std::filesystem::permissions(File("folder"), std::filesystem::perms::owner_all);
}

TEST_F(Faults, NoRoomForTheSwapFile) {
    MakeDatabase("blob", SomeBytes(6000000, 7), false);
    const RunResult run = RunWithFileLimit(
        102400, {"--db", Database(), "--sql", "select * from t", "--save", "1:2", File("saved")});
    EXPECT_EQ(run.code, 3);
    EXPECT_NE(run.error.find("row 1, column 2"), std::string::npos) << run.error;
    EXPECT_NE(run.error.find("TMPDIR"), std::string::npos) << run.error;
    EXPECT_EQ(run.out, "");
}

/// A first row that goes to the swap file and into an export, then one that never comes.
TEST_F(Faults, SignalsStopAndRemoveTheSwapFile) {
    MakeDatabase("create table t(v)");
    for (const int signal : {SIGINT, SIGTERM}) {
        const pid_t process =
            Start({VNQUERY_PROGRAM, "--db", Database(), "--sql",
                   "select zeroblob(6000000) union all "
                   "select * from (with recursive c(x) as (select 1 union all select x + 1 from c) "
                   "select sum(x) from c)",
                   "--save", "1:1", File("saved"), "--export", File("exported")});
        while (m_temporary.Names().empty())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        kill(process, signal);
        const RunResult run = Wait(process);
        EXPECT_EQ(run.code, 128 + signal);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.error.find("stopped"), std::string::npos);
        EXPECT_EQ(Names(), std::vector<std::string>{"test.sqlite"});
    }
}

TEST_F(Faults, OutputThatNobodyReads) {
    MakeDatabase(
        "create table t(v); with recursive c(x) as (select 1 union all select x + 1 from c limit "
        "100000) insert into t select x from c");
    const RunResult run = Wait(Start({"/bin/sh", "-c", "\"$0\" \"$@\" >/dev/full", VNQUERY_PROGRAM,
                                      "--db", Database(), "--sql", "select * from t"}));
    EXPECT_EQ(run.code, 3);
    EXPECT_NE(run.error.find("standard output"), std::string::npos) << run.error;
}

} // namespace
} // namespace vnquery::test

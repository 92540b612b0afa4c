#include "tests/vnquery/ProgramRun.h"

#include <fcntl.h>
#include <iconv.h>
#include <random>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vnquery::test {

namespace {

void Execute(sqlite3* database, const std::string& sql) {
    char* message = nullptr;
    if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK)
        throw std::runtime_error(message);
}

} // namespace

ProgramTest::ProgramTest() {
    // Constant figures, whatever the machine's settings.
    setenv("VNBYTSTR_PROFILE", File("no-profile.ini").c_str(), 1);
    setenv("LC_ALL", "C.UTF-8", 1); // English
}

void ProgramTest::MakeDatabase(const std::string& statements) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(Database().c_str(), &database), SQLITE_OK);
    Execute(database, statements);
    sqlite3_close(database);
}

void ProgramTest::MakeDatabase(const std::string& type, const std::string& bytes, bool isText) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(Database().c_str(), &database), SQLITE_OK);
    Execute(database, "create table t(id integer primary key, v " + type + ")");
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(database, "insert into t values (1, ?)", -1, &insert, nullptr);
    const int size = static_cast<int>(bytes.size());
    if (isText)
        sqlite3_bind_text(insert, 1, bytes.data(), size, SQLITE_STATIC);
    else
        sqlite3_bind_blob(insert, 1, bytes.data(), size, SQLITE_STATIC);
    EXPECT_EQ(sqlite3_step(insert), SQLITE_DONE);
    sqlite3_finalize(insert);
    sqlite3_close(database);
}

pid_t ProgramTest::Start(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = arguments;
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    setenv("TMPDIR", m_temporary.Path().c_str(), 1);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, 1, File("run.out").c_str(), flags, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, File("run.err").c_str(), flags, 0600);
    pid_t process = -1;
    EXPECT_EQ(posix_spawn(&process, argv[0], &actions, nullptr, argv.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    unsetenv("TMPDIR");
    return process;
}

RunResult ProgramTest::Wait(pid_t process) {
    int status = 0;
    EXPECT_EQ(waitpid(process, &status, 0), process);
    EXPECT_TRUE(m_temporary.Names().empty()) << "left behind: " << m_temporary.Names().front();
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    return {code, m_files.Read("run.out"), m_files.Read("run.err")};
}

RunResult ProgramTest::Run(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {VNQUERY_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return Wait(Start(words));
}

RunResult ProgramTest::Query(const std::string& sql, const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"--db", Database(), "--sql", sql};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return Run(words);
}

RunResult ProgramTest::RunWithFileLimit(std::size_t limit,
                                        const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {
        "/bin/sh", "-c", "ulimit -f " + std::to_string(limit / 512) + "; exec \"$0\" \"$@\"",
        VNQUERY_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return Wait(Start(words));
}

std::string Convert(const std::string& text, const char* from, const char* to) {
    iconv_t conversion = iconv_open(to, from);
    std::string out(text.size() * 4 + 16, '\0');
    char* in = const_cast<char*>(text.data());
    std::size_t inLeft = text.size();
    char* next = out.data();
    std::size_t room = out.size();
    EXPECT_NE(iconv(conversion, &in, &inLeft, &next, &room), static_cast<std::size_t>(-1));
    iconv_close(conversion);
    out.resize(out.size() - room);
    return out;
}

std::string SomeBytes(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(count, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

} // namespace vnquery::test

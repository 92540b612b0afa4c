// The POSIX system where the kernel refuses: what is an error, and what is not.
#include "src/os/NativeSystem.h"
#include "src/os/Paths.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/RefusedCall.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>

namespace vnbytstr {
namespace {

class PosixRefusalTest : public ::testing::Test {
protected:
    FileHandle Open(const std::string& name) {
        FileHandle handle = kNoFile;
        EXPECT_EQ(m_system.OpenFile(name.c_str(), kOpenRead | kOpenWrite, handle), 0) << name;
        return handle;
    }
    std::string Name(const char* name) const { return m_folder.File(name); }

    test::TemporaryFolder m_folder;
    NativeSystem m_system;
};

TEST_F(PosixRefusalTest, ByTheFileSystem) {
    for (const char* name : {"file", "other", "noted", "labelled"})
        m_folder.Write(name, name);
    m_folder.Link("file", "link");
    const bool isNoted = ::setxattr(Name("noted").c_str(), "user.a", "a", 1, 0) == 0;
    const bool isLabelled = ::setxattr(Name("labelled").c_str(), "security.a", "a", 1, 0) == 0;
    const FileHandle file = Open(Name("file")), other = Open(Name("other"));
    const auto rename = [&](const char* from, const char* to) {
        return m_system.RenameFile(Name(from).c_str(), Name(to).c_str(), false);
    };
    const auto renameBothWays = [&] {
        const bool isDone = rename("file", "new") == 0 && m_folder.Read("new") == "file" &&
                            !std::filesystem::exists(Name("file"));
        return isDone ? rename("new", "file") : 1;
    };
    const auto copyAttributes = [&](const char* from) {
        return [&, from] { return m_system.CopyFileAttributes(Name(from).c_str(), other); };
    };
    const auto close = [&] { return m_system.CloseFile(file); };
    const auto sync = [&] { return m_system.SyncFolder(m_folder.Path().c_str()); };
    const auto make = [&] { return m_system.MakeFolder(Name("x/y").c_str()); };
    std::vector<std::string> names;
    std::string resolved;
    struct Case {
        const char* what;
        long call;
        int error;
        std::function<int()> action;
        int expected;
        bool isPossible = true;
    };
    for (const Case& each : {
             Case{"close that a signal ended", SYS_close, EINTR, close, 0},
             Case{"close", SYS_close, EIO, close, EIO},
             Case{"folders that are not synced", SYS_fsync, EINVAL, sync, 0},
             Case{"sync of a folder", SYS_fsync, EIO, sync, EIO},
             Case{"list", SYS_getdents64, EIO,
                  [&] { return m_system.ListFolder(m_folder.Path().c_str(), names); }, EIO},
             Case{"link", SYS_readlink, EIO,
                  [&] { return m_system.ResolveName(Name("link").c_str(), resolved); }, EIO},
             Case{"own name", SYS_readlink, EIO,
                  [&] { return m_system.GetModuleFileName().empty() ? 0 : 1; }, 0},
             Case{"read-only folders", SYS_mkdir, EROFS, make, EROFS},
             Case{"folder above", SYS_mkdir, ENOSPC, make, ENOSPC},
             Case{"rename", SYS_renameat2, EIO, [&] { return rename("file", "new"); }, EIO},
             // Where a rename cannot promise to replace nothing, a second name can.
             Case{"plain rename", SYS_renameat2, EINVAL, renameBothWays, 0},
             Case{"older rename", SYS_renameat2, ENOSYS, renameBothWays, 0},
             Case{"plain rename to a name that is taken", SYS_renameat2, EINVAL,
                  [&] { return rename("file", "other"); }, EEXIST},
             Case{"no attributes", SYS_listxattr, ENOTSUP, copyAttributes("noted"), 0},
             Case{"unknown attributes", SYS_listxattr, ENOSYS, copyAttributes("noted"), 0},
             Case{"attributes", SYS_listxattr, EIO, copyAttributes("noted"), EIO},
             Case{"attribute", SYS_getxattr, EIO, copyAttributes("noted"), EIO, isNoted},
             Case{"attribute that is not taken", SYS_fsetxattr, EPERM, copyAttributes("noted"),
                  EPERM, isNoted},
             Case{"the system's own attribute", SYS_fsetxattr, EPERM, copyAttributes("labelled"), 0,
                  isLabelled},
             Case{"folder for temporary files", SYS_newfstatat, ENOENT,
                  [&] { return m_system.GetTemporaryFolder() == "/tmp/" ? 0 : 1; }, 0},
         }) {
        constexpr int kNoFilters = 255;
        const int result = !each.isPossible ? each.expected : test::InChild([&] {
            ::unsetenv("TMPDIR");
            const int first = each.call == SYS_close ? static_cast<int>(file) : -1;
            return test::Refuse(each.call, each.error, first) ? each.action() : kNoFilters;
        });
        if (result == kNoFilters)
            GTEST_SKIP() << "the kernel has no filters of system calls";
        EXPECT_EQ(result, each.expected) << each.what;
    }
    EXPECT_EQ(m_folder.Read("file"), "file");
    EXPECT_EQ(m_folder.Read("other"), "other");
    EXPECT_EQ(copyAttributes("none")(), ENOENT);
    m_system.CloseFile(file);
    m_system.CloseFile(other);
}

TEST_F(PosixRefusalTest, HandlesThatAreClosed) {
    m_folder.Write("file", "");
    const FileHandle handle = Open(Name("file"));
    m_system.CloseFile(handle);
    std::uint64_t number = 0;
    FileStatus status;
    EXPECT_EQ(m_system.CloseFile(handle), EBADF);
    EXPECT_EQ(m_system.SeekFile(handle, 0, SeekOrigin::Begin, number), EBADF);
    EXPECT_EQ(m_system.GetFileLength(handle, number), EBADF);
    EXPECT_EQ(m_system.SetFileLength(handle, 0), EBADF);
    EXPECT_EQ(m_system.GetFileStatus(handle, status), EBADF);
    EXPECT_EQ(m_system.ReleaseScratch(handle), EBADF);
    EXPECT_EQ(m_system.LockFile(handle, true, false), EBADF);
    EXPECT_EQ(m_system.GetLockHolder(handle), "");
    FileHandle none = kNoFile;
    EXPECT_EQ(m_system.OpenOwnStream("/proc/self/status", none), ENOENT);
}

/// A process that has all the files open that it may: no function falls over.
TEST_F(PosixRefusalTest, NoMoreOpenFiles) {
    m_folder.Write("file", "");
    const FileHandle file = Open(Name("file"));
    ASSERT_EQ(m_system.LockFile(file, true, false), 0);
    const std::string own = "/proc/self/fd/" + std::to_string(file);
    FileHandle none = kNoFile;
    FileStatus status;
    std::vector<std::string> names;
    rlimit before;
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit low = {0, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &low);
    EXPECT_EQ(m_system.OpenFile(Name("file").c_str(), kOpenRead, none), EMFILE);
    EXPECT_EQ(m_system.ReopenFile(file, kOpenRead, none), EMFILE);
    EXPECT_NE(m_system.OpenOwnStream(own.c_str(), none), 0);
    EXPECT_EQ(m_system.SyncFolder(m_folder.Path().c_str()), EMFILE);
    EXPECT_EQ(m_system.ListFolder(m_folder.Path().c_str(), names), EMFILE);
    EXPECT_EQ(m_system.GetNewFileMode(), 0644u);
#ifndef __SANITIZE_ADDRESS__ // its companion checks the type of a stream by a pipe of its own
    EXPECT_EQ(m_system.GetLockHolder(file), "");
    EXPECT_EQ(m_system.GetLibraryFileName(), "");
    EXPECT_EQ(m_system.GetMemoryLoad(), 0u);
#endif
    EXPECT_EQ(m_system.GetFileStatus(Name("file").c_str(), status), 0);
    ::setrlimit(RLIMIT_NOFILE, &before);
    m_system.CloseFile(file);
}

/// The current folder has been removed.
TEST_F(PosixRefusalTest, NoCurrentFolder) {
    EXPECT_EQ(test::InChild([&] {
                  std::filesystem::create_directory(Name("gone"));
                  std::filesystem::current_path(Name("gone"));
                  std::filesystem::remove(Name("gone"));
                  std::string resolved;
                  return m_system.ResolveName("x", resolved) == ENOENT && AbsoluteName("x") == "x"
                             ? 0
                             : 1;
              }),
              0);
}

TEST_F(PosixRefusalTest, NoEnvironment) {
    EXPECT_EQ(test::InChild([&] {
                  ::clearenv();
                  const bool hasDefaults = m_system.GetTextLocale() == "C" &&
                                           SettingsFolder().empty() &&
                                           m_system.GetTemporaryFolder() == "/var/tmp/";
                  ::setenv("TMPDIR", "/other", 1);
                  return hasDefaults && m_system.GetTemporaryFolder() == "/other/" ? 0 : 1;
              }),
              0);
}

int g_terminal = -1;

/// A user who types only when a signal has come.
void TypeWhenSignalled() {
    struct sigaction action {};
    action.sa_handler = [](int) { // without SA_RESTART
        [[maybe_unused]] const ssize_t written = ::write(g_terminal, "late\n", 5);
    };
    ::sigaction(SIGALRM, &action, nullptr);
    const itimerval soon = {{0, 0}, {0, 20000}};
    ::setitimer(ITIMER_REAL, &soon, nullptr);
}

/// A terminal whose user types that; what a child gets for an answer, or "none".
std::string Answer(const std::string& typed) {
    const int terminal = g_terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0)
        return "no terminal";
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    const std::string slave = ::ptsname(terminal);
    EXPECT_EQ(::write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    EXPECT_EQ(test::InChild([&] {
                  const int user = ::open(slave.c_str(), O_RDWR | O_NOCTTY);
                  ::dup2(user, STDIN_FILENO);
                  ::dup2(user, STDERR_FILENO);
                  if (typed.empty())
                      TypeWhenSignalled();
                  std::string answer;
                  if (!NativeSystem().AskAtTerminal("Really? ", answer))
                      answer = "none";
                  return ::write(ends[1], answer.data(), answer.size()) < 0 ? 1 : 0;
              }),
              0);
    ::close(ends[1]);
    std::string answer(10000, ' ');
    answer.resize(static_cast<std::size_t>(::read(ends[0], answer.data(), answer.size())));
    ::close(ends[0]);
    ::close(terminal);
    return answer;
}

TEST(PosixTerminal, AnswersAreLines) {
    if (Answer("x\n") == "no terminal")
        GTEST_SKIP() << "there are no terminals here";
    EXPECT_EQ(Answer("yes\nno\n"), "yes\n");
    EXPECT_EQ(Answer("\n"), "\n");
    EXPECT_EQ(Answer(std::string(1000, 'y') + "\n"), std::string(1000, 'y') + "\n");
    EXPECT_EQ(Answer("\x04"), "none"); // the end of the input
    EXPECT_EQ(Answer("cut\x04\x04"), "none");
    EXPECT_EQ(Answer(""), "late\n");
    std::string answer;
    EXPECT_EQ(test::InChild([&] {
                  ::close(STDIN_FILENO);
                  return NativeSystem().AskAtTerminal("Really? ", answer) ? 1 : 0;
              }),
              0);
}

} // namespace
} // namespace vnbytstr

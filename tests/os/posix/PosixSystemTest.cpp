// The POSIX system: what the layers above rely on.
#include "src/os/CpuKernel.h"
#include "src/os/MemoryRegion.h"
#include "src/os/NativeSystem.h"
#include "src/os/Paths.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <thread>

/// fontconfig keeps some memory for the life of the process.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}

namespace vnbytstr {
namespace {

using test::TemporaryFolder;

class PosixSystemTest : public ::testing::Test {
protected:
    FileHandle Open(const std::string& name, unsigned flags, int expected = 0) {
        FileHandle handle = kNoFile;
        EXPECT_EQ(m_system.OpenFile(name.c_str(), flags, handle), expected) << name;
        return handle;
    }
    TemporaryFolder m_folder;
    NativeSystem m_system;
};

TEST_F(PosixSystemTest, AProgramThatWasReplacedKeepsItsName) {
    if (const char* const own = std::getenv("VNBYTSTR_TEST_REPLACED")) { // the copy below
        EXPECT_EQ(m_system.GetModuleFileName(), own);
        std::filesystem::remove(own);
        EXPECT_EQ(m_system.GetModuleFileName(), own);
        const std::string marked = std::string(own) + " (deleted)";
        std::ofstream(marked) << "a file of that very name";
        EXPECT_EQ(m_system.GetModuleFileName(), marked);
        return;
    }
    const std::string copy = m_folder.File("program");
    std::filesystem::copy_file(m_system.GetModuleFileName(), copy);
    const std::string command = "VNBYTSTR_TEST_REPLACED='" + copy + "' '" + copy +
                                "' --gtest_filter=*AProgramThatWasReplaced* >/dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"program (deleted)"});
}

/// Read once, before anything is computed: so by a process of its own.
TEST_F(PosixSystemTest, TheEnvironmentChoosesTheKernel) {
    if (const char* const expected = std::getenv("VNBYTSTR_TEST_KERNEL")) {
        EXPECT_STREQ(KernelName(ActiveKernel()), expected);
        return;
    }
    const auto check = [&](const std::string& wanted, Kernel expected) {
        const std::string command =
            "VNBYTSTR_KERNEL=" + wanted + " VNBYTSTR_TEST_KERNEL=" + KernelName(expected) + " '" +
            m_system.GetModuleFileName() + "' --gtest_filter=*TheEnvironmentChooses* >/dev/null";
        EXPECT_EQ(std::system(command.c_str()), 0) << wanted;
    };
    for (const Kernel kernel : AvailableKernels())
        check(KernelName(kernel), kernel);
    check("none", AvailableKernels().back());
}

TEST_F(PosixSystemTest, MovesInFilesWithAndWithoutTheKernelsPosition) {
    const std::string name = m_folder.File("f");
    std::size_t done;
    std::uint64_t position;
    // A handle that child processes inherit leaves the position to the kernel; both must agree.
    for (const unsigned extra : {0u, static_cast<unsigned>(kOpenInherit)}) {
        const FileHandle handle =
            Open(name, kOpenRead | kOpenWrite | kOpenCreate | kOpenTruncate | extra);
        EXPECT_EQ(m_system.WriteFile(handle, "0123456789", 10, done), 0);
        EXPECT_EQ(m_system.SeekFile(handle, -3, SeekOrigin::End, position), 0);
        EXPECT_EQ(position, 7u);
        EXPECT_EQ(m_system.SeekFile(handle, -2, SeekOrigin::Current, position), 0);
        EXPECT_EQ(position, 5u);
        EXPECT_EQ(m_system.SeekFile(handle, -6, SeekOrigin::Current, position), EINVAL);
        char text[11] = "";
        EXPECT_EQ(m_system.ReadFile(handle, text, 10, done), 0);
        EXPECT_EQ(std::string(text, done), "56789");
        EXPECT_EQ(m_system.ReadFile(handle, text, 10, done), 0);
        EXPECT_EQ(done, 0u);
        EXPECT_EQ(m_system.SeekFile(handle, 20, SeekOrigin::Begin, position), 0);
        const BYTE a[] = {'a'}, bc[] = {'b', 'c'};
        const std::span<const BYTE> parts[] = {a, bc};
        EXPECT_EQ(m_system.WriteFileGather(handle, parts, done), 0);
        EXPECT_EQ(m_system.SeekFile(handle, 0, SeekOrigin::Current, position), 0);
        EXPECT_EQ(position, 23u);
        EXPECT_EQ(m_system.CloseFile(handle), 0);
        EXPECT_EQ(m_folder.Read("f"), std::string("0123456789") + std::string(10, '\0') + "abc");
    }
    const FileHandle reader = Open(name, kOpenRead);
    EXPECT_EQ(m_system.WriteFile(reader, "x", 1, done), EBADF);
    m_system.CloseFile(reader);
    Open(m_folder.Path(), kOpenRead, EISDIR);
    Open(m_folder.File("none"), kOpenRead, ENOENT);
    const FileHandle next = Open(name, kOpenRead); // the folder is not open any more
    EXPECT_EQ(next, reader);
    m_system.CloseFile(next);
    EXPECT_EQ(m_system.SyncFile(next), EBADF);
}

TEST_F(PosixSystemTest, LinksAreFollowedAsFarAsTheKernelDoes) {
    m_folder.Write("0", "");
    for (int i = 1; i <= 41; ++i)
        ASSERT_EQ(
            ::symlink(std::to_string(i - 1).c_str(), m_folder.File(std::to_string(i)).c_str()), 0);
    std::string resolved;
    EXPECT_EQ(m_system.ResolveName(m_folder.File("40").c_str(), resolved), 0);
    EXPECT_EQ(FileNameOf(resolved), "0");
    EXPECT_EQ(m_system.ResolveName(m_folder.File("41").c_str(), resolved), ELOOP);
    EXPECT_EQ(m_system.ResolveName((m_folder.File("0") + "/x").c_str(), resolved), ENOTDIR);
    EXPECT_EQ(m_system.ResolveName("", resolved), ENOENT);
    // As the C library has it.
    ASSERT_EQ(m_system.MakeFolder(m_folder.File("x/fd").c_str()), 0);
    m_folder.Link("../..", "x/fd/up");
    m_folder.Link(m_folder.File("x/fd/"), "absolute");
    m_folder.Link("none", "dangling");
    for (const std::string& name :
         {std::string("/"), std::string("//"), std::string("/.."), std::string("."),
          std::string(".."), std::string("/bin/sh"), std::string("/proc/self/exe"),
          m_folder.File("./x/../x/fd//up/40"), m_folder.File("absolute"),
          m_folder.File("absolute/up/x/fd/./up"), m_folder.File("x/fd/up"),
          m_folder.File("dangling"), m_folder.File("dangling/x"), m_folder.File("x/none"),
          m_folder.File("x/none/..")}) {
        const std::unique_ptr<char, decltype(&std::free)> expected(
            ::realpath(name.c_str(), nullptr), &std::free);
        const int error = expected ? 0 : errno;
        EXPECT_EQ(m_system.ResolveName(name.c_str(), resolved), error) << name;
        if (expected) {
            EXPECT_EQ(resolved, expected.get()) << name;
        }
    }
}

TEST_F(PosixSystemTest, SignalsEndNoCall) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    sigset_t alarm, before;
    ::sigemptyset(&alarm);
    ::sigaddset(&alarm, SIGALRM);
    ::pthread_sigmask(SIG_BLOCK, &alarm, &before); // for the writer: the signals are the reader's
    std::thread writer([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
        EXPECT_EQ(::write(ends[1], "x", 1), 1);
    });
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    static volatile sig_atomic_t signals;
    signals = 0;
    struct sigaction count {
    }, old;
    count.sa_handler = [](int) { signals = signals + 1; }; // without SA_RESTART
    ::sigaction(SIGALRM, &count, &old);
    const itimerval often = {{0, 2000}, {0, 2000}}, never = {};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    std::string read(1, ' ');
    std::size_t done = 0;
    EXPECT_EQ(m_system.ReadFile(ends[0], read.data(), 1, done), 0);
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &old, nullptr);
    writer.join();
    EXPECT_EQ(done, 1u);
    EXPECT_EQ(read, "x");
    EXPECT_GT(signals, 0);
    m_system.CloseFile(ends[0]);
    m_system.CloseFile(ends[1]);
}

TEST_F(PosixSystemTest, ScratchFilesBelongToTheProcessAndAreLocked) {
    const std::string name = m_folder.File("s");
    const unsigned scratch = kOpenRead | kOpenWrite | kOpenCreate | kOpenExclusive | kOpenScratch;
    const FileHandle handle = Open(name, scratch);
    Open(name, scratch, EEXIST);
    ASSERT_EQ(::symlink("nowhere", m_folder.File("link").c_str()), 0);
    Open(m_folder.File("link"), scratch, EEXIST);
    FileStatus status;
    EXPECT_EQ(m_system.GetFileStatus(m_folder.File("link").c_str(), status), 0);
    EXPECT_TRUE(status.isLink && !status.isRegular);
    EXPECT_EQ(m_system.GetFileStatus(handle, status), 0);
    EXPECT_TRUE(status.isScratch && status.isOwn && status.isRegular);
    EXPECT_EQ(m_system.LockFile(handle, true, false), 0);
    const FileHandle other = Open(name, kOpenRead);
    EXPECT_EQ(m_system.LockFile(other, true, false), EWOULDBLOCK);
    EXPECT_EQ(m_system.ReleaseScratch(handle), 0);
    EXPECT_EQ(m_system.GetFileStatus(name.c_str(), status), 0);
    EXPECT_FALSE(status.isScratch);
    m_system.CloseFile(handle);
    EXPECT_EQ(m_system.LockFile(other, true, false), 0);
    EXPECT_EQ(m_system.GetLockHolder(other),
              "process " + std::to_string(::getpid()) + " (os_test)");
    EXPECT_EQ(m_system.LockFile(other, false, true), 0);
    const FileHandle third = Open(name, kOpenRead);
    EXPECT_EQ(m_system.LockFile(third, false, false), 0);
    for (const FileHandle each : {other, third}) {
        EXPECT_EQ(m_system.UnlockFile(each), 0);
        m_system.CloseFile(each);
    }
    const FileHandle unlocked = Open(name, kOpenRead);
    struct flock ofAnotherKind {};
    ofAnotherKind.l_type = F_RDLCK;
    EXPECT_EQ(::fcntl(static_cast<int>(unlocked), F_SETLK, &ofAnotherKind), 0);
    EXPECT_EQ(m_system.GetLockHolder(unlocked), "");
    m_system.CloseFile(unlocked);
}

TEST_F(PosixSystemTest, PrivateFilesAreNotOpenedThroughLinksNorInherited) {
    m_folder.Write("plain", "content");
    ASSERT_EQ(::symlink("plain", m_folder.File("link").c_str()), 0);
    for (const unsigned flag : {kOpenPrivate, kOpenScratch})
        for (const unsigned create : {0u, static_cast<unsigned>(kOpenCreate)})
            Open(m_folder.File("link"), kOpenRead | kOpenWrite | create | flag, ELOOP);
    EXPECT_EQ(m_folder.Read("plain"), "content");
    const FileHandle through = Open(m_folder.File("link"), kOpenRead);
    const FileHandle inherited = Open(m_folder.File("plain"), kOpenRead | kOpenInherit);
    EXPECT_NE(::fcntl(static_cast<int>(through), F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(::fcntl(static_cast<int>(inherited), F_GETFD) & FD_CLOEXEC, 0);
    m_system.CloseFile(through);
    m_system.CloseFile(inherited);
}

TEST_F(PosixSystemTest, RenamesWithAndWithoutReplacing) {
    m_folder.Write("a", "A");
    m_folder.Write("b", "B");
    const std::string a = m_folder.File("a"), b = m_folder.File("b");
    EXPECT_EQ(m_system.RenameFile(a.c_str(), b.c_str(), false), EEXIST);
    EXPECT_EQ(m_folder.Read("b"), "B");
    EXPECT_EQ(m_system.RenameFile(a.c_str(), b.c_str(), true), 0);
    EXPECT_EQ(m_folder.Read("b"), "A");
    EXPECT_EQ(m_system.RenameFile(b.c_str(), a.c_str(), false), 0);
    EXPECT_EQ(m_system.MakeFolder(m_folder.File("x/y/z").c_str()), 0);
    for (const char* made : {"x", "x/y", "x/y/z"})
        EXPECT_EQ(TemporaryFolder::ModeOf(m_folder.File(made)), 0700u);
    EXPECT_EQ(m_system.MakeFolder(m_folder.File("x/y").c_str()), 0);
    EXPECT_EQ(m_system.MakeFolder(m_folder.File("a/y").c_str()), ENOTDIR);
    EXPECT_EQ(m_system.MakeFolder(m_folder.File("a").c_str()), EEXIST);
    m_folder.Link("none", "dangling");
    EXPECT_EQ(m_system.MakeFolder(m_folder.File("dangling").c_str()), EEXIST);
    EXPECT_EQ(m_system.RenameFile(m_folder.File("b").c_str(), a.c_str(), true), ENOENT);
}

TEST_F(PosixSystemTest, KnowsTheProcess) {
    EXPECT_EQ(m_system.GetProcessId(), static_cast<DWORD>(::getpid()));
    EXPECT_TRUE(m_system.GetModuleFileName().ends_with("os_test"));
    EXPECT_EQ(m_system.GetLibraryFileName(), m_system.GetModuleFileName()); // linked into it
    EXPECT_TRUE(m_system.GetTemporaryFolder().ends_with('/'));
    const DWORD tick = m_system.GetTickCount();
    EXPECT_LT(m_system.GetTickCount() - tick, 60000u);
    EXPECT_LE(m_system.GetMemoryLoad(), 100u);
    EXPECT_EQ(AllocateRegion(std::size_t{1} << 62), nullptr); // more than it may have
}

TEST(PosixPaths, PartsOfNames) {
    struct Case {
        const char *name, *folder, *prefix, *file;
        bool isAbsolute;
    };
    for (const Case& c :
         {Case{"a", ".", "", "a", false}, Case{"", ".", "", "", false},
          Case{"/a", "/", "/", "a", true}, Case{"/", "/", "/", "", true},
          Case{"x/y/a.b", "x/y", "x/y/", "a.b", false}, Case{"/x/y/", "/x/y", "/x/y/", "", true}}) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(IsAbsolutePath(c.name), c.isAbsolute);
        EXPECT_EQ(FolderOf(c.name), c.folder);
        EXPECT_EQ(FolderPrefixOf(c.name), c.prefix);
        EXPECT_EQ(FileNameOf(c.name), c.file);
    }
    EXPECT_EQ(AsFolderPrefix("/x"), "/x/");
    EXPECT_EQ(AsFolderPrefix("/x/"), "/x/");
    EXPECT_EQ(AsFolderPrefix("/"), "/");
}

TEST(PosixSystem, FontsThatAreThereAreTheirOwnMatch) {
    NativeSystem system;
    const std::string family = system.MatchFontFamily("CourierNew");
    if (family.empty())
        GTEST_SKIP() << "fontconfig, or every font, is missing here";
    EXPECT_EQ(system.MatchFontFamily(family), family);
    EXPECT_EQ(system.MatchFontFamily("No Font Of That Name"), system.MatchFontFamily("monospace"));
}

} // namespace
} // namespace vnbytstr

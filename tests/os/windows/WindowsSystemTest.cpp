// What FileSystem promises, on Windows.
#include "src/os/FileIdentity.h"
#include "src/os/LeftoverSweep.h"
#include "src/os/Paths.h"
#include "src/os/PlatformSystem.h"
#include "src/os/ScratchFile.h"
#include "src/os/StartProgram.h"
#include "src/os/windows/WindowsCalls.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/windows/ChildProgram.h"
#include "tests/support/windows/Substitute.h"

#include <gmock/gmock.h>

#include <shellapi.h>

#include <atomic>
#include <cerrno>
#include <thread>

namespace vnbytstr::test {
namespace {

constexpr unsigned kNew = kOpenRead | kOpenWrite | kOpenCreate | kOpenExclusive;

class WindowsSystemTest : public testing::Test {
protected:
    ~WindowsSystemTest() override {
        for (const FileHandle each : m_open)
            m_system.CloseFile(each);
    }
    std::string Name(const std::string& name) const { return m_folder.File(name); }
    FileHandle Open(const std::string& name, unsigned flags) {
        FileHandle handle = kNoFile;
        EXPECT_EQ(m_system.OpenFile(name.c_str(), flags, handle), 0) << name;
        if (handle != kNoFile)
            m_open.push_back(handle);
        return handle;
    }
    FileHandle Make(const std::string& name, const std::string& text) {
        const FileHandle handle = Open(name, kNew);
        std::size_t done = 0;
        EXPECT_EQ(m_system.WriteFile(handle, text.data(), text.size(), done), 0);
        EXPECT_EQ(done, text.size());
        return handle;
    }
    std::string ReadAll(FileHandle handle) {
        std::uint64_t position = 1;
        EXPECT_EQ(m_system.SeekFile(handle, 0, SeekOrigin::Begin, position), 0);
        std::string text(100, '\0');
        std::size_t done = 0;
        EXPECT_EQ(m_system.ReadFile(handle, text.data(), text.size(), done), 0);
        text.resize(done);
        return text;
    }
    FileStatus StatusOf(const std::string& name) {
        FileStatus status;
        EXPECT_EQ(m_system.GetFileStatus(name.c_str(), status), 0) << name;
        return status;
    }
    bool IsThere(const std::string& name) {
        FileStatus status;
        return m_system.GetFileStatus(name.c_str(), status) == 0;
    }

    TemporaryFolder m_folder;
    System& m_system = PlatformSystem();
    std::vector<FileHandle> m_open;
};

TEST_F(WindowsSystemTest, NamesOfEveryLengthAndSpelling) {
    std::string folder = m_folder.Path();
    while (folder.size() < 600)
        folder += std::string(100, 'd') + "/";
    EXPECT_EQ(m_system.MakeFolder(folder.c_str()), 0);
    EXPECT_EQ(m_system.MakeFolder(folder.c_str()), 0);
    const std::string umlaut = "\xC3\x84\xE2\x82\xAC.txt"; // UTF-8
    Make(folder + "../" + std::string(100, 'd') + "/./" + umlaut, "long");
    std::vector<std::string> names;
    EXPECT_EQ(m_system.ListFolder(folder.c_str(), names), 0);
    EXPECT_THAT(names, testing::ElementsAre(umlaut));
    std::string resolved;
    EXPECT_EQ(m_system.ResolveName((folder + umlaut).c_str(), resolved), 0);
    EXPECT_TRUE(resolved.ends_with("\\" + umlaut)) << resolved;
    EXPECT_EQ(StatusOf(resolved).identity, StatusOf(folder + umlaut).identity);
    EXPECT_EQ(m_system.RenameFile((folder + umlaut).c_str(), (folder + "b").c_str(), false), 0);
    EXPECT_EQ(m_system.RemoveFile((folder + "b").c_str()), 0);
    EXPECT_FALSE(IsThere(folder + "b"));
    // What is not UTF-8 is the ANSI code page's.
    if (::GetACP() == 1252) {
        Make(m_folder.Path() + "\xC4", "ansi");
        EXPECT_EQ(ReadAll(Open(m_folder.Path() + "\xC3\x84", kOpenRead)), "ansi");
    }
    FileHandle none;
    EXPECT_EQ(m_system.OpenFile("", kOpenRead, none), ENOENT);
    EXPECT_EQ(m_system.OpenFile(Name("missing/a").c_str(), kNew, none), ENOENT);
    EXPECT_EQ(m_system.OpenFile(m_folder.Path().c_str(), kOpenRead, none), EISDIR);
    EXPECT_EQ(m_system.RemoveFile(m_folder.Path().c_str()), EISDIR);
    EXPECT_EQ(m_system.RemoveFile(Name("missing").c_str()), ENOENT);
}

TEST_F(WindowsSystemTest, OpenFilesAreRemovedAndReplaced) {
    const FileHandle removed = Make(Name("a"), "removed");
    EXPECT_EQ(m_system.RemoveFile(Name("a").c_str()), 0);
    EXPECT_FALSE(IsThere(Name("a")));
    EXPECT_EQ(ReadAll(removed), "removed");
    FileStatus status;
    EXPECT_EQ(m_system.GetFileStatus(removed, status), 0);
    if (!IsSubstitute()) { // which counts the name that the file has until it is closed
        EXPECT_EQ(status.names, 0u);
    }
    const FileHandle replaced = Make(Name("a"), "replaced"), other = Make(Name("b"), "other");
    const FileIdentity old = IdentityOf(replaced), taken = IdentityOf(other);
    EXPECT_EQ(m_system.LockFile(replaced, true, false), 0);
    EXPECT_EQ(m_system.RenameFile(Name("b").c_str(), Name("a").c_str(), false), EEXIST);
    EXPECT_EQ(m_system.RenameFile(Name("b").c_str(), Name("a").c_str(), true), 0);
    EXPECT_FALSE(IsThere(Name("b")));
    EXPECT_EQ(StatusOf(Name("a")).identity, taken);
    EXPECT_EQ(IdentityOf(replaced), old);
    EXPECT_EQ(ReadAll(replaced), "replaced");
    EXPECT_EQ(ReadAll(Open(Name("a"), kOpenRead)), "other");
    EXPECT_EQ(m_system.RenameFile(Name("b").c_str(), Name("a").c_str(), true), ENOENT);
    // Once more, and with what a killed process has left.
    for (const char* text : {"second", "third"}) {
        Make(Name("b"), text);
        EXPECT_EQ(m_system.RenameFile(Name("b").c_str(), Name("a").c_str(), true), 0) << text;
        EXPECT_EQ(ReadAll(Open(Name("a"), kOpenRead)), text);
        m_folder.Write("a.~aside", "left");
    }
    EXPECT_EQ(m_folder.Read("a.~aside"), "left");
    EXPECT_EQ(ReadAll(replaced), "replaced");
    std::filesystem::remove(Name("a.~aside"));
    for (const FileHandle each : m_open)
        EXPECT_EQ(m_system.CloseFile(each), 0);
    m_open.clear();
    EXPECT_THAT(m_folder.Names(), testing::ElementsAre("a"));
}

TEST_F(WindowsSystemTest, AFileThatIsBeingReplacedIsNotMissing) {
    Make(Name("a"), "held");
    std::atomic<bool> isDone{false};
    std::thread writer([&] {
        for (int i = 0; i < 100; ++i) {
            m_folder.Write("b", "new");
            EXPECT_EQ(m_system.RenameFile(Name("b").c_str(), Name("a").c_str(), true), 0);
        }
        isDone = true;
    });
    unsigned found = 0, missing = 0;
    for (; !isDone; ++found) {
        FileStatus status;
        FileHandle handle = kNoFile;
        missing += m_system.GetFileStatus(Name("a").c_str(), status) != 0;
        if (m_system.OpenFile(Name("a").c_str(), kOpenRead, handle) != 0)
            ++missing;
        else
            m_system.CloseFile(handle);
    }
    writer.join();
    EXPECT_EQ(missing, 0u);
    EXPECT_GT(found, 0u);
}

TEST_F(WindowsSystemTest, WhatAnotherProgramHoldsStaysAsItIs) {
    Make(Name("a"), "new");
    m_folder.Write("b", "old");
    const windows::OwnHandle held(::CreateFileA(Name("b").c_str(), GENERIC_READ, FILE_SHARE_READ,
                                                nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(m_system.RenameFile(Name("a").c_str(), Name("b").c_str(), true), EACCES);
    EXPECT_EQ(m_system.RemoveFile(Name("b").c_str()), EACCES);
    FileHandle none;
    EXPECT_EQ(m_system.OpenFile(Name("b").c_str(), kOpenWrite, none), EACCES);
    EXPECT_EQ(m_folder.Read("a"), "new");
    EXPECT_EQ(m_folder.Read("b"), "old");
    EXPECT_THAT(m_folder.Names(), testing::UnorderedElementsAre("a", "b"));
}

TEST_F(WindowsSystemTest, LocksAreOfHandlesAndKeepNobodyFromReading) {
    const FileHandle one = Make(Name("a"), "text"), two = Open(Name("a"), kOpenRead | kOpenWrite);
    EXPECT_EQ(m_system.LockFile(one, true, false), 0);
    EXPECT_EQ(m_system.LockFile(one, true, false), 0); // once more is nothing new
    EXPECT_EQ(m_system.LockFile(two, false, false), EWOULDBLOCK);
    EXPECT_EQ(ReadAll(two), "text");
    std::size_t done = 0;
    EXPECT_EQ(m_system.WriteFile(two, "s", 1, done), 0);
    EXPECT_EQ(m_system.LockFile(one, false, false), 0);
    EXPECT_EQ(m_system.LockFile(two, false, false), 0);
    EXPECT_EQ(m_system.UnlockFile(one), 0);
    EXPECT_EQ(m_system.UnlockFile(one), 0);
    EXPECT_EQ(m_system.LockFile(two, true, false), 0);
}

TEST_F(WindowsSystemTest, LengthsPositionsAndStatus) {
    const FileHandle file = Make(Name("a"), "0123456789");
    std::uint64_t value = 0;
    EXPECT_EQ(m_system.SetFileLength(file, 4), 0);
    EXPECT_EQ(m_system.SeekFile(file, 0, SeekOrigin::Current, value), 0);
    EXPECT_EQ(value, 10u); // the position stays
    EXPECT_EQ(m_system.SetFileLength(file, 6), 0);
    EXPECT_EQ(ReadAll(file), std::string("0123\0\0", 6));
    EXPECT_EQ(m_system.SeekFile(file, -7, SeekOrigin::End, value), EINVAL);
    EXPECT_EQ(m_system.GetFileLength(file, value), 0);
    EXPECT_EQ(value, 6u);
    EXPECT_EQ(m_system.SetFileMode(file, 0444), 0);
    EXPECT_TRUE(StatusOf(Name("a")).isReadOnly);
    FileHandle none;
    if (!IsSubstitute()) { // which lets POSIX systems' administrators do so
        EXPECT_EQ(m_system.OpenFile(Name("a").c_str(), kOpenWrite, none), EACCES);
    }
    const FileStatus status = StatusOf(Name("a"));
    EXPECT_TRUE(status.isRegular && status.isOwn && !status.isLink && !status.isScratch);
    EXPECT_EQ(status.names, 1u);
    EXPECT_NEAR(static_cast<double>(status.modifiedSeconds),
                static_cast<double>(m_system.GetTime()), 5);
    EXPECT_EQ(m_system.RemoveFile(Name("a").c_str()), 0); // as elsewhere, the folder decides
    const FileHandle null = Open(NullDevice(), kOpenRead | kOpenWrite);
    EXPECT_EQ(ReadAll(null), "");
}

TEST_F(WindowsSystemTest, TheScratchMarkStaysUntilItIsTakenOff) {
    FileHandle scratch = kNoFile;
    const std::string name = Name("~dat-1-2.tmp");
    ASSERT_EQ(OpenScratch(name.c_str(), scratch), 0);
    m_open.push_back(scratch);
    EXPECT_TRUE(StatusOf(name).isScratch);
    SweepLeftovers(m_folder.Path()); // it is locked
    EXPECT_TRUE(IsThere(name));
    EXPECT_EQ(m_system.ReleaseScratch(scratch), 0);
    EXPECT_FALSE(StatusOf(name).isScratch);
    m_system.CloseFile(m_open.back());
    m_open.pop_back();
    SweepLeftovers(m_folder.Path()); // kept on purpose
    EXPECT_TRUE(IsThere(name));
    ASSERT_EQ(OpenScratch(Name("~dat-1-3.tmp").c_str(), scratch), 0);
    m_system.CloseFile(scratch); // as when its process is dead
    SweepLeftovers(m_folder.Path());
    EXPECT_FALSE(IsThere(Name("~dat-1-3.tmp")));
}

TEST(WindowsPaths, PartsOfNames) {
    const struct {
        const char *name, *folder, *prefix, *file;
        bool isAbsolute;
    } rows[] = {
        {"C:\\a\\b.txt", "C:\\a", "C:\\a\\", "b.txt", true},
        {"c:/a/b", "c:/a", "c:/a/", "b", true},
        {"C:\\a", "C:\\", "C:\\", "a", true},
        {"C:a", "C:.", "C:", "a", false},
        {"\\a", "\\", "\\", "a", false},
        {"a", ".", "", "a", false},
        {"a/b\\", "a/b", "a/b\\", "", false},
        {"\\\\s\\f\\a", "\\\\s\\f", "\\\\s\\f\\", "a", true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FolderOf(row.name), row.folder) << row.name;
        EXPECT_EQ(FolderPrefixOf(row.name), row.prefix) << row.name;
        EXPECT_EQ(FileNameOf(row.name), row.file) << row.name;
        EXPECT_EQ(IsAbsolutePath(row.name), row.isAbsolute) << row.name;
    }
    EXPECT_EQ(AsFolderPrefix("C:\\a"), "C:\\a\\");
    EXPECT_EQ(AsFolderPrefix("C:"), "C:");
    for (const char* relative : {"a", "\\a", "..\\a"})
        EXPECT_TRUE(IsAbsolutePath(AbsoluteName(relative))) << AbsoluteName(relative);
    EXPECT_EQ(AbsoluteName("C:/a/b"), "C:/a/b");
}

TEST(WindowsProcess, KnowsItself) {
    System& system = PlatformSystem();
    EXPECT_TRUE(system.GetModuleFileName().ends_with("os_test.exe")) << system.GetModuleFileName();
    EXPECT_EQ(system.GetLibraryFileName(), system.GetModuleFileName());
    EXPECT_EQ(system.GetVersion().platform, SystemVersion::NtFamily);
    EXPECT_GE(system.GetVersion().major, 6u);
    EXPECT_LE(system.GetMemoryLoad(), 100u);
    EXPECT_TRUE(IsAbsolutePath(system.GetTemporaryFolder()));
    ::SetEnvironmentVariableW(L"VNBYTSTR_TEST", L"\x20AC");
    EXPECT_EQ(system.GetEnvironment("VNBYTSTR_TEST"), "\xE2\x82\xAC");
    ::SetEnvironmentVariableW(L"VNBYTSTR_TEST", nullptr);
    EXPECT_EQ(system.GetEnvironment("VNBYTSTR_TEST"), "");
    const char* const variables[] = {"LC_ALL", "LC_CTYPE", "LANG"};
    for (const char* name : variables)
        ::SetEnvironmentVariableA(name, nullptr);
    EXPECT_TRUE(system.GetTextLocale().ends_with(
        "." + (::GetACP() == CP_UTF8 ? "UTF-8" : "CP" + std::to_string(::GetACP()))))
        << system.GetTextLocale();
}

TEST(StartedProgram, WritesItsArguments) {
    const std::string file = ChildProgram::Task();
    if (file.empty())
        GTEST_SKIP() << "for a child process";
    std::ofstream out(file, std::ios::binary);
    int count = 0;
    wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    for (int i = 1; i < count; ++i)
        out << windows::Narrow(arguments[i]) << "\n";
    out << std::filesystem::current_path().filename().string() << "\nend\n";
}

TEST(StartProgram, PassesArgumentsAsTheyAre) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.File("here"));
    ::SetEnvironmentVariableA("VNBYTSTR_TEST_TASK", folder.File("out").c_str());
    std::string program;
    const std::string own = PlatformSystem().GetModuleFileName();
    EXPECT_EQ(detail::StartProgram("open", own.c_str(),
                                   "--gtest_filter=StartedProgram.* \"two words\" say=\\\"x\\\" "
                                   "\"\" \"C:\\dir x\"\\ \xE2\x82\xAC",
                                   folder.File("here").c_str(), program),
              kShellStarted);
    ::SetEnvironmentVariableA("VNBYTSTR_TEST_TASK", nullptr);
    EXPECT_TRUE(WaitFor([&] { return folder.Read("out").ends_with("end\n"); }));
    EXPECT_EQ(folder.Read("out"), "--gtest_filter=StartedProgram.*\ntwo words\nsay=\"x\"\n\n"
                                  "C:\\dir x\\\n\xE2\x82\xAC\nhere\nend\n");
    EXPECT_EQ(detail::StartProgram(nullptr, "no-such-program-anywhere", nullptr, nullptr, program),
              kShellFileNotFound);
    EXPECT_EQ(detail::StartProgram(nullptr, own.c_str(), nullptr, "C:\\no\\such", program),
              kShellPathNotFound);
}

} // namespace
} // namespace vnbytstr::test

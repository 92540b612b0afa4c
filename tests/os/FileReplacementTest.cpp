// FileReplacement, and the sweep of files that killed processes left.
#include "src/os/FileReplacement.h"
#include "src/os/InPlaceWrite.h"
#include "src/os/LeftoverSweep.h"
#include "src/os/Paths.h"
#include "src/os/PlatformSystem.h"
#include "src/os/ScratchFile.h"
#include "tests/os/ReplacementFixture.h"
#include "tests/support/Text.h"
#include "vnbytstr/ReplacementFile.h"

#include <cerrno>
#include <thread>

namespace vnbytstr {
namespace {

using FileReplacementTest = test::ReplacementFixture;

TEST_F(FileReplacementTest, AFileOfSeveralNamesIsWrittenOver) {
    Write("a", "old content");
    std::filesystem::create_hard_link(Name("a"), Name("b"));
    EXPECT_EQ(Put(Name("a"), "new"), 0);
    EXPECT_EQ(Read("b"), "new");
    EXPECT_EQ(Put(Name("b"), "longer than before"), 0);
    EXPECT_EQ(Read("a"), "longer than before");
    EXPECT_EQ(LeftOvers(), 0u);
}

TEST_F(FileReplacementTest, WhatIsNoPlainFileIsWrittenToDirectly) {
    const std::string null = m_folder.Device(NullDevice());
    EXPECT_EQ(Put(null, "x"), 0);
    EXPECT_EQ(Put(Name(""), "x"), EISDIR);
    if (m_folder.Link("nowhere", "at/dangling")) {
        EXPECT_EQ(Put(Name("dangling"), "x"), ENOENT);
    }
    FileReplacement target;
    EXPECT_EQ(target.Open(null.c_str(), true), EINVAL);
    EXPECT_EQ(target.Open(nullptr), EINVAL);
}

TEST_F(FileReplacementTest, AdoptedFilesAreMovedOrComeBackAsTheyWere) {
    Write("target", "old");
    const std::string swap = m_folder.File("tmp/~dat-1-1.tmp");
    FileHandle handle;
    ASSERT_EQ(OpenScratch(swap.c_str(), handle), 0);
    std::size_t done;
    ASSERT_EQ(m_system.WriteFile(handle, "new", 3, done), 0);
    {
        FileReplacement target;
        ASSERT_EQ(target.Open(Name("target").c_str()), 0);
        m_system.Inject(test::Fault{.call = test::Call::Rename, .at = 2, .error = EIO});
        ASSERT_EQ(target.Adopt(handle, swap.c_str()), 0);
        EXPECT_EQ(target.Commit(), EIO);
    }
    m_system.Inject(std::nullopt);
    FileStatus status;
    ASSERT_EQ(m_system.GetFileStatus(swap.c_str(), status), 0);
    EXPECT_TRUE(status.isScratch);
    EXPECT_TRUE(m_folder.HasMode(swap, 0600));
    EXPECT_EQ(Read("target"), "old");
    FileReplacement target;
    ASSERT_EQ(target.Open(Name("target").c_str()), 0);
    ASSERT_EQ(target.Adopt(handle, swap.c_str()), 0);
    EXPECT_EQ(target.Commit(), 0);
    m_system.CloseFile(handle);
    EXPECT_EQ(Read("target"), "new");
    EXPECT_EQ(LeftOvers(), 0u);
}

// --- left-overs ----------------------------------------------------------------------------------

TEST(ScratchFile, NamesTellTheUse) {
    EXPECT_EQ(UseOfScratchName("~dat-17-3.tmp"), ScratchUse::Swap);
    for (const ScratchUse use : {ScratchUse::Swap, ScratchUse::New, ScratchUse::Old})
        EXPECT_EQ(UseOfScratchName(ScratchName(use, 4000000000, 0)), use);
    for (const char* other : {"~dat-17-3.lob", "~dat-17.tmp", "~dat-a-3.tmp", "~dat--3.tmp",
                              "~tmp-17-3.tmp", "~dat-17-3.tmp~", "~dat-99999999999-1.tmp",
                              "~dat-1-x.tmp", "dat-17-3.tmp", "~new-1-1.tmp", ""})
        EXPECT_FALSE(UseOfScratchName(other)) << other;
}

/// Writing over takes turns, and only the file that was meant is written.
TEST_F(FileReplacementTest, WritingOverIsForOneAtATime) {
    Write("a", "old");
    std::filesystem::create_hard_link(Name("a"), Name("b"));
    FileHandle holder;
    System& other = PlatformSystem(); // since m_system is for one thread
    ASSERT_EQ(other.OpenFile(Name("b").c_str(), kOpenRead, holder), 0);
    ASSERT_EQ(other.LockFile(holder, true, false), 0);
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        other.CloseFile(holder);
    });
    EXPECT_EQ(Put(Name("a"), "new"), 0);
    release.join();
    // Who writes for more than two seconds is not waited for.
    ASSERT_EQ(other.OpenFile(Name("b").c_str(), kOpenRead, holder), 0);
    ASSERT_EQ(other.LockFile(holder, true, false), 0);
    EXPECT_EQ(Put(Name("a"), "late"), EWOULDBLOCK);
    other.CloseFile(holder);
    EXPECT_EQ(Read("b"), "new");
    // Where there are no locks, it goes without.
    m_system.Inject(test::Fault{.call = test::Call::Lock, .fromThenOn = true, .error = ENOLCK});
    EXPECT_EQ(Put(Name("a"), "new"), 0);
    m_system.Inject(std::nullopt);
    FileReplacement target;
    ASSERT_EQ(target.Open(Name("a").c_str()), 0);
    Write("other", "other");
    std::filesystem::create_hard_link(Name("other"), Name("more"));
    ASSERT_EQ(m_system.RenameFile(Name("other").c_str(), Name("a").c_str(), true), 0);
    EXPECT_EQ(target.Commit(), kStale);
    EXPECT_EQ(Read("a"), "other");
    EXPECT_EQ(Read("b"), "new");
}

TEST_F(FileReplacementTest, TheSweepGoesByTheLockAlone) {
    const std::string used = m_folder.File("at/" + ScratchName(ScratchUse::New, 1, 1));
    const std::string left = ScratchName(ScratchUse::New, m_system.GetProcessId(), 2);
    FileHandle handle;
    ASSERT_EQ(OpenScratch(used.c_str(), handle), 0);
    Write(left, "left");
    m_folder.Write("victim", "");
    const bool hasLinks = m_folder.Link("../victim", "at/.~new-9-9.tmp");
    std::filesystem::create_directory(Name(".~new-9-8.tmp"));
    SweepLeftovers(m_folder.File("at"));
    EXPECT_TRUE(std::filesystem::exists(used));
    EXPECT_FALSE(std::filesystem::exists(Name(left)));
    EXPECT_EQ(std::filesystem::is_symlink(Name(".~new-9-9.tmp")), hasLinks);
    EXPECT_TRUE(std::filesystem::exists(Name(".~new-9-8.tmp")));
    m_system.CloseFile(handle);
    // Where locks do not work nothing is known, and nothing removed.
    m_system.Inject(test::Fault{.call = test::Call::Lock, .at = 1, .error = ENOLCK});
    SweepLeftovers(m_folder.File("at"));
    EXPECT_TRUE(std::filesystem::exists(used));
    m_system.Inject(std::nullopt);
    SweepLeftovers(m_folder.File("at"));
    EXPECT_FALSE(std::filesystem::exists(used));
}

TEST_F(FileReplacementTest, EveryFolderIsSweptOnce) {
    unsigned swept = 0;
    for (int i = 0; i < 300; ++i) { // more than are remembered
        const std::string folder = "at/" + std::to_string(i);
        std::filesystem::create_directory(m_folder.File(folder));
        const std::string left = folder + "/" + ScratchName(ScratchUse::New, 1, 1);
        m_folder.Write(left, "left");
        SweepLeftoversOnce(m_folder.File(folder));
        // A new folder may have the identity of one that another test had.
        swept += std::filesystem::exists(m_folder.File(left)) ? 0 : 1;
        m_folder.Write(left, "left");
        SweepLeftoversOnce(m_folder.File(folder));
        EXPECT_TRUE(std::filesystem::exists(m_folder.File(left)));
    }
    EXPECT_GT(swept, 200u);
    SweepLeftoversOnce(m_folder.File("none"));
}

// --- the public face -----------------------------------------------------------------------------

TEST_F(FileReplacementTest, CReplacementFile) {
    Write("a", "old");
    const std::string name = Name("a");
    {
        CReplacementFile file(name.c_str());
        file.Write("new", 3);
        EXPECT_EQ(Read("a"), "old");
        EXPECT_EQ(std::string(file.GetFilePath()), name);
    }
    EXPECT_EQ(Read("a"), "old");
    CReplacementFile file;
    ASSERT_TRUE(file.Open(name.c_str()));
    file.Write("given up", 8);
    file.Close();
    ASSERT_TRUE(file.Open(name.c_str()));
    file.Write("new", 3);
    file.Commit();
    EXPECT_EQ(Read("a"), "new");
    EXPECT_EQ(LeftOvers(), 0u);
    EXPECT_EQ(test::CauseOf<CFileException>([&] { file.Commit(); }), CFileException::invalidFile);
    EXPECT_EQ(
        test::CauseOf<CFileException>([&] { CReplacementFile missing(Name("no/folder").c_str()); }),
        CFileException::fileNotFound);
    std::filesystem::permissions(name, std::filesystem::perms{0444});
    CFileException error;
    EXPECT_FALSE(file.Open(name.c_str(), CFile::modeWrite, &error));
    EXPECT_EQ(error.m_cause, CFileException::accessDenied);
    EXPECT_EQ(std::string(error.m_strFileName), name);
    EXPECT_FALSE(file.Open(nullptr));
}

} // namespace
} // namespace vnbytstr

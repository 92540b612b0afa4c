// FileReplacement, and the sweep of files that killed processes left.
#include "src/os/FileReplacement.h"
#include "src/os/LeftoverSweep.h"
#include "src/os/ScratchFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"
#include "tests/support/Text.h"
#include "vnbytstr/ReplacementFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace vnbytstr {
namespace {

class FileReplacementTest : public ::testing::Test {
protected:
    FileReplacementTest() : m_scope(m_system) {
        std::filesystem::create_directory(m_folder.File("tmp"));
        std::filesystem::create_directory(m_folder.File("at"));
        m_system.SetTemporaryFolder(m_folder.File("tmp/"));
    }
    ~FileReplacementTest() override { EXPECT_TRUE(m_system.OpenHandles().empty()); }

    std::string Name(const std::string& name) const { return m_folder.File("at/" + name); }
    std::string Read(const std::string& name) const { return m_folder.Read("at/" + name); }
    void Write(const std::string& name, const std::string& content) const {
        m_folder.Write("at/" + name, content);
    }
    /// Names beside the targets and in the temporary folder.
    std::size_t LeftOvers() const {
        std::size_t count = 0;
        for (const char* folder : {"at", "tmp"})
            for (const auto& entry : std::filesystem::directory_iterator(m_folder.File(folder)))
                count += entry.path().filename().string().find('~') != std::string::npos;
        return count;
    }
    static int Put(const std::string& name, const std::string& content) {
        FileReplacement target;
        if (const int error = target.Open(name.c_str()))
            return error;
        for (std::size_t at = 0; at < content.size();) {
            std::size_t done = 0;
            if (const int error = System::Current().WriteFile(target.Handle(), content.data() + at,
                                                              content.size() - at, done))
                return error;
            at += done;
        }
        return target.Commit();
    }
    struct stat Stat(const std::string& name) const {
        struct stat info {};
        EXPECT_EQ(::stat(Name(name).c_str(), &info), 0) << name;
        return info;
    }
    /// The folder and all in it for every user.
    void OpenToAll() const {
        for (const char* name : {"", "at", "tmp"})
            ASSERT_EQ(::chmod(m_folder.File(name).c_str(), 0777), 0);
    }

    test::TemporaryFolder m_folder;
    test::TestSystem m_system;
    ScopedSystem m_scope;
};

TEST_F(FileReplacementTest, TheNewFileHasWhatTheOldOneHad) {
    Write("plain", "old");
    ASSERT_EQ(::chmod(Name("plain").c_str(), 0640), 0);
    ASSERT_EQ(::symlink("plain", Name("link").c_str()), 0);
    const bool hasLists =
        ::setxattr(Name("plain").c_str(), "user.note", "kept", 4, 0) == 0; // not on every system
    if (test::CanBecomeNobody()) {
        ASSERT_EQ(::chown(Name("plain").c_str(), test::kNobody, test::kNobody), 0);
    }
    const struct stat before = Stat("plain");
    EXPECT_EQ(Put(Name("link"), "new"), 0);
    const struct stat after = Stat("plain");
    EXPECT_EQ(Read("plain"), "new");
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_NE(after.st_ino, before.st_ino);
    EXPECT_TRUE(std::filesystem::is_symlink(Name("link")));
    if (hasLists) {
        char value[8];
        EXPECT_EQ(::getxattr(Name("plain").c_str(), "user.note", value, sizeof value), 4);
    }
    // A new file has the mode that any other would have.
    const mode_t mask = ::umask(027);
    EXPECT_EQ(Put(Name("new"), "new"), 0);
    ::umask(mask);
    EXPECT_EQ(Stat("new").st_mode & 07777, 0640u);
    // A file system that refuses modes takes files all the same.
    m_system.Inject(test::Fault{.call = test::Call::Release, .at = 2, .error = EPERM});
    EXPECT_EQ(Put(Name("plain"), "newer"), 0);
    EXPECT_EQ(m_system.Hits(), 1u);
    EXPECT_EQ(Read("plain"), "newer");
}

TEST_F(FileReplacementTest, NobodyElseReadsItBeforeItIsInPlace) {
    Write("secret", "old");
    ASSERT_EQ(::chmod(Name("secret").c_str(), 0600), 0);
    for (const char* name : {"secret", "new"}) {
        FileReplacement target;
        ASSERT_EQ(target.Open(Name(name).c_str()), 0);
        FileStatus status;
        EXPECT_EQ(m_system.GetFileStatus(target.Handle(), status), 0);
        EXPECT_EQ(status.mode & 0777, 0600u);
        EXPECT_TRUE(status.isScratch);
        EXPECT_EQ(LeftOvers(), 1u);
    }
    EXPECT_EQ(LeftOvers(), 0u);
    EXPECT_EQ(Stat("secret").st_mode & 0777, 0600u);
}

TEST_F(FileReplacementTest, AFileOfSeveralNamesOrOfAnotherOwnerIsWrittenOver) {
    Write("a", "old content");
    ASSERT_EQ(::link(Name("a").c_str(), Name("b").c_str()), 0);
    EXPECT_EQ(Put(Name("a"), "new"), 0);
    EXPECT_EQ(Read("b"), "new");
    EXPECT_EQ(Put(Name("b"), "longer than before"), 0);
    EXPECT_EQ(Read("a"), "longer than before");
    EXPECT_EQ(LeftOvers(), 0u);
    if (!test::CanBecomeNobody())
        GTEST_SKIP() << "becoming another user needs root";
    OpenToAll();
    Write("roots", "old");
    ASSERT_EQ(::chmod(Name("roots").c_str(), 0666), 0);
    EXPECT_EQ(test::AsNobody([&] { return Put(Name("roots"), "new"); }), 0);
    EXPECT_EQ(Stat("roots").st_uid, 0u);
    EXPECT_EQ(Read("roots"), "new");
}

TEST_F(FileReplacementTest, WhatIsNoPlainFileIsWrittenToDirectly) {
    EXPECT_EQ(Put("/dev/null", "x"), 0);
    EXPECT_EQ(Put(Name(""), "x"), EISDIR);
    ASSERT_EQ(::symlink("nowhere", Name("dangling").c_str()), 0);
    EXPECT_EQ(Put(Name("dangling"), "x"), ENOENT);
    FileReplacement target;
    EXPECT_EQ(target.Open("/dev/null", true), EINVAL);
    EXPECT_EQ(target.Open(nullptr), EINVAL);

    ASSERT_EQ(::mkfifo(Name("pipe").c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { // late: the writer waits
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        received = Read("pipe");
    });
    EXPECT_EQ(Put(Name("pipe"), "through the pipe"), 0);
    reader.join();
    EXPECT_EQ(received, "through the pipe");
}

/// What /dev/stdout stands for is written to where others have written, be it a file or a pipe.
TEST_F(FileReplacementTest, StandardOutputIsWrittenOnAndNotReplaced) {
    const int file = ::open(Name("out").c_str(), O_RDWR | O_CREAT, 0600);
    ASSERT_EQ(::write(file, "header ", 7), 7);
    for (const char* name : {"/dev/stdout", "/proc/self/fd/1"}) {
        EXPECT_EQ(test::InChild([&] {
                      ::dup2(file, 1);
                      return Put(name, "content ");
                  }),
                  0);
    }
    ASSERT_EQ(::write(file, "trailer", 7), 7);
    ::close(file);
    EXPECT_EQ(Read("out"), "header content content trailer");
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    EXPECT_EQ(test::InChild([&] {
                  ::dup2(ends[1], 1);
                  return Put("/dev/stdout", "content");
              }),
              0);
    char read[8];
    EXPECT_EQ(::read(ends[0], read, sizeof read), 7);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(FileReplacementTest, PlantedLinksAreNotFollowed) {
    if (!test::CanBecomeNobody())
        GTEST_SKIP() << "becoming another user needs root";
    OpenToAll();
    m_folder.Write("victim", "root's");
    ASSERT_EQ(::chmod(m_folder.File("at").c_str(), 01777), 0);
    EXPECT_EQ(test::AsNobody([&] {
                  return ::symlink("../victim", Name("report").c_str()) != 0 ||
                         ::symlink("..", Name("folder").c_str()) != 0;
              }),
              0);
    ASSERT_EQ(::symlink("../victim", Name("own").c_str()), 0);
    EXPECT_EQ(Put(Name("report"), "new"), EACCES);
    EXPECT_EQ(Put(Name("folder/victim"), "new"), EACCES);
    EXPECT_EQ(Put(Name("folder/absent"), "new"), EACCES);
    EXPECT_EQ(m_folder.Read("victim"), "root's");
    EXPECT_EQ(Put(Name("own"), "new"), 0);
    EXPECT_EQ(m_folder.Read("victim"), "new");
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
    struct stat info;
    ASSERT_EQ(::stat(swap.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 01600u);
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
    for (const char* other :
         {"~dat-17-3.lob", "~dat-17.tmp", "~dat-a-3.tmp", "~dat--3.tmp", "~tmp-17-3.tmp",
          "~dat-17-3.tmp~", "~dat-99999999999-1.tmp", "dat-17-3.tmp", "~new-1-1.tmp", ""})
        EXPECT_FALSE(UseOfScratchName(other)) << other;
}

/// A process that is killed while it writes a file over leaves a part of each content; the next
/// sweep puts the old one back, unless another program has written to the file since.
TEST_F(FileReplacementTest, WhatAKilledProcessWasWritingOverComesBack) {
    Write("two", "");
    ASSERT_EQ(::link(Name("two").c_str(), Name("names").c_str()), 0);
    struct Case {
        std::string old, fresh, other;
    };
    const std::string old(300000, 'o');
    for (const auto& [before, fresh, other] :
         {Case{old, std::string(1000, 'n'), "other"}, Case{old, std::string(300000, 'n'), "other"},
          Case{old, std::string(700001, 'n'), "other"},
          // Small files, with an edit whose length is between the two.
          Case{"color = red\nsize = 10\n", "color = blue\nsize = 10\nshape = round\n",
               "color = green\nsize = 12\nok\n"}}) {
        unsigned mixed = 0, left = 0;
        for (unsigned at = 1;; ++at) {
            Write("two", before);
            const int result = test::InChild([&] {
                m_system.Inject(test::Fault{.at = at, .kind = test::Fault::Kind::Kill});
                return Put(Name("two"), fresh);
            });
            if (result == 0)
                break;
            ASSERT_EQ(result, test::Fault::kKilled);
            const std::string found = Read("two");
            mixed += found != before && found != fresh;
            left += LeftOvers() == 2;
            const bool isChanged = before.size() < 100 || at % 5 == 0;
            if (isChanged)
                Write("two", other);
            SweepLeftovers(m_folder.File("at"));
            const std::string content = Read("two");
            EXPECT_TRUE(isChanged ? content == other : content == before || content == fresh) << at;
            EXPECT_EQ(LeftOvers(), 0u) << at;
        }
        EXPECT_GT(before.size() < 100 ? left : mixed, before.size() < 100    ? 3u
                                                      : fresh.size() == 1000 ? 0u
                                                                             : 1u);
    }
}

/// Writing over takes turns, and only the file that was meant is written.
TEST_F(FileReplacementTest, WritingOverIsForOneAtATime) {
    Write("a", "old");
    ASSERT_EQ(::link(Name("a").c_str(), Name("b").c_str()), 0);
    const int holder = ::open(Name("b").c_str(), O_RDONLY);
    ASSERT_EQ(m_system.LockFile(holder, true, false), 0);
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ::close(holder);
    });
    EXPECT_EQ(Put(Name("a"), "new"), 0);
    release.join();
    FileReplacement target;
    ASSERT_EQ(target.Open(Name("a").c_str()), 0);
    Write("other", "other");
    ASSERT_EQ(::link(Name("other").c_str(), Name("more").c_str()), 0);
    ASSERT_EQ(::rename(Name("other").c_str(), Name("a").c_str()), 0);
    EXPECT_EQ(target.Commit(), ESTALE);
    EXPECT_EQ(Read("a"), "other");
    EXPECT_EQ(Read("b"), "new");
}

TEST_F(FileReplacementTest, TheSweepGoesByTheLockAlone) {
    const std::string used = m_folder.File("at/" + ScratchName(ScratchUse::New, 1, 1));
    const std::string left = ScratchName(ScratchUse::New, m_system.GetProcessId(), 2);
    FileHandle handle;
    ASSERT_EQ(OpenScratch(used.c_str(), handle), 0);
    Write(left, "left");
    ASSERT_EQ(::symlink("../victim", m_folder.File("at/.~new-9-9.tmp").c_str()), 0);
    SweepLeftovers(m_folder.File("at"));
    EXPECT_TRUE(std::filesystem::exists(used));
    EXPECT_FALSE(std::filesystem::exists(Name(left)));
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder.File("at/.~new-9-9.tmp")));
    m_system.CloseFile(handle);
    // Where locks do not work nothing is known, and nothing removed.
    m_system.Inject(test::Fault{.call = test::Call::Lock, .at = 1, .error = ENOLCK});
    SweepLeftovers(m_folder.File("at"));
    EXPECT_TRUE(std::filesystem::exists(used));
    m_system.Inject(std::nullopt);
    SweepLeftovers(m_folder.File("at"));
    EXPECT_FALSE(std::filesystem::exists(used));
}

TEST_F(FileReplacementTest, TheSweepLeavesOtherUsersFilesAndWhatWasKept) {
    if (!test::CanBecomeNobody())
        GTEST_SKIP() << "giving a file away needs root";
    struct Case {
        const char* name;
        mode_t mode;
        bool isOwn, isSwept;
    };
    for (const Case& file :
         {Case{"~dat-9-1.tmp", 01600, true, true},
          Case{"~dat-9-2.tmp", 0600, true, false}, // kept on purpose
          Case{"~dat-9-3.tmp", 01600, false, false}, Case{".~new-9-1.tmp", 0644, true, true},
          Case{".~new-9-2.tmp", 01600, false, true}, // root gave it away
          Case{".~old-9-1.tmp", 01600, true, true}, Case{".~old-9-2.tmp", 01600, false, false}}) {
        Write(file.name, "left");
        ASSERT_EQ(::chown(Name(file.name).c_str(), file.isOwn ? 0 : test::kNobody, 0), 0);
        ASSERT_EQ(::chmod(Name(file.name).c_str(), file.mode), 0);
        SweepLeftovers(m_folder.File("at"));
        EXPECT_EQ(std::filesystem::exists(Name(file.name)), !file.isSwept) << file.name;
    }
    // Nor does a user sweep root's.
    OpenToAll();
    Write(".~new-9-3.tmp", "left");
    EXPECT_EQ(test::AsNobody([&] {
                  SweepLeftovers(m_folder.File("at"));
                  return 0;
              }),
              0);
    EXPECT_TRUE(std::filesystem::exists(Name(".~new-9-3.tmp")));
}

TEST_F(FileReplacementTest, AChildGivesNothingUpThatItsParentBegan) {
    FileReplacement target;
    ASSERT_EQ(target.Open(Name("a").c_str()), 0);
    EXPECT_EQ(test::InChild([&] {
                  target.Abandon();
                  return 0;
              }),
              0);
    EXPECT_EQ(LeftOvers(), 1u);
    EXPECT_EQ(target.Commit(), 0);
    EXPECT_TRUE(std::filesystem::exists(Name("a")));
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
    ASSERT_EQ(::chmod(name.c_str(), 0444), 0);
    CFileException error;
    EXPECT_FALSE(file.Open(name.c_str(), CFile::modeWrite, &error));
    EXPECT_EQ(error.m_cause, CFileException::accessDenied);
    EXPECT_EQ(std::string(error.m_strFileName), name);
    EXPECT_FALSE(file.Open(nullptr));
}

} // namespace
} // namespace vnbytstr

// FileReplacement with what only POSIX systems have: modes, other users, streams by name; and children
// that are killed, which are forked.
#include "src/os/LeftoverSweep.h"
#include "src/os/ScratchFile.h"
#include "tests/os/ReplacementFixture.h"
#include "tests/support/ChildProcess.h"
#include "vnbytstr/ReplacementFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <thread>

namespace vnbytstr {
namespace {

class FileReplacementPosixTest : public test::ReplacementFixture {
protected:
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
};

TEST_F(FileReplacementPosixTest, TheNewFileHasWhatTheOldOneHad) {
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

TEST_F(FileReplacementPosixTest, NobodyElseReadsItBeforeItIsInPlace) {
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

TEST_F(FileReplacementPosixTest, AnotherUsersFileIsWrittenOver) {
    if (!test::CanBecomeNobody())
        GTEST_SKIP() << "becoming another user needs root";
    OpenToAll();
    Write("roots", "old");
    ASSERT_EQ(::chmod(Name("roots").c_str(), 0666), 0);
    EXPECT_EQ(test::AsNobody([&] { return Put(Name("roots"), "new"); }), 0);
    EXPECT_EQ(Stat("roots").st_uid, 0u);
    EXPECT_EQ(Read("roots"), "new");
}

TEST_F(FileReplacementPosixTest, APipeIsWrittenToDirectly) {
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
TEST_F(FileReplacementPosixTest, StandardOutputIsWrittenOnAndNotReplaced) {
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

TEST_F(FileReplacementPosixTest, PlantedLinksAreNotFollowed) {
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

/// A process that is killed while it writes a file over leaves a part of each content; the next
/// sweep puts the old one back, unless another program has written to the file since.
TEST_F(FileReplacementPosixTest, WhatAKilledProcessWasWritingOverComesBack) {
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

TEST_F(FileReplacementPosixTest, TheSweepLeavesOtherUsersFilesAndWhatWasKept) {
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

TEST_F(FileReplacementPosixTest, AChildGivesNothingUpThatItsParentBegan) {
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

} // namespace
} // namespace vnbytstr

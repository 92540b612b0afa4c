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
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <tuple>

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
    ASSERT_EQ(::symlink("plain", Name("link").c_str()), 0);
    const bool hasLists =
        ::setxattr(Name("plain").c_str(), "user.note", "kept", 4, 0) == 0; // not on every system
    for (const unsigned owner : {test::kNobody, 0u}) { // a group of the user's, and another
        if (test::CanBecomeNobody()) {
            ASSERT_EQ(::chown(Name("plain").c_str(), owner, test::kNobody), 0);
        }
        ASSERT_EQ(::chmod(Name("plain").c_str(), 06640), 0);
        const struct stat before = Stat("plain");
        EXPECT_EQ(Put(Name("link"), "new"), 0);
        const struct stat after = Stat("plain");
        EXPECT_EQ(Read("plain"), "new");
        EXPECT_EQ(after.st_mode & 07777, 0640u); // without the rights of its owner and group
        EXPECT_EQ(after.st_uid, before.st_uid);
        EXPECT_EQ(after.st_gid, before.st_gid);
        EXPECT_NE(after.st_ino, before.st_ino);
    }
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
    const auto putWith = [&](unsigned at, int error, const char* content) {
        m_system.Inject(test::Fault{.call = test::Call::Release, .at = at, .error = error});
        const int result = Put(Name("new"), content);
        EXPECT_EQ(m_system.Hits(), 1u);
        return result;
    };
    EXPECT_EQ(putWith(2, EPERM, "newer"), 0);
    EXPECT_EQ(Read("new"), "newer");
    EXPECT_EQ(putWith(2, EIO, "no mode"), EIO);
    EXPECT_EQ(Read("new"), "newer");
    // Who removes the old file meanwhile takes its attributes with it.
    EXPECT_EQ(putWith(1, ENOENT, "none to copy"), 0);
    EXPECT_EQ(Read("new"), "none to copy");
    // What a new file cannot be given stays with the old one.
    const struct stat before = Stat("new");
    EXPECT_EQ(putWith(1, EIO, "newest"), 0);
    EXPECT_EQ(Read("new"), "newest");
    EXPECT_EQ(Stat("new").st_ino, before.st_ino);
}

/// What a folder, a file system or a device refuses is done without, or in another way.
TEST_F(FileReplacementPosixTest, RefusalsThatAreNotTheEnd) {
    const auto putWith = [&](const std::string& name, test::Call call, unsigned at, int error) {
        m_system.Inject(test::Fault{.call = call, .at = at, .error = error});
        const int result = Put(name, "new");
        EXPECT_EQ(m_system.Hits(), 1u);
        m_system.Inject(std::nullopt);
        EXPECT_EQ(LeftOvers(), 0u);
        return result;
    };
    // No new file beside the old one, of the new content or of the old.
    for (const int error : {EACCES, EPERM, EROFS, ENAMETOOLONG}) {
        Write("a", "old");
        std::filesystem::remove(Name("b"));
        std::filesystem::create_hard_link(Name("a"), Name("b"));
        for (const unsigned at : {1u, 3u}) {
            EXPECT_EQ(putWith(Name("a"), test::Call::Open, at, error), 0) << error << at;
            EXPECT_EQ(Read("b"), "new");
        }
        EXPECT_EQ(putWith(Name("none"), test::Call::Open, 1, error),
                  error == ENAMETOOLONG ? 0 : error);
        std::filesystem::remove(Name("none"));
    }
    EXPECT_EQ(putWith(Name("a"), test::Call::Open, 1, EMFILE), EMFILE);
    EXPECT_EQ(putWith(Name("a"), test::Call::Open, 3, EMFILE), EMFILE);
    for (const int error : {EPERM, ENOTSUP, ENOSYS, EINVAL}) {
        EXPECT_EQ(putWith(Name("moded"), test::Call::Release, 1, error), 0) << error;
        std::filesystem::remove(Name("moded"));
    }
    // Neither beside it nor in the temporary folder.
    m_system.Inject(test::Fault{.call = test::Call::Open, .fromThenOn = true, .error = EROFS});
    EXPECT_EQ(Put(Name("a"), "none"), EROFS);
    m_system.Inject(std::nullopt);
    for (const int error : {ENOLCK, EOPNOTSUPP, ENOSYS, EINVAL, EBADF})
        EXPECT_EQ(putWith(Name("locked"), test::Call::Lock, 1, error), 0) << error;
    const std::string null = m_folder.Device("/dev/null");
    for (const int error : {EINVAL, EROFS, ENOTSUP})
        EXPECT_EQ(putWith(null, test::Call::Sync, 1, error), 0) << error;
    // A file that goes, or that cannot be looked at, while its replacement begins.
    Write("moving", "old");
    for (const unsigned at : {1u, 2u})
        EXPECT_EQ(putWith(Name("moving"), test::Call::Status, at, EIO), EIO);
    m_system.Before(test::Call::Status, 2, [&] { std::filesystem::remove(Name("moving")); });
    EXPECT_EQ(Put(Name("moving"), "new"), ENOENT);
    // A scratch file that a sweep took at once: the next name is free.
    m_system.Before(test::Call::Lock, 1, [&] {
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.File("at")))
            if (UseOfScratchName(entry.path().filename().string()))
                std::filesystem::remove(entry);
    });
    EXPECT_EQ(Put(Name("moving"), "new"), 0);
    EXPECT_EQ(Read("moving"), "new");
    for (const auto& [name, error] :
         {std::pair{"none/", EISDIR}, {"none/.", ENOENT}, {"none/..", ENOENT}})
        EXPECT_EQ(Put(Name(name), "x"), error) << name;
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

TEST_F(FileReplacementPosixTest, AFileThatMayNotBeWrittenIsRefused) {
    if (!test::CanBecomeNobody())
        GTEST_SKIP() << "becoming another user needs root";
    OpenToAll(); // so that it could be replaced
    Write("roots", "old");
    ASSERT_EQ(::chmod(Name("roots").c_str(), 0644), 0);
    EXPECT_EQ(test::AsNobody([&] { return FileReplacement().Open(Name("roots").c_str()); }),
              EACCES);
    EXPECT_EQ(test::AsNobody([&] { return Put(Name("roots"), "new"); }), EACCES);
    EXPECT_EQ(Read("roots"), "old");
}

TEST_F(FileReplacementPosixTest, FailuresOfADeviceAreReported) {
    const std::string null = m_folder.Device("/dev/null");
    for (const test::Call call : {test::Call::Sync, test::Call::Close}) {
        m_system.Inject(test::Fault{.call = call, .error = EIO});
        EXPECT_EQ(Put(null, "x"), EIO) << CallName(call);
    }
    m_system.Inject(std::nullopt);
    EXPECT_TRUE(std::filesystem::is_character_file(null));
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
    const std::string own = "/dev/fd/" + std::to_string(file);
    FileHandle copy = kNoFile;
    ASSERT_EQ(m_system.OpenOwnStream(own.c_str(), copy), 0);
    EXPECT_NE(::fcntl(static_cast<int>(copy), F_GETFD) & FD_CLOEXEC, 0);
    m_system.CloseFile(copy);
    ::close(file);
    EXPECT_EQ(::open(Name("out").c_str(), O_RDONLY), file);
    EXPECT_EQ(Put(own, "x"), EACCES);
    ::close(file);
    EXPECT_EQ(Put(own, "x"), ENOENT);
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
    // Whose folder it is, whose the link, and who may put one there.
    constexpr unsigned kOther = 65533;
    for (const auto& [folder, link, mode, isFollowed] :
         {std::tuple{test::kNobody, 0u, 01777, true},
          {test::kNobody, test::kNobody, 01777, true},
          {test::kNobody, kOther, 01777, false},
          {test::kNobody, kOther, 0777, true},
          {test::kNobody, kOther, 01775, true}}) {
        ASSERT_EQ(::chown(m_folder.File("at").c_str(), folder, folder), 0);
        ASSERT_EQ(::lchown(Name("own").c_str(), link, link), 0);
        ASSERT_EQ(::chmod(m_folder.File("at").c_str(), static_cast<mode_t>(mode)), 0);
        EXPECT_EQ(Put(Name("own"), "new"), isFollowed ? 0 : EACCES) << folder << link << mode;
    }
}

TEST_F(FileReplacementPosixTest, AdoptedFilesComeBackToTheirOwner) {
    Write("target", "old");
    const bool isRoot = test::CanBecomeNobody();
    if (isRoot) {
        ASSERT_EQ(::chown(Name("target").c_str(), test::kNobody, test::kNobody), 0);
    }
    const std::string swap = m_folder.File("tmp/~dat-1-1.tmp");
    FileHandle handle;
    ASSERT_EQ(OpenScratch(swap.c_str(), handle), 0);
    FileReplacement target;
    ASSERT_EQ(target.Open(Name("target").c_str()), 0);
    // Not under another file's name, nor with a name more.
    EXPECT_EQ(target.Adopt(handle, Name("target").c_str()), EXDEV);
    ASSERT_EQ(::link(swap.c_str(), Name("more").c_str()), 0);
    EXPECT_EQ(target.Adopt(handle, swap.c_str()), EXDEV);
    std::filesystem::remove(Name("more"));
    m_system.Inject(test::Fault{.call = test::Call::Rename, .at = 2, .error = EIO});
    ASSERT_EQ(target.Adopt(handle, swap.c_str()), 0);
    // On its way back nobody else may read it while it is not its owner's again.
    unsigned mode = 0;
    m_system.Before(test::Call::Release, isRoot ? 5 : 4, [&] {
        FileStatus status;
        m_system.GetFileStatus(handle, status);
        mode = status.mode;
    });
    EXPECT_EQ(target.Commit(), EIO);
    EXPECT_EQ(mode, 0600u);
    m_system.Inject(std::nullopt);
    m_system.CloseFile(handle);
    struct stat info;
    ASSERT_EQ(::stat(swap.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 01600u);
    EXPECT_EQ(info.st_uid, ::geteuid());
}

TEST_F(FileReplacementPosixTest, NamesMayLeadToOtherFilesMeanwhile) {
    const std::string left = ".~new-9-8.tmp", kept = "~dat-1-1.tmp", name = Name("s");
    Write(left, "left");
    Write("fresh", "fresh");
    m_system.Before(test::Call::Lock, 1,
                    [&] { std::filesystem::rename(Name("fresh"), Name(left)); });
    SweepLeftovers(m_folder.File("at"));
    EXPECT_EQ(Read(left), "fresh");
    std::filesystem::remove(Name(left));
    Write(kept, "kept on purpose from that moment on");
    ASSERT_EQ(::chmod(Name(kept).c_str(), 01600), 0);
    m_system.Before(test::Call::Lock, 1, [&] { EXPECT_EQ(::chmod(Name(kept).c_str(), 0600), 0); });
    SweepLeftovers(m_folder.File("at"));
    EXPECT_TRUE(std::filesystem::exists(Name(kept)));
    // The one who makes a file may be overtaken by a sweep: then it needs another name.
    FileHandle handle;
    for (const bool isTaken : {false, true}) {
        Write("fresh", "fresh");
        m_system.Before(test::Call::Lock, 1, [&] {
            isTaken ? std::filesystem::rename(Name("fresh"), name)
                    : static_cast<void>(std::filesystem::remove(name));
        });
        EXPECT_EQ(OpenScratch(name.c_str(), handle), EEXIST);
        EXPECT_EQ(std::filesystem::exists(name), isTaken);
    }
    // Moved away, with a link to it in its place.
    m_system.Before(test::Call::Lock, 1, [&] {
        std::filesystem::rename(name, Name("moved"));
        std::filesystem::create_symlink("moved", name);
    });
    std::filesystem::remove(name);
    EXPECT_EQ(OpenScratch(name.c_str(), handle), EEXIST);
    std::filesystem::remove(name);
    Write("s", "fresh");
    EXPECT_EQ(OpenScratch(name.c_str(), handle), EEXIST); // nobody's
    EXPECT_EQ(Read("s"), "fresh");
    std::filesystem::remove(name);
    for (const int error : {EWOULDBLOCK, EIO, ENOLCK}) {
        m_system.Inject(test::Fault{.call = test::Call::Lock, .error = error});
        const int result = OpenScratch(name.c_str(), handle);
        EXPECT_EQ(result, error == EWOULDBLOCK ? EEXIST : error == EIO ? EIO : 0);
        EXPECT_EQ(std::filesystem::remove(name), error != EIO);
        if (result == 0)
            m_system.CloseFile(handle);
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

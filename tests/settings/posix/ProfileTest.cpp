// The settings on the disk: faults, other processes, processes that die.
#include "vnbytstr/Profile.h"
#include "src/charset/CodePage.h"
#include "src/os/LeftoverSweep.h"
#include "tests/settings/ProfileFixture.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <random>

using vnbytstr::ScopedSystem;
using vnbytstr::test::AsNobody;
using vnbytstr::test::Call;
using vnbytstr::test::CanBecomeNobody;
using vnbytstr::test::Fault;
using vnbytstr::test::kNobody;
using vnbytstr::test::Profile;
using vnbytstr::test::TemporaryFolder;
using vnbytstr::test::TestSystem;

namespace {

TEST_F(Profile, FileIsForItsOwnerAlone) {
    m_system.SetEnvironment("VNBYTSTR_PROFILE", "");
    m_system.SetEnvironment("XDG_CONFIG_HOME", m_folder.File("config/deep"));
    NextTick();
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 1));
    for (const char* name :
         {"config/deep/vnbytstr/profile.ini", "config/deep/vnbytstr/profile.ini.lock"}) {
        struct stat info;
        ASSERT_EQ(::stat(m_folder.File(name).c_str(), &info), 0) << name;
        EXPECT_EQ(info.st_mode & 0777u, 0600u);
    }
    // Without an absolute one, HOME's.
    m_system.SetEnvironment("XDG_CONFIG_HOME", "relative");
    m_system.SetEnvironment("HOME", m_folder.File("home"));
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 0), 0u);
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 2));
    EXPECT_EQ(m_folder.Read("home/.config/vnbytstr/profile.ini"), "[3/A]\nb=2\n");
    m_system.SetEnvironment("HOME", "");
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 7), 7u);
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "b", 3));
    EXPECT_NE(m_system.Diagnostics().find("HOME"), std::string::npos);
}

TEST_F(Profile, OtherContentOfTheSameLengthAndSecondIsSeen) {
    m_folder.Write("profile.ini", "[3/A]\nb=1\n");
    const auto setTime = [&](long nanoseconds) {
        const timespec times[] = {{1000000000, 0}, {1000000000, nanoseconds}};
        ASSERT_EQ(::utimensat(AT_FDCWD, m_folder.File("profile.ini").c_str(), times, 0), 0);
    };
    setTime(1000);
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 1u);
    m_folder.Write("profile.ini", "[3/A]\nb=2\n");
    setTime(2000);
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 2u);
}

TEST_F(Profile, DevicesPipesAndFoldersAreLeftAlone) {
    const std::string name = m_folder.File("profile.ini");
    struct stat before, after;
    const auto expectUntouched = [&](const std::string& path) {
        m_system.SetEnvironment("VNBYTSTR_PROFILE", path);
        NextTick();
        ASSERT_EQ(::stat(path.c_str(), &before), 0);
        EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 7), 7u);
        const bool isSaved = VNWriteProfileDWORD(3, "A", "b", 1);
        EXPECT_EQ(isSaved, path == "/dev/null") << path;
        EXPECT_EQ(VNGetProfileStatus(), isSaved ? ProfileSound : ProfileUnreadable);
        EXPECT_EQ(m_system.Diagnostics().find(path) == std::string::npos, isSaved);
        ASSERT_EQ(::stat(path.c_str(), &after), 0);
        EXPECT_EQ(after.st_mode, before.st_mode);
        EXPECT_EQ(after.st_ino, before.st_ino);
        EXPECT_FALSE(std::filesystem::exists(path + ".lock"));
    };
    ASSERT_EQ(::mkfifo(name.c_str(), 0666), 0);
    expectUntouched(name);
    std::filesystem::remove(name);
    std::filesystem::create_directory(name);
    expectUntouched(name);
    expectUntouched("/dev/zero");
    expectUntouched("/dev/null"); // no settings, and no word about it
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"profile.ini"});
    EXPECT_TRUE(m_system.OpenHandles().empty());
}

TEST_F(Profile, ModeOwnerAndGroupStay) {
    const std::string name = m_folder.File("profile.ini"), lock = name + ".lock";
    m_folder.Write("profile.ini", "[3/A]\nb=1\n");
    ASSERT_EQ(::chmod(name.c_str(), 0664), 0);
    if (CanBecomeNobody()) {
        ASSERT_EQ(::chown(name.c_str(), kNobody, 2000), 0);
        ASSERT_EQ(::chown(m_folder.Path().c_str(), kNobody, 2000), 0);
    }
    struct stat before, after;
    ASSERT_EQ(::stat(name.c_str(), &before), 0);
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 2));
    for (const std::string& path : {name, lock}) {
        ASSERT_EQ(::stat(path.c_str(), &after), 0);
        EXPECT_EQ(after.st_mode, before.st_mode);
        EXPECT_EQ(after.st_uid, before.st_uid);
        EXPECT_EQ(after.st_gid, before.st_gid);
    }
    if (!CanBecomeNobody())
        return;
    // The user goes on with what root has saved, and so with a file that root has made.
    const auto save = [] { return VNWriteProfileDWORD(3, "A", "b", 3) ? 0 : 1; };
    EXPECT_EQ(AsNobody(save), 0);
    std::filesystem::remove(name);
    std::filesystem::remove(lock);
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 2));
    ASSERT_EQ(::stat(name.c_str(), &after), 0);
    EXPECT_EQ(after.st_mode & 0777u, 0600u);
    EXPECT_EQ(AsNobody(save), 0);
    // In a folder that takes no new name the profile itself is locked, and written over.
    std::filesystem::remove(lock);
    ASSERT_EQ(::chown(m_folder.Path().c_str(), 0, 0), 0);
    ASSERT_EQ(::chmod(m_folder.Path().c_str(), 0755), 0);
    m_system.SetTemporaryFolder("/tmp/");
    EXPECT_EQ(AsNobody(save), 0);
    EXPECT_EQ(m_folder.Read("profile.ini"), "[3/A]\nb=3\n");
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"profile.ini"});
}

TEST_F(Profile, ALockIsNotWaitedForWithoutEnd) {
    const std::string name = m_folder.File("profile.ini.lock");
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t holder = ::fork();
    if (holder == 0) {
        const int lock = ::open(name.c_str(), O_RDWR | O_CREAT, 0600);
        ::flock(lock, LOCK_EX);
        ::write(ready[1], "r", 1);
        ::pause();
    }
    char word;
    ASSERT_EQ(::read(ready[0], &word, 1), 1);
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "b", 1));
    EXPECT_NE(m_system.Diagnostics().find("process " + std::to_string(holder) + " (settings_test"),
              std::string::npos)
        << m_system.Diagnostics();
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 1));
    // A file system without locks has none to wait for.
    for (const int error : {ENOLCK, EOPNOTSUPP, ENOSYS}) {
        m_system.Inject(Fault{.call = Call::Lock, .fromThenOn = true, .error = error});
        EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", static_cast<DWORD>(error)));
    }
}

/// Notes how files are opened.
class FlagSystem : public TestSystem {
public:
    int OpenFile(const char* name, unsigned flags, vnbytstr::FileHandle& handle) override {
        m_flags |= flags;
        return TestSystem::OpenFile(name, flags, handle);
    }
    unsigned m_flags = 0;
};

TEST_F(Profile, ProgramsStartedMeanwhileInheritNothing) {
    FlagSystem system;
    system.SetEnvironment("VNBYTSTR_PROFILE", m_folder.File("profile.ini"));
    const ScopedSystem scope(system);
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 1));
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 0), 1u);
    EXPECT_NE(system.m_flags & vnbytstr::kOpenCreate, 0u);
    EXPECT_EQ(system.m_flags & vnbytstr::kOpenInherit, 0u);
}

TEST_F(Profile, ALinkStaysOne) {
    std::filesystem::create_directory(m_folder.File("elsewhere"));
    m_folder.Write("elsewhere/real.ini", "[3/A]\nb=1\n");
    std::filesystem::create_symlink("elsewhere/real.ini", m_folder.File("profile.ini"));
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 0), 1u);
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 2));
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder.File("profile.ini")));
    EXPECT_EQ(m_folder.Read("elsewhere/real.ini"), "[3/A]\nb=2\n");
}

// --- several processes, the real system ---------------------------------------------------------

class ProfileProcesses : public testing::Test {
protected:
    ProfileProcesses() { ::setenv("VNBYTSTR_PROFILE", m_folder.File("profile.ini").c_str(), 1); }
    ~ProfileProcesses() override { ::unsetenv("VNBYTSTR_PROFILE"); }

    template <typename Work>
    static pid_t Start(Work work) {
        const pid_t child = ::fork();
        if (child == 0) {
            work();
            ::_exit(0);
        }
        return child;
    }
    static void Settle() { ::usleep(20000); } // more than a tick

    TemporaryFolder m_folder;
};

TEST_F(ProfileProcesses, TwoWritersLoseNothing) {
    constexpr int kValues = 60;
    const auto writer = [](const char* prefix) {
        for (int i = 0; i < kValues; ++i) {
            if (!VNWriteProfileDWORD(3, "Shared", (prefix + std::to_string(i)).c_str(),
                                     static_cast<DWORD>(i)))
                ::_exit(1);
        }
    };
    const pid_t children[] = {Start([&] { writer("a"); }), Start([&] { writer("b"); })};
    for (const pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    Settle();
    CProfileSectionKey key;
    VNGetProfileSectionKey(3, "Shared", key);
    EXPECT_EQ(key.GetCount(), 2 * kValues);
}

TEST_F(ProfileProcesses, AKillLeavesWhatWasSavedAndNoLock) {
    std::mt19937 random(std::random_device{}());
    for (int round = 0; round < 40; ++round) {
        int acknowledged[2];
        ASSERT_EQ(::pipe(acknowledged), 0);
        const auto first = static_cast<DWORD>(round * 100000);
        const pid_t child = Start([&] {
            for (DWORD i = first;; ++i) {
                CProfileBatch batch; // two values that belong together, and some weight
                batch.WriteDWORD(3, "Pair", "left", i);
                batch.WriteString(3, "Pair", "weight",
                                  std::string(20000, static_cast<char>('a' + i % 26)).c_str());
                batch.WriteDWORD(3, "Pair", "right", i);
                if (!batch.Commit() || ::write(acknowledged[1], &i, sizeof i) != sizeof i)
                    ::_exit(1);
            }
        });
        ::close(acknowledged[1]);
        ::usleep(static_cast<useconds_t>(std::uniform_int_distribution<int>(500, 15000)(random)));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        DWORD last = 0, saved = 0;
        bool any = false;
        while (::read(acknowledged[0], &saved, sizeof saved) == sizeof saved) {
            last = saved;
            any = true;
        }
        ::close(acknowledged[0]);
        Settle();
        const DWORD left = VNGetProfileDWORD(3, "Pair", "left", 0);
        EXPECT_EQ(VNGetProfileDWORD(3, "Pair", "right", 0), left);
        if (any) {
            EXPECT_GE(left, last);
            EXPECT_LE(left, last + 1);
        }
        EXPECT_TRUE(VNWriteProfileDWORD(3, "After", "round", static_cast<DWORD>(round)));
    }
    // What the killed left beside the file goes with the first save of another program.
    vnbytstr::SweepLeftovers(m_folder.Path());
    auto names = m_folder.Names();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"profile.ini", "profile.ini.lock"}));
}

} // namespace

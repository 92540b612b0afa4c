// The settings on the disk: faults, other processes, processes that die.
#include "vnbytstr/Profile.h"
#include "src/charset/CodePage.h"
#include "src/os/LeftoverSweep.h"
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
using vnbytstr::test::TemporaryFolder;
using vnbytstr::test::TestSystem;

namespace {

class Profile : public testing::Test {
protected:
    Profile() : m_scope(m_system) {
        m_system.SetEnvironment("VNBYTSTR_PROFILE", m_folder.File("profile.ini"));
        m_system.SetTick(m_tick);
    }
    void NextTick() { m_system.SetTick(++m_tick); }
    bool Holds(const std::string& name) const { return !m_folder.Read(name).empty(); }

    TemporaryFolder m_folder;
    TestSystem m_system;
    ScopedSystem m_scope;
    DWORD m_tick = 1000;
};

TEST_F(Profile, ValuesAreWrittenAndRead) {
    EXPECT_EQ(VNGetProfileDWORD(3, "Options", "MaxCachePages", 64, 0), 64u);
    EXPECT_FALSE(VNIsProfileValue(3, "Options", "MaxCachePages"));
    EXPECT_TRUE(VNWriteProfileDWORD(3, "Options", "MaxCachePages", 0xFFFFFFFF));
    EXPECT_EQ(VNGetProfileDWORD(3, "Options", "MaxCachePages", 64, 0), 0xFFFFFFFFu);
    EXPECT_EQ(VNGetProfileDWORD(1, "Options", "MaxCachePages", 64, 0), 64u); // another root
    EXPECT_TRUE(VNWriteProfileString(3, "Options", "UILanguage", ""));
    EXPECT_TRUE(VNIsProfileValue(3, "Options", "UILanguage"));
    EXPECT_EQ(VNGetProfileString(3, "Options", "UILanguage", "ENU", 0), "");
    EXPECT_EQ(VNGetProfileString(3, "Options", "Other", "ENU", 0), "ENU");
    EXPECT_EQ(VNGetProfileString(3, "Options", "Other", nullptr, 0), "");
    CProfileSectionKey key;
    EXPECT_TRUE(VNGetProfileSectionKey(3, "Options", key));
    ASSERT_EQ(key.GetCount(), 2);
    EXPECT_EQ(key.GetName(0), "MaxCachePages");
    EXPECT_EQ(key.GetString(0), "4294967295");
    EXPECT_EQ(key.GetName(2), "");
    EXPECT_EQ(key.GetString(-1), "");
    EXPECT_TRUE(VNWriteProfileString(3, "Options", "UILanguage", nullptr));
    EXPECT_FALSE(VNIsProfileValue(3, "Options", "UILanguage"));
    EXPECT_TRUE(VNDeleteProfileSection(3, "Options"));
    EXPECT_TRUE(VNDeleteProfileSection(3, "Options"));
    EXPECT_FALSE(VNGetProfileSectionKey(3, "Options", key));
    EXPECT_EQ(key.GetCount(), 0);
    EXPECT_FALSE(VNWriteProfileString(3, nullptr, "x", "y"));
    EXPECT_FALSE(VNIsProfileValue(3, "Options", nullptr));
    EXPECT_EQ(VNGetProfileDWORD(3, nullptr, nullptr, 5), 5u);
    EXPECT_TRUE(m_system.OpenHandles().empty());
    EXPECT_EQ(m_system.Diagnostics(), "");
}

TEST_F(Profile, TextThatIsNotANumberGivesTheDefault) {
    m_folder.Write("profile.ini",
                   "[3/N]\na=12x\nb=\nc=-1\nd=4294967296\ne= 7 \nf=0x1F\ng=0x\nh=1e3\ni=010\n");
    const auto number = [](const char* name) { return VNGetProfileDWORD(3, "N", name, 99); };
    for (const char* name : {"a", "b", "c", "d", "g", "h"})
        EXPECT_EQ(number(name), 99u) << name;
    EXPECT_EQ(number("e"), 7u);
    EXPECT_EQ(number("f"), 31u);
    EXPECT_EQ(number("i"), 10u);
}

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

TEST_F(Profile, ChangesOfOthersAreSeenAtTheNextTick) {
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 1));
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 0), 1u);
    m_folder.Write("profile.ini", "[3/A]\nb=22\n");
    m_system.ResetCounts();
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 0), 1u);
    EXPECT_EQ(m_system.Count(Call::Status), 0u); // in one tick the file is not even looked at
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 0), 22u);
    m_folder.Write("profile.ini",
                   "[3/A]\nb=333\nc=1\n"); // a write keeps what others wrote meanwhile
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 4));
    EXPECT_EQ(m_folder.Read("profile.ini"), "[3/A]\nb=4\nc=1\n");
    m_system.ResetCounts();
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 4)); // nothing to change, nothing written
    EXPECT_EQ(m_system.Count(Call::Write), 0u);
}

TEST_F(Profile, ABatchIsSavedWholeOrNotAtAll) {
    VNWriteProfileString(3, "Global Variables", "OLD", "1");
    CProfileBatch batch;
    batch.DeleteSection(3, "Global Variables");
    for (int i = 0; i < 100000; ++i)
        batch.WriteDWORD(3, "Global Variables", ("VAR" + std::to_string(i)).c_str(),
                         static_cast<DWORD>(i));
    batch.WriteString(3, "Global Variables", "VAR7", nullptr);
    m_system.Inject(Fault{.call = Call::Rename, .error = EIO});
    EXPECT_FALSE(batch.Commit());
    EXPECT_EQ(m_folder.Read("profile.ini"), "[3/Global Variables]\nOLD=1\n");
    m_system.Inject({});
    m_system.ResetCounts();
    EXPECT_TRUE(batch.Commit());
    EXPECT_EQ(m_system.Count(Call::Rename), 1u);
    CProfileSectionKey key;
    EXPECT_TRUE(VNGetProfileSectionKey(3, "Global Variables", key));
    EXPECT_EQ(key.GetCount(), 99999);
    EXPECT_FALSE(VNIsProfileValue(3, "Global Variables", "OLD"));
    EXPECT_EQ(VNGetProfileDWORD(3, "Global Variables", "VAR99999", 0), 99999u);
}

TEST_F(Profile, AnUnreadableFileGivesDefaultsAndIsNotWritten) {
    m_folder.Write("profile.ini", "[3/A]\nb=1\n");
    m_system.Inject(Fault{.call = Call::Open, .fromThenOn = true, .error = EACCES});
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 9u);
    EXPECT_NE(m_system.Diagnostics().find(m_folder.File("profile.ini")), std::string::npos);
    // The lock opens, the file does not.
    m_system.Inject(Fault{.call = Call::Open, .at = 2, .fromThenOn = true, .error = EACCES});
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "c", 1));
    m_system.Inject({});
    EXPECT_EQ(m_folder.Read("profile.ini"), "[3/A]\nb=1\n");
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 1u);
}

TEST_F(Profile, ADamagedFileIsKeptBesideTheNewOne) {
    const std::string damaged("[3/A]\nb=1\nc=\xFF\xFE\nd=4\n");
    m_folder.Write("profile.ini", damaged);
    m_folder.Write("profile.ini.damaged-1", "another");
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "d", 0), 4u);
    EXPECT_NE(m_system.Diagnostics().find("line 3"), std::string::npos);
    EXPECT_EQ(m_folder.Read("profile.ini"), damaged); // reading changes nothing
    m_system.Inject(Fault{.call = Call::Rename, .error = EIO});
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "e", 5));
    m_system.Inject({});
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "e", 5));
    EXPECT_EQ(m_folder.Read("profile.ini"), "[3/A]\nb=1\nd=4\ne=5\n");
    EXPECT_EQ(m_folder.Read("profile.ini.damaged-1"), "another");
    EXPECT_EQ(m_folder.Read("profile.ini.damaged-2"), damaged);
    EXPECT_FALSE(Holds("profile.ini.damaged-3"));
    EXPECT_NE(m_system.Diagnostics().find("profile.ini.damaged-2"), std::string::npos);
    // When it cannot be kept it is not replaced.
    m_folder.Write("profile.ini", damaged + "more");
    for (const Call call : {Call::Write, Call::Sync, Call::Close}) {
        m_system.Inject(Fault{.call = call, .at = call == Call::Close ? 4u : 1u, .error = ENOSPC});
        EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "e", 6)) << CallName(call);
        EXPECT_EQ(m_folder.Read("profile.ini"), damaged + "more");
        EXPECT_FALSE(Holds("profile.ini.damaged-3"));
    }
}

TEST_F(Profile, AFailureToReadPasses) {
    m_folder.Write("profile.ini", "[3/A]\nb=1\n");
    const auto breakReading = [&] {
        m_system.Inject(Fault{.call = Call::Open, .fromThenOn = true, .error = EMFILE});
    };
    breakReading();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 9u);
    EXPECT_EQ(VNGetProfileStatus(), ProfileUnreadable);
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 9u);
    const std::string said = m_system.Diagnostics();
    EXPECT_EQ(said.find("cannot be read"), said.rfind("cannot be read")); // once
    m_system.Inject({});
    NextTick(); // the file is what it was
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 1u);
    EXPECT_EQ(VNGetProfileStatus(), ProfileSound);
    // What was read last is better than defaults, also after a change by this process.
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 2));
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 2u);
    m_folder.Write("profile.ini", "[3/A]\nb=3\nc=1\n");
    breakReading();
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "c", 4));
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 2u);
    m_system.Inject({});
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 3u);
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

TEST_F(Profile, AFileOfAnotherLengthThanSettingsHaveIsNotRead) {
    m_folder.Write("profile.ini", "[3/A]\nb=1\n");
    std::filesystem::resize_file(m_folder.File("profile.ini"), std::uintmax_t{1} << 40);
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 7), 7u);
    EXPECT_EQ(VNGetProfileStatus(), ProfileUnreadable);
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "b", 1));
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

TEST_F(Profile, AProgramLearnsOfTrouble) {
    struct Told {
        std::vector<std::pair<EProfileStatus, std::string>> messages;
        static void Take(EProfileStatus status, const char* text, void* context) {
            // A handler may ask for settings.
            EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 0), 1u);
            static_cast<Told*>(context)->messages.emplace_back(status, text);
        }
    } told;
    VNSetProfileHandler(&Told::Take, &told);
    m_folder.Write("profile.ini", "[3/A]\nb=1\n\xFF\n");
    CString text;
    EXPECT_EQ(VNGetProfileStatus(&text), ProfileDamaged);
    ASSERT_EQ(told.messages.size(), 1u);
    EXPECT_EQ(told.messages[0].second, std::string(text));
    m_system.Inject(Fault{.call = Call::Rename, .error = EROFS});
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "c", 1));
    m_system.Inject({});
    EXPECT_EQ(VNGetProfileStatus(&text), ProfileNotSaved);
    EXPECT_EQ(told.messages.back(), std::pair(ProfileNotSaved, std::string(text)));
    EXPECT_NE(text.Find("profile.ini"), -1);
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "c", 1));
    EXPECT_EQ(VNGetProfileStatus(&text), ProfileSound);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(m_system.Diagnostics(), "");
    VNSetProfileHandler(nullptr);
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

TEST_F(Profile, TextFollowsTheCodePage) {
    {
        const vnbytstr::ScopedCodePage scope(1252);
        NextTick();
        EXPECT_TRUE(VNWriteProfileString(3, "A", "b", "gr\xFC\xDF"));
        EXPECT_EQ(VNGetProfileString(3, "A", "b", ""), "gr\xFC\xDF");
    }
    const vnbytstr::ScopedCodePage scope(65001);
    NextTick();
    EXPECT_EQ(VNGetProfileString(3, "A", "b", ""), "gr\xC3\xBC\xC3\x9F");
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

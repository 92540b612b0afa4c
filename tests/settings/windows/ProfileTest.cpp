// The settings under the user's application data; two writers; processes that are ended while they write.
#include "src/os/LeftoverSweep.h"
#include "tests/settings/ProfileFixture.h"
#include "tests/support/windows/ChildProgram.h"

#include <algorithm>
#include <fstream>
#include <random>

namespace vnbytstr::test {
namespace {

TEST_F(Profile, StandsUnderTheApplicationData) {
    m_system.SetEnvironment("VNBYTSTR_PROFILE", "");
    m_system.SetEnvironment("APPDATA", m_folder.File("data"));
    NextTick();
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 1));
    EXPECT_EQ(m_folder.Read("data/vnbytstr/profile.ini"), "[3/A]\nb=1\n");
    m_system.SetEnvironment("APPDATA", "relative");
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 7), 7u);
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "b", 3));
}

/// The parameter: whether the settings are in the registry.
class ProfileProcesses : public testing::TestWithParam<bool> {
protected:
    ProfileProcesses() { ::SetEnvironmentVariableA("VNBYTSTR_PROFILE", Name().c_str()); }
    ~ProfileProcesses() override {
        ::SetEnvironmentVariableA("VNBYTSTR_PROFILE", nullptr);
        ::RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
    }

    std::string Name() const {
        return GetParam() ? std::string("registry:") + kKey : m_folder.File("profile.ini");
    }
    static constexpr const char* kKey = "Software\\vnbytstr tests\\processes";
    static void Settle() { std::this_thread::sleep_for(std::chrono::milliseconds(40)); } // a tick

    TemporaryFolder m_folder;
};

TEST(ProfileChild, WritesSixtyValues) {
    const std::string prefix = ChildProgram::Task();
    if (prefix.empty())
        GTEST_SKIP() << "for a child process";
    for (DWORD i = 0; i < 60; ++i)
        EXPECT_TRUE(VNWriteProfileDWORD(3, "Shared", (prefix + std::to_string(i)).c_str(), i));
}

TEST_P(ProfileProcesses, TwoWritersLoseNothing) {
    ChildProgram first("ProfileChild.WritesSixtyValues", "a");
    ChildProgram second("ProfileChild.WritesSixtyValues", "b");
    EXPECT_EQ(first.Wait(), 0u);
    EXPECT_EQ(second.Wait(), 0u);
    Settle();
    CProfileSectionKey key;
    VNGetProfileSectionKey(3, "Shared", key);
    EXPECT_EQ(key.GetCount(), 120);
}

TEST(ProfileChild, WritesPairsWithoutEnd) {
    const std::string task = ChildProgram::Task(); // the first number, a blank, a file for the last
    if (task.empty())
        GTEST_SKIP() << "for a child process";
    std::ofstream acknowledged(task.substr(task.find(' ') + 1), std::ios::binary);
    for (DWORD i = static_cast<DWORD>(std::stoul(task));; ++i) {
        CProfileBatch batch; // two values that belong together, and some weight
        batch.WriteDWORD(3, "Pair", "left", i);
        batch.WriteString(3, "Pair", "weight",
                          std::string(20000, static_cast<char>('a' + i % 26)).c_str());
        batch.WriteDWORD(3, "Pair", "right", i);
        ASSERT_TRUE(batch.Commit());
        acknowledged.write(reinterpret_cast<const char*>(&i), sizeof i).flush();
    }
}

TEST_P(ProfileProcesses, AKillLeavesWhatWasSavedAndNoLock) {
    std::minstd_rand random(std::random_device{}());
    const TemporaryFolder other;
    for (unsigned round = 1; round <= 12; ++round) {
        const std::string log = other.File(std::to_string(round));
        const auto acknowledged = [&] {
            std::vector<DWORD> all;
            std::ifstream file(log, std::ios::binary);
            for (DWORD each = 0; file.read(reinterpret_cast<char*>(&each), sizeof each);)
                all.push_back(each);
            return all;
        };
        {
            ChildProgram child("ProfileChild.WritesPairsWithoutEnd",
                               std::to_string(round * 100000) + " " + log);
            EXPECT_TRUE(WaitFor([&] { return !acknowledged().empty() || !child.IsRunning(); }));
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 15000));
            EXPECT_TRUE(child.IsRunning());
            child.Kill();
        }
        Settle();
        const DWORD left = VNGetProfileDWORD(3, "Pair", "left", 0);
        EXPECT_EQ(VNGetProfileDWORD(3, "Pair", "right", 0), left);
        ASSERT_FALSE(acknowledged().empty());
        EXPECT_GE(left, acknowledged().back());
        EXPECT_LE(left, acknowledged().back() + 1);
        EXPECT_TRUE(VNWriteProfileDWORD(3, "After", "round", round));
    }
    if (GetParam())
        return;
    SweepLeftovers(m_folder.Path());
    auto names = m_folder.Names();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"profile.ini", "profile.ini.lock"}));
}

INSTANTIATE_TEST_SUITE_P(, ProfileProcesses, testing::Bool(),
                         [](const auto& info) { return info.param ? "Registry" : "File"; });

/// Values as other programs and people write them.
TEST_F(Profile, ValuesOfOtherTypesInTheRegistry) {
    const char* const key = "Software\\vnbytstr tests\\types";
    const auto set = [&](const char* name, DWORD type, const void* data, DWORD size) {
        EXPECT_EQ(::RegSetKeyValueA(HKEY_CURRENT_USER, (std::string(key) + "\\3\\T").c_str(), name,
                                    type, data, size),
                  0);
    };
    const DWORD number = 77;
    set("number", REG_DWORD, &number, sizeof number);
    set("bytes", REG_BINARY, "\x01\x02", 2);
    set("unended", REG_SZ, "text", 4);
    m_system.SetEnvironment("VNBYTSTR_PROFILE", std::string("registry:") + key);
    m_system.SetEnvironment("APPDATA", m_folder.Path()); // for the lock
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "T", "number", 0), 77u);
    EXPECT_EQ(VNGetProfileString(3, "T", "unended", ""), "text");
    EXPECT_FALSE(VNIsProfileValue(3, "T", "bytes"));
    EXPECT_TRUE(VNWriteProfileString(3, "T", "BYTES", "x")); // another name than "bytes"
    EXPECT_TRUE(VNWriteProfileDWORD(3, "T", "number", 77));  // as it is: stays a number
    const auto typeOf = [&](const char* name) {
        DWORD type = 0;
        ::RegGetValueA(HKEY_CURRENT_USER, (std::string(key) + "\\3\\T").c_str(), name, RRF_RT_ANY,
                       &type, nullptr, nullptr);
        return type;
    };
    EXPECT_EQ(typeOf("number"), DWORD{REG_DWORD});
    EXPECT_EQ(typeOf("bytes"), DWORD{REG_BINARY});
    EXPECT_EQ(VNGetProfileString(3, "T", "BYTES", ""), "x");
    EXPECT_FALSE(
        VNWriteProfileDWORD(3, std::string(300, 'x').c_str(), "n", 1)); // too long for a key
    NextTick();
    EXPECT_EQ(VNGetProfileString(3, "T", "BYTES", ""), "x");
    EXPECT_FALSE(VNIsProfileValue(3, std::string(300, 'x').c_str(), "n"));
    EXPECT_TRUE(VNDeleteProfileSection(3, "T"));
    EXPECT_EQ(typeOf("bytes"), DWORD{REG_BINARY});
    EXPECT_EQ(typeOf("number"), 0u);
    ::RegDeleteTreeA(HKEY_CURRENT_USER, key);
}

} // namespace
} // namespace vnbytstr::test

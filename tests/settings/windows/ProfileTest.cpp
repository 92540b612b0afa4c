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

class ProfileProcesses : public testing::Test {
protected:
    ProfileProcesses() { ::SetEnvironmentVariableA("VNBYTSTR_PROFILE", Name().c_str()); }
    ~ProfileProcesses() override { ::SetEnvironmentVariableA("VNBYTSTR_PROFILE", nullptr); }

    std::string Name() const { return m_folder.File("profile.ini"); }
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

TEST_F(ProfileProcesses, TwoWritersLoseNothing) {
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

TEST_F(ProfileProcesses, AKillLeavesWhatWasSavedAndNoLock) {
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
    SweepLeftovers(m_folder.Path());
    auto names = m_folder.Names();
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"profile.ini", "profile.ini.lock"}));
}

} // namespace
} // namespace vnbytstr::test

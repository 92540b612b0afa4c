// Processes that save over and over are ended: the file is an old one or a whole new one, the next
// process clears away what they left, and a living process's files stay. Each kind of save is ended 4
// times; VNBYTSTR_KILLS=100 makes it 100.
#include "src/os/LeftoverSweep.h"
#include "tests/durability/DurabilityFixture.h"
#include "tests/support/windows/ChildProgram.h"
#include "tests/support/windows/Substitute.h"
#include "vnbytstr/ByteStore.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace vnbytstr::test {
namespace {

unsigned KillCount() {
    const char* const wanted = std::getenv("VNBYTSTR_KILLS");
    return wanted != nullptr ? static_cast<unsigned>(std::atoi(wanted)) : 4;
}

Place PlaceIn(const std::string& root) { return {root + "home/", root + "tmp/"}; }

void SaveOnce(const SaveScenario& scenario, const Place& place, unsigned version) {
    TestSystem system;
    const Session session(system, place, scenario);
    scenario.begin(place, version).save();
}

TEST(SavingChild, SavesWithoutEnd) {
    const std::string task = ChildProgram::Task(); // the number of the scenario, a blank, the root
    if (task.empty())
        GTEST_SKIP() << "for a child process";
    const SaveScenario& scenario = SaveScenarios().at(std::stoul(task));
    const std::string root = task.substr(task.find(' ') + 1);
    std::ofstream(root + "started").put('\n');
    for (unsigned i = 0;; ++i) {
        Prepare(scenario, PlaceIn(root));
        SaveOnce(scenario, PlaceIn(root), 1 + i % 2);
    }
}

class Killed : public testing::TestWithParam<std::size_t> {
protected:
    Killed() {
        std::filesystem::create_directory(m_place.home);
        std::filesystem::create_directory(m_place.temporary);
    }
    /// Undoes what a kill does on the substitute alone.
    void ClearAfterSubstitute() const {
        if (!IsSubstitute())
            return;
        // Replacing a file takes two steps, with a moment between them in which nobody has the name.
        const std::string name = m_place.home + m_scenario.target, aside = name + ".~aside";
        if (std::filesystem::exists(aside) && std::filesystem::exists(name))
            std::filesystem::remove(aside);
        else if (std::filesystem::exists(aside))
            std::filesystem::rename(aside, name);
        // A new file gets its attributes after it was made: this one has come no further.
        for (const auto& entry : std::filesystem::directory_iterator(m_place.temporary)) {
            const std::string file = entry.path().string();
            if (entry.path().filename().string().starts_with("~dat-") && entry.file_size() == 0 &&
                (::GetFileAttributesA(file.c_str()) & FILE_ATTRIBUTE_SYSTEM) == 0)
                std::filesystem::remove(file);
        }
    }
    bool IsWhole() const {
        const std::string name = m_place.home + m_scenario.target;
        if (!std::filesystem::exists(name))
            return !m_scenario.before;
        const std::string content = m_root.Read("home/" + m_scenario.target);
        return content == m_scenario.before || content == m_scenario.text(1) ||
               content == m_scenario.text(2);
    }
    std::vector<std::string> LeftOvers() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_root.Path())) {
            const std::string name = entry.path().filename().string();
            if (name.find('~') != std::string::npos || name.ends_with(".new"))
                names.push_back(name);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    const TemporaryFolder m_root;
    const Place m_place = PlaceIn(m_root.Path());
    const SaveScenario& m_scenario = SaveScenarios()[GetParam()];
};

TEST_P(Killed, LeavesWholeFilesAndNothingElse) {
    TestSystem system;
    const Session session(system, m_place, m_scenario);
    const std::string text(18 * CBytePage::m_dwPageSize, 'w');
    CByteStore witness; // lives beside all this
    witness.Concat(reinterpret_cast<const BYTE*>(text.data()), static_cast<DWORD>(text.size()));
    const std::vector<std::string> living = LeftOvers();
    EXPECT_FALSE(living.empty());

    std::minstd_rand random(std::random_device{}());
    for (unsigned i = 0; i < KillCount() && !HasFailure(); ++i) {
        {
            ChildProgram child("SavingChild.SavesWithoutEnd",
                               std::to_string(GetParam()) + " " + m_root.Path());
            ASSERT_TRUE(WaitFor([&] { // it may still be open
                std::error_code notYet;
                return std::filesystem::remove(m_root.File("started"), notYet);
            }));
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 60000));
            EXPECT_TRUE(child.IsRunning());
        }
        ClearAfterSubstitute();
        if (!IsWhole() && m_scenario.isWrittenOver) {
            SweepLeftovers(m_place.home);
            SweepLeftovers(m_place.temporary);
        }
        EXPECT_TRUE(IsWhole()) << "after kill " << i;
    }
    Prepare(m_scenario, m_place);
    SweepLeftovers(m_place.home); // as a new process's first save does
    SweepLeftovers(m_place.temporary);
    m_scenario.begin(m_place, 1).save();
    EXPECT_EQ(m_root.Read("home/" + m_scenario.target), m_scenario.text(1));
    EXPECT_EQ(LeftOvers(), living) << "a living store's file was swept, or a dead one's was not";
    witness.SaveToFile(m_root.File("witness").c_str());
    EXPECT_EQ(m_root.Read("witness"), text);
    EXPECT_THAT(LeftOvers(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Saves, Killed, testing::Range(std::size_t{0}, SaveScenarios().size()),
                         [](const testing::TestParamInfo<std::size_t>& info) {
                             std::string name = SaveScenarios()[info.param].name;
                             for (char& c : name)
                                 c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                             return name;
                         });

} // namespace
} // namespace vnbytstr::test

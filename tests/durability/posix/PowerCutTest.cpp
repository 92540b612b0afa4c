// Every save is cut short at every point, by a power cut and by the end of the process: the file is
// the old one or the whole new one.
#include "src/os/LeftoverSweep.h"
#include "tests/durability/DurabilityFixture.h"
#include "tests/support/PowerCutSystem.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <set>

namespace vnbytstr::test {
namespace {

using Moment = PowerCutSystem::Moment;

class PowerCut : public ::testing::TestWithParam<SaveScenario> {
protected:
    /// Prepares and saves version 1.
    void Run() {
        Prepare(GetParam(), m_place);
        if (GetParam().before)
            std::filesystem::permissions(m_place.Root() + TargetName(),
                                         static_cast<std::filesystem::perms>(m_mode));
        m_system.emplace(m_place.Root());
        const Session session(*m_system, m_place, GetParam());
        const Saving saving = GetParam().begin(m_place, 1);
        saving.save();
    }
    std::string TargetName() const { return "home/" + GetParam().target; }
    /// What a target's content is, in a word.
    std::string Describe(const std::string* content) const {
        if (content == nullptr)
            return GetParam().before ? "missing" : "old";
        if (*content == m_new)
            return "new";
        return GetParam().before && *content == *GetParam().before
                   ? "old"
                   : "between, " + std::to_string(content->size()) + " bytes";
    }

    /// Makes the folders what they are after a cut. Files that are there stay the same ones.
    void Restore(const PowerCutSystem::Disk& disk) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_place.Root())) {
            const std::string name = entry.path().string().substr(m_place.Root().size());
            if (!entry.is_directory() && !disk.contains(name))
                std::filesystem::remove(entry.path());
        }
        for (const auto& [name, content] : disk) {
            if (content->starts_with("-> "))
                continue;
            const std::string file = m_place.Root() + name;
            const bool isNew = !std::filesystem::exists(file);
            std::ofstream(file, std::ios::binary) << *content;
            if (isNew) // a scratch file
                std::filesystem::permissions(file, std::filesystem::perms{01600});
        }
    }

    mode_t m_mode = 0644; ///< of the target at the beginning
    PlaceForTest m_place;
    std::optional<PowerCutSystem> m_system;
    const std::string m_new = GetParam().text(1);
};

TEST_P(PowerCut, LeavesTheOldFileOrTheNewOne) {
    Run();
    if (GetParam().isWrittenOver)
        return; // see ComesBackAfterASweep
    const auto& moments = m_system->Moments();
    ASSERT_GT(moments.size(), 2u);
    bool wasNew = false;
    for (const Moment& moment : moments) {
        const PowerCutSystem::File* file = moment.Find(TargetName());
        const std::string state = Describe(file ? file->now.get() : nullptr);
        ASSERT_TRUE(state == "old" || state == "new") << state << " after " << moment.call;
        ASSERT_FALSE(wasNew && state == "old") << moment.call;
        wasNew = state == "new";
    }
    ASSERT_TRUE(wasNew);
    if (GetParam().keeps != SaveScenario::PowerCut)
        return;
    for (const Moment& moment : moments) {
        const bool isEnd = &moment == &moments.back();
        PowerCutSystem::ForEachCut(moment, [&](const PowerCutSystem::Disk& disk,
                                               const std::string& what) {
            const auto found = disk.find(TargetName());
            const std::string state = Describe(found != disk.end() ? found->second.get() : nullptr);
            // What has been reported as saved stays saved.
            EXPECT_TRUE(state == "new" || (state == "old" && !isEnd))
                << state << " " << what << (isEnd ? " at the end" : "");
        });
        if (HasFailure())
            return;
    }
}

/// What is written over needs the copy of the old content that lies beside it.
TEST_P(PowerCut, ComesBackAfterASweep) {
    if (!GetParam().isWrittenOver)
        return;
    Run();
    const auto moments = m_system->Moments();
    std::size_t swept = 0;
    for (const Moment& moment : moments) {
        const bool isEnd = &moment == &moments.back();
        PowerCutSystem::ForEachCut(
            moment, [&](const PowerCutSystem::Disk& disk, const std::string& what) {
                if (HasFailure())
                    return;
                std::string state = Describe(disk.at(TargetName()).get());
                if (state != "old" && state != "new") {
                    Restore(disk);
                    SweepLeftovers(static_cast<const Place&>(m_place).home);
                    SweepLeftovers(static_cast<const Place&>(m_place).temporary);
                    const std::string content = m_place.Read(GetParam().target);
                    state = Describe(&content);
                    ++swept;
                }
                EXPECT_TRUE(state == "new" || (state == "old" && !isEnd))
                    << state << " " << what << (isEnd ? " at the end" : "");
            });
    }
    EXPECT_GT(swept, 0u);
}

/// Those who can read the target may read the new content once it is complete; others never.
TEST_P(PowerCut, ShowsNothingToOthers) {
    for (const mode_t mode : {0600, 0640, 0644}) {
        if (!GetParam().before && mode != 0644)
            continue;
        m_mode = mode;
        Run();
        const auto& moments = m_system->Moments();
        for (const Moment& moment : moments) {
            for (const auto& [name, id] : moment.names) {
                const PowerCutSystem::File& file = moment.files.at(id);
                if (moments.front().files.contains(id) || file.now->empty())
                    continue;
                EXPECT_EQ(file.mode & ~mode, 0u) << name << " after " << moment.call;
                if ((file.mode & 077) != 0) {
                    EXPECT_EQ(Describe(file.now.get()), "new") << name << " after " << moment.call;
                }
            }
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_EQ(moments.back().Find(TargetName())->mode, mode);
    }
}

INSTANTIATE_TEST_SUITE_P(Saves, PowerCut, ::testing::ValuesIn(SaveScenarios()), TestName);

/// The model itself: what is lost and what is not.
TEST(PowerCutSystem, LosesWhatWasNotSynced) {
    const PlaceForTest place;
    const Place& folders = place;
    PowerCutSystem system(place.Root());
    const std::string name = folders.home + "a", other = folders.home + "b";
    const auto ends = [&] {
        std::set<std::string> all;
        PowerCutSystem::ForEachCut(system.Moments().back(),
                                   [&](const PowerCutSystem::Disk& disk, const std::string&) {
                                       std::string text;
                                       for (const auto& [file, content] : disk)
                                           text += file.substr(5) + "=" + *content + " ";
                                       all.insert(text);
                                   });
        return all;
    };
    const auto write = [&](FileHandle handle, const char* text) {
        std::size_t done = 0;
        ASSERT_EQ(system.WriteFile(handle, text, 2, done), 0);
    };
    FileHandle handle = kNoFile;
    ASSERT_EQ(system.OpenFile(name.c_str(), kOpenWrite | kOpenCreate, handle), 0);
    write(handle, "12");
    EXPECT_EQ(ends(), (std::set<std::string>{"", "a= ", std::string("a=1\0 ", 5), "a=12 "}));
    ASSERT_EQ(system.SyncFile(handle), 0);
    EXPECT_EQ(ends(), (std::set<std::string>{"", "a=12 "}));
    ASSERT_EQ(system.SyncFolder(folders.home.c_str()), 0);
    EXPECT_EQ(ends(), (std::set<std::string>{"a=12 "}));
    ASSERT_EQ(system.RenameFile(name.c_str(), other.c_str(), true), 0);
    write(handle, "34");
    EXPECT_EQ(ends(), (std::set<std::string>{"a=12 ", std::string("a=123\0 ", 7), "a=1234 ",
                                             "b=12 ", std::string("b=123\0 ", 7), "b=1234 "}));
    ASSERT_EQ(system.CloseFile(handle), 0);
}

} // namespace
} // namespace vnbytstr::test

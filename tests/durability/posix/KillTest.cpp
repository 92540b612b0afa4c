// Processes that save over and over are killed: the file is an old one or a whole new one, the next
// process clears away what they left, and a living process's files stay. This process itself only
// looks on, so that each child is one that has used the library for nothing yet.
//
// Each kind of save is killed 24 times; VNBYTSTR_KILLS=100 makes it 200.
#include "src/os/LeftoverSweep.h"
#include "tests/durability/DurabilityFixture.h"
#include "vnbytstr/ByteStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <string>

namespace vnbytstr::test {
namespace {

unsigned KillCount() {
    const char* const wanted = std::getenv("VNBYTSTR_KILLS");
    return wanted != nullptr ? static_cast<unsigned>(std::atoi(wanted)) : 12;
}

pid_t Fork(const std::function<bool()>& work) {
    const pid_t child = ::fork();
    if (child != 0)
        return child;
    bool isDone = false;
    if (!ErrorOf([&] { isDone = work(); }).empty())
        isDone = false;
    ::_exit(isDone ? 0 : 1);
}

bool Ends(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return status == 0;
}

class Killed : public ::testing::TestWithParam<SaveScenario> {
protected:
    Killed() {
        m_first.home = m_root.Path() + "one/";
        m_second.home = m_root.Path() + "two/";
        m_first.temporary = m_second.temporary = m_root.Path() + "tmp/";
        for (const std::string& folder : {m_first.home, m_second.home, m_first.temporary})
            std::filesystem::create_directory(folder);
    }

    /// In a child.
    static bool SaveOnce(const Place& place, unsigned version) {
        TestSystem system;
        const Session session(system, place, GetParam());
        GetParam().begin(place, version).save();
        return true;
    }
    static bool SaveForEver(const Place& place) {
        for (unsigned i = 0;; ++i) {
            Prepare(GetParam(), place);
            SaveOnce(place, 1 + i % 2);
        }
    }

    bool IsWhole(const Place& place) const {
        const std::string name = place.home + GetParam().target;
        if (!std::filesystem::exists(name))
            return !GetParam().before;
        const std::string content = m_root.Read(name.substr(m_root.Path().size()));
        return content == GetParam().before || content == m_texts[0] || content == m_texts[1];
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
    Place m_first, m_second; // with one temporary folder
    const std::array<std::string, 2> m_texts{GetParam().text(1), GetParam().text(2)};
};

TEST_P(Killed, LeavesWholeFilesAndNothingElse) {
    Prepare(GetParam(), m_first);
    Prepare(GetParam(), m_second);
    // A store that lives beside all this.
    std::array<int, 2> ready{}, end{};
    ASSERT_EQ(::pipe(ready.data()) | ::pipe(end.data()), 0);
    const pid_t witness = Fork([&] {
        ::close(end[1]);
        TestSystem system;
        const Session session(system, m_first, GetParam());
        const std::string text(18 * CBytePage::m_dwPageSize, 'w');
        CByteStore store;
        store.Concat(reinterpret_cast<const BYTE*>(text.data()), static_cast<DWORD>(text.size()));
        char byte = 0;
        if (::write(ready[1], &byte, 1) != 1 || ::read(end[0], &byte, 1) != 0)
            return false;
        store.SaveToFile((m_root.Path() + "witness").c_str());
        return m_root.Read("witness") == text;
    });
    ::close(end[0]);
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);

    const std::vector<std::string> living = LeftOvers();
    EXPECT_FALSE(living.empty());

    std::minstd_rand random(std::random_device{}());
    for (unsigned i = 0; i < KillCount() && !HasFailure(); ++i) {
        const std::array<pid_t, 2> children{Fork([&] { return SaveForEver(m_first); }),
                                            Fork([&] { return SaveForEver(m_second); })};
        for (const pid_t child : children) {
            ::usleep(static_cast<useconds_t>(random() % 15000));
            ::kill(child, SIGKILL);
            Ends(child);
        }
        for (const Place& place : {m_first, m_second}) {
            if (!IsWhole(place) && GetParam().isWrittenOver) {
                EXPECT_TRUE(Ends(Fork([&] {
                    SweepLeftovers(place.home);
                    SweepLeftovers(place.temporary);
                    return true;
                })));
            }
            EXPECT_TRUE(IsWhole(place)) << place.home << " after kill " << i;
        }
    }

    for (const Place& place : {m_first, m_second}) {
        Prepare(GetParam(), place);
        EXPECT_TRUE(Ends(Fork([&] { return SaveOnce(place, 1); })));
        EXPECT_EQ(m_root.Read((place.home + GetParam().target).substr(m_root.Path().size())),
                  m_texts[0]);
    }
    EXPECT_EQ(LeftOvers(), living) << "a living store's file was swept, or a dead one's was not";
    ::close(end[1]);
    EXPECT_TRUE(Ends(witness));
    ::close(ready[0]);
    ::close(ready[1]);
    EXPECT_THAT(LeftOvers(), ::testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Saves, Killed, ::testing::ValuesIn(SaveScenarios()), TestName);

} // namespace
} // namespace vnbytstr::test

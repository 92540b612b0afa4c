// Processes that are ended at every call while they replace a file or write it over.
#include "src/os/LeftoverSweep.h"
#include "tests/os/ReplacementFixture.h"
#include "tests/support/windows/ChildProgram.h"
#include "tests/support/windows/Substitute.h"

namespace vnbytstr::test {
namespace {

class KilledReplacement : public ReplacementFixture {
public:
    /// In a child, whose task is the number of the call at which it ends, the length of the new
    /// content, and the name.
    static void PutAndDie(const std::string& task) {
        std::istringstream words(task);
        unsigned at = 0;
        std::size_t length = 0;
        std::string name;
        std::getline(words >> at >> length >> std::ws, name);
        TestSystem system;
        const ScopedSystem scope(system);
        system.Inject(Fault{.at = at, .kind = Fault::Kind::Kill});
        EXPECT_EQ(Put(name, std::string(length, 'n')), 0);
    }

protected:
    /// Whether a child has ended at that call; false when it came to its end.
    bool EndsAt(unsigned at, const std::string& name, std::size_t length) {
        ChildProgram child("ReplacingChild.PutsAndDies",
                           std::to_string(at) + " " + std::to_string(length) + " " + Name(name));
        const DWORD status = child.Wait();
        EXPECT_TRUE(status == 0 || status == DWORD{Fault::kKilled}) << status;
        return status == DWORD{Fault::kKilled};
    }
};

TEST(ReplacingChild, PutsAndDies) {
    if (ChildProgram::Task().empty())
        GTEST_SKIP() << "for a child process";
    KilledReplacement::PutAndDie(ChildProgram::Task());
}

TEST_F(KilledReplacement, WhatWasWrittenOverComesBackUnlessAnotherProgramHasChangedIt) {
    Write("two", "");
    std::filesystem::create_hard_link(Name("two"), Name("names"));
    const std::string old(100000, 'o'), fresh(70001, 'n');
    unsigned mixed = 0;
    for (unsigned at = 1;; ++at) {
        Write("two", old);
        if (!EndsAt(at, "two", fresh.size()))
            break;
        const std::string found = Read("two");
        mixed += found != old && found != fresh;
        const bool isChanged = at % 3 == 0;
        if (isChanged)
            Write("two", "other");
        SweepLeftovers(m_folder.File("at"));
        const std::string content = Read("two");
        EXPECT_TRUE(isChanged ? content == "other" : content == old || content == fresh) << at;
        EXPECT_EQ(LeftOvers(), 0u) << at;
    }
    EXPECT_GT(mixed, 1u);
    EXPECT_EQ(Read("names"), fresh);
}

TEST_F(KilledReplacement, WhatWasReplacedIsTheOldFileOrTheNewOne) {
    const std::string fresh(70001, 'n');
    for (unsigned at = 1;; ++at) {
        Write("a", "old");
        if (!EndsAt(at, "a", fresh.size()))
            break;
        EXPECT_TRUE(Read("a") == "old" || Read("a") == fresh) << at;
        SweepLeftovers(m_folder.File("at"));
        EXPECT_EQ(LeftOvers(), 0u) << at;
    }
    EXPECT_EQ(Read("a"), fresh);
}

} // namespace
} // namespace vnbytstr::test

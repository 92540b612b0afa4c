// Files that are written over in place, and what comes back after a kill or a failure.
#include "src/os/LeftoverSweep.h"
#include "tests/os/ReplacementFixture.h"
#include "tests/support/ChildProcess.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <tuple>
#include <vector>

namespace vnbytstr {
namespace {

class InPlaceWriteTest : public test::ReplacementFixture {
protected:
    /// A child puts `fresh` over the file "two", which holds `before` and has a second name, and is
    /// killed at its `at`-th system call. Returns 0 when it was done before that.
    int Kill(const std::string& before, const std::string& fresh, unsigned at) {
        Write("two", before);
        std::filesystem::remove(Name("names"));
        EXPECT_EQ(::link(Name("two").c_str(), Name("names").c_str()), 0);
        return test::InChild([&] {
            m_system.Inject(test::Fault{.at = at, .kind = test::Fault::Kind::Kill});
            return Put(Name("two"), fresh);
        });
    }
};

/// A process that is killed while it writes a file over leaves a part of each content; the next
/// sweep puts the old one back, unless another program has changed or replaced the file since.
TEST_F(InPlaceWriteTest, WhatAKilledProcessWasWritingOverComesBack) {
    struct Case {
        std::string old, fresh;
        std::vector<std::string> others; // what the other program writes
        unsigned moments;                // with a part of each, or with the copy of the old one
    };
    const std::string old(300000, 'o');
    const Case cases[] = {
        {old, std::string(1000, 'n'), {"other", std::string(500, 'o'), old + std::string(8, 0)}, 1},
        {old, std::string(300000, 'n'), {old.substr(0, 100000) + std::string(200000, 'x')}, 2},
        {old, std::string(700001, 'n'), {"other"}, 2},
        {"color = red\nsize = 10\n", // an edit whose length is between the two
         "color = blue\nsize = 10\nshape = round\n",
         {"color = green\nsize = 12\nok\n"},
         4}};
    for (const auto& [before, fresh, others, moments] : cases) {
        unsigned first = 1; // before it the other ways find nothing new: the file is as it was
        for (std::size_t way = 0; way < others.size() + 2; ++way) {
            unsigned met = 0;
            for (unsigned at = first;; ++at) {
                SCOPED_TRACE(testing::Message() << "way " << way << " at " << at);
                if (Kill(before, fresh, at) == 0)
                    break;
                std::string found = Read("two");
                met += before.size() < 100 ? LeftOvers() == 2 : found != before && found != fresh;
                if (way == 0 && found == before && LeftOvers() < 2) {
                    first = at;
                } else if (way == 1) {
                    Write("copy", found);
                    std::filesystem::rename(Name("copy"), Name("two"));
                } else if (way > 1) {
                    Write("two", found = others[way - 2]);
                }
                SweepLeftovers(m_folder.File("at"));
                const std::string content = Read("two");
                EXPECT_TRUE(content == found || (way == 0 && content == before && found != fresh));
                EXPECT_TRUE(way != 0 || content == before || content == fresh);
                EXPECT_EQ(LeftOvers(), 0u);
            }
            EXPECT_GE(met, moments);
        }
    }
}

TEST_F(InPlaceWriteTest, ADamagedCopyOfTheOldContentIsNotUsed) {
    const std::string before(300000, 'o'), fresh(1000, 'n');
    std::string found;
    for (unsigned at = 1; found.empty() || found == before; ++at) {
        SweepLeftovers(m_folder.File("at"));
        ASSERT_EQ(Kill(before, fresh, at), test::Fault::kKilled);
        found = Read("two");
    }
    std::string undo;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder.File("at"))) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(".~old"))
            undo = name;
        else if (name.starts_with(".~new"))
            std::filesystem::remove(entry);
    }
    const std::string copy = Read(undo);
    const auto sweep = [&](const std::string& damaged) {
        Write(undo, damaged);
        SweepLeftovers(m_folder.File("at"));
        EXPECT_EQ(LeftOvers(), 0u);
        return Read("two") == found;
    };
    // The numbers at its end, the last one of which tells what kind of file it is.
    for (std::size_t number = 1; number <= 7; ++number) {
        for (const std::uint64_t value :
             {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{1} << 39, std::uint64_t{1} << 63,
              ~std::uint64_t{0}}) {
            std::string damaged = copy;
            damaged.replace(copy.size() - 8 * number, 8, reinterpret_cast<const char*>(&value), 8);
            EXPECT_TRUE(sweep(damaged)) << number << " from the end is " << value;
        }
    }
    std::string damaged = copy; // a checksum of a block
    damaged[before.size()] ^= 1;
    EXPECT_TRUE(sweep(damaged));
    EXPECT_TRUE(sweep(copy.substr(0, 55)));
    EXPECT_TRUE(sweep(copy.substr(1)));
    // Whole, but the file is being written, or is a link now.
    Write(undo, copy);
    m_system.Inject(test::Fault{.call = test::Call::Lock, .at = 2, .error = EIO});
    SweepLeftovers(m_folder.File("at"));
    m_system.Inject(std::nullopt);
    EXPECT_EQ(Read("two"), found);
    EXPECT_EQ(LeftOvers(), 1u);
    SweepLeftovers(m_folder.File("at"));
    EXPECT_EQ(Read("two"), before);
}

/// Whichever call of a sweep fails: the old content is there, in the file or for the next sweep.
TEST_F(InPlaceWriteTest, ASweepThatFailsLosesNothing) {
    const std::string before(100000, 'o'), fresh(150000, 'n');
    unsigned moment = 0;
    do {
        SweepLeftovers(m_folder.File("at"));
        ASSERT_EQ(Kill(before, fresh, ++moment), test::Fault::kKilled);
    } while (Read("two") == before);
    unsigned tried = 0;
    for (bool isOver = false; !isOver; ++tried) {
        SweepLeftovers(m_folder.File("at"));
        ASSERT_EQ(Kill(before, fresh, moment), test::Fault::kKilled);
        m_system.Inject(test::Fault{.at = tried + 1, .error = EIO});
        SweepLeftovers(m_folder.File("at"));
        isOver = m_system.Hits() == 0;
        m_system.Inject(std::nullopt);
        EXPECT_TRUE(m_system.OpenHandles().empty());
        SweepLeftovers(m_folder.File("at"));
        EXPECT_TRUE(Read("two") == before) << "call " << tried + 1;
        EXPECT_EQ(LeftOvers(), 0u);
    }
    EXPECT_GT(tried, 20u);
}

/// Where the file is gone its old content is nobody's; where it may not be opened it may be needed.
TEST_F(InPlaceWriteTest, TheFileOfACopyIsGoneOrClosed) {
    const std::string before(100000, 'o'), fresh(150000, 'n');
    for (const bool isGone : {true, false}) {
        unsigned at = 0;
        do {
            SweepLeftovers(m_folder.File("at"));
            ASSERT_EQ(Kill(before, fresh, ++at), test::Fault::kKilled);
        } while (Read("two") == before);
        if (isGone)
            std::filesystem::remove(Name("two"));
        else
            m_system.Inject(test::Fault{.call = test::Call::Open, .at = 2, .error = EACCES});
        SweepLeftovers(m_folder.File("at"));
        EXPECT_EQ(m_system.Hits(), isGone ? 0u : 1u);
        m_system.Inject(std::nullopt);
        EXPECT_EQ(LeftOvers(), isGone ? 0u : 1u);
    }
    SweepLeftovers(m_folder.File("at"));
    EXPECT_EQ(Read("two"), before);
    EXPECT_EQ(LeftOvers(), 0u);
}

/// A position that is not the one asked for is an error, not other bytes; nor does it go round for
/// ever where nothing is read or taken.
TEST_F(InPlaceWriteTest, MisplacedSeeksAndTransfersOfNothingChangeNothing) {
    using test::Call;
    using Kind = test::Fault::Kind;
    const std::string old(100000, 'o');
    for (const auto& [call, kind, expected, first] :
         {std::tuple{Call::Seek, Kind::Misplace, EIO, 1u},
          {Call::Read, Kind::Nothing, EIO, 1u},
          {Call::Write, Kind::Nothing, ENOSPC, 2u}}) { // after the test's own write
        bool hit = true;
        for (unsigned at = first; hit; ++at) {
            Write("a", old);
            std::filesystem::remove(Name("b"));
            ASSERT_EQ(::link(Name("a").c_str(), Name("b").c_str()), 0);
            m_system.Inject(test::Fault{.call = call, .at = at, .kind = kind});
            const int error = Put(Name("a"), "new");
            hit = m_system.Hits() > 0;
            m_system.Inject(std::nullopt);
            EXPECT_EQ(error, hit ? expected : 0) << CallName(call) << at;
            EXPECT_TRUE(Read("b") == (hit ? old : "new")) << CallName(call) << at;
        }
    }
}

TEST_F(InPlaceWriteTest, OldContentIsPutBackForGood) {
    unsigned most = 0;
    for (unsigned at = 1;; ++at) {
        Write("a", std::string(100000, 'o'));
        std::filesystem::remove(Name("b"));
        ASSERT_EQ(::link(Name("a").c_str(), Name("b").c_str()), 0);
        m_system.ResetCounts();
        m_system.Inject(test::Fault{.call = test::Call::Write, .at = at, .error = ENOSPC});
        const int error = Put(Name("a"), "new");
        m_system.Inject(std::nullopt);
        if (error == 0)
            break;
        EXPECT_EQ(error, ENOSPC);
        EXPECT_EQ(Read("a"), std::string(100000, 'o'));
        EXPECT_EQ(LeftOvers(), 0u);
        most = std::max(most, m_system.Count(test::Call::Sync));
    }
    EXPECT_EQ(most, 2u); // the copy, and what was put back before the copy went
    EXPECT_EQ(Read("b"), "new");
}

/// Where the scratch file cannot stand beside it, a file that did not exist is written directly.
TEST_F(InPlaceWriteTest, ANewFileWhoseFolderHasTooLongAName) {
    const test::Fault tooLong{.call = test::Call::Open, .error = ENAMETOOLONG};
    m_system.Inject(tooLong);
    EXPECT_EQ(Put(Name("new"), "new"), 0);
    EXPECT_EQ(Read("new"), "new");
    EXPECT_EQ(m_system.Count(test::Call::Sync), 1u);
    EXPECT_EQ(m_system.Count(test::Call::SyncFolder), 1u);
    for (const test::Call call : {test::Call::Write, test::Call::Sync, test::Call::Close}) {
        m_system.Inject(tooLong);
        FileReplacement failing;
        ASSERT_EQ(failing.Open(Name("failing").c_str()), 0);
        std::size_t done = 0;
        ASSERT_EQ(m_system.WriteFile(failing.Handle(), "x", 1, done), 0);
        m_system.Inject(test::Fault{.call = call, .error = EIO});
        EXPECT_EQ(failing.Commit(), EIO) << CallName(call);
        EXPECT_FALSE(std::filesystem::exists(Name("failing")));
    }
    m_system.Inject(tooLong);
    FileReplacement target;
    ASSERT_EQ(target.Open(Name("taken").c_str()), 0);
    Write("taken", "meanwhile");
    EXPECT_EQ(target.Commit(), EEXIST);
    EXPECT_EQ(Read("taken"), "meanwhile");
}

} // namespace
} // namespace vnbytstr

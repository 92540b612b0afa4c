// Every system call of every save fails in turn, once and from then on: the file is the old one or
// the whole new one, a success is one, the object that saves keeps what it holds, and a second try
// saves it.
#include "src/os/LeftoverSweep.h"
#include "tests/durability/DurabilityFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vnbytstr::test {
namespace {

class FaultSweep : public ::testing::TestWithParam<SaveScenario> {
protected:
    /// Returns whether the fault was met.
    bool SaveWith(const Fault& fault) {
        const PlaceForTest place;
        Prepare(GetParam(), place);
        TestSystem system;
        bool wasHit = false;
        {
            const Session session(system, place, GetParam());
            const Saving saving = GetParam().begin(place, 1);
            const std::size_t open = system.OpenHandles().size();
            const std::size_t files = place.CountLeft(GetParam());
            system.Inject(fault);
            const std::string error = ErrorOf(saving.save);
            wasHit = system.Hits() > 0;
            system.Inject(std::nullopt);

            std::string state = StateOf(place);
            if (state == "between" && GetParam().isWrittenOver) {
                Sweep(place); // the old content could not be put back at once
                state = StateOf(place);
            }
            EXPECT_TRUE(state == "new" || (state == "old" && !error.empty())) << error << state;
            EXPECT_LE(system.OpenHandles().size(), open);
            // Old content that could not be put back waits for a sweep.
            if (fault.call != Call::Remove) {
                EXPECT_LE(place.CountLeft(GetParam()), files + GetParam().isWrittenOver);
            }
            if (!error.empty()) {
                const std::string kept =
                    ErrorOf([&] { EXPECT_TRUE(!saving.content || saving.content() == m_content); });
                EXPECT_EQ(kept, "") << "of the content, after " << error;
                EXPECT_EQ(ErrorOf(saving.save), "") << "of a second try, after " << error;
                EXPECT_EQ(StateOf(place), "new") << "after a second try, after " << error;
            }
        }
        EXPECT_TRUE(system.OpenHandles().empty());
        if (GetParam().isWrittenOver) {
            Sweep(place);
            EXPECT_EQ(StateOf(place), "new") << "after a sweep by the next process";
        }
        if (fault.call != Call::Remove) {
            EXPECT_THAT(place.LeftOvers(GetParam()), ::testing::IsEmpty());
        }
        return wasHit;
    }

    static void Sweep(const Place& place) {
        SweepLeftovers(place.home);
        SweepLeftovers(place.temporary);
    }

    std::string StateOf(const PlaceForTest& place) const {
        if (!std::filesystem::exists(static_cast<const Place&>(place).home + GetParam().target))
            return GetParam().before ? "missing" : "old";
        const std::string content = place.Read(GetParam().target);
        if (content == m_new)
            return "new";
        return content == GetParam().before ? "old" : "between";
    }

    void SaveWithoutFault() {
        const PlaceForTest place;
        Prepare(GetParam(), place);
        TestSystem system;
        const Session session(system, place, GetParam());
        const Saving saving = GetParam().begin(place, 1);
        if (saving.content)
            m_content = saving.content();
        EXPECT_EQ(ErrorOf(saving.save), "");
        EXPECT_EQ(system.RefusedNames() > 0, GetParam().isClosed || GetParam().isOtherDevice);
    }

    const std::string m_new = GetParam().text(1);
    std::string m_content; ///< of the object before it saves
};

TEST_P(FaultSweep, LosesNothing) {
    SaveWithoutFault();
    unsigned met = 0;
    for (auto call = Call::Open; call != Call::Any; call = static_cast<Call>(int(call) + 1)) {
        for (const Fault::Kind kind :
             {Fault::Kind::Fail, Fault::Kind::Shorten, Fault::Kind::Nothing}) {
            const bool isHalf = kind == Fault::Kind::Shorten;
            if (kind != Fault::Kind::Fail && call != Call::Write && !(isHalf && call == Call::Read))
                continue;
            for (const bool fromThenOn : {false, true}) {
                Fault fault{.call = call, .fromThenOn = fromThenOn, .kind = kind};
                fault.error = call == Call::Write || call == Call::SetLength ? ENOSPC : EIO;
                for (; SaveWith(fault); ++fault.at)
                    ++met;
                ASSERT_FALSE(HasFailure())
                    << CallName(call) << " " << fault.at << (fromThenOn ? " on" : "");
            }
        }
    }
    EXPECT_GT(met, 10u);
    RecordProperty("faults", static_cast<int>(met));
}

INSTANTIATE_TEST_SUITE_P(Saves, FaultSweep, ::testing::ValuesIn(SaveScenarios()), TestName);

} // namespace
} // namespace vnbytstr::test

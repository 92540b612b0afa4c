// Saves to a disk that is full, with more and more room on it: the file is the old one or the whole new
// one, nothing else is left, the object keeps what it holds, and saves it once there is room.
//
// VNBYTSTR_SMALL_DISK names a folder on a disk of a few megabytes; scripts/windows-run makes one where
// it may.
#include "src/os/PlatformSystem.h"
#include "tests/durability/DurabilityFixture.h"

#include <gmock/gmock.h>

#include <cerrno>

namespace vnbytstr::test {
namespace {

class FullDisk : public testing::TestWithParam<SaveScenario> {
protected:
    void SetUp() override {
        m_disk = PlatformSystem().GetEnvironment("VNBYTSTR_SMALL_DISK");
        ULARGE_INTEGER size{};
        if (m_disk.empty() || !::GetDiskFreeSpaceExA(m_disk.c_str(), nullptr, &size, nullptr) ||
            size.QuadPart > 64 << 20)
            GTEST_SKIP() << "VNBYTSTR_SMALL_DISK is no folder on a small disk";
        std::ofstream(Filler()).put('f');
        if (!std::filesystem::exists(Filler()))
            GTEST_SKIP() << "the disk is there for a part of the system only";
        std::filesystem::remove(Filler());
        ::SetEnvironmentVariableA("TMP", m_disk.c_str());
    }
    void TearDown() override { ::SetEnvironmentVariableA("TMP", m_temporary.c_str()); }

    /// Fills the disk until `room` bytes are free, and a few thousand more.
    void Fill(std::uint64_t room) const {
        System& system = PlatformSystem();
        FileHandle file = kNoFile;
        ASSERT_EQ(system.OpenFile(Filler().c_str(), kOpenWrite | kOpenCreate, file), 0);
        const std::string block(0x10000, 'f');
        ULARGE_INTEGER free{};
        std::size_t done = 1;
        while (done > 0 && ::GetDiskFreeSpaceExA(m_disk.c_str(), &free, nullptr, nullptr) &&
               free.QuadPart >= room + 0x1000) {
            const std::size_t size = std::min<std::size_t>(block.size(), free.QuadPart - room);
            const int error =
                system.WriteFile(file, block.data(), size & ~std::size_t{0xFFF}, done);
            EXPECT_TRUE(error == 0 || error == ENOSPC) << error;
        }
        system.CloseFile(file);
        EXPECT_TRUE(::GetDiskFreeSpaceExA(m_disk.c_str(), &free, nullptr, nullptr));
        EXPECT_LT(free.QuadPart, room + 0x2000);
    }
    std::string Filler() const { return m_disk + "/filler"; }

    std::string m_disk;

private:
    const std::string m_temporary = PlatformSystem().GetTemporaryFolder();
};

TEST_P(FullDisk, LosesNothing) {
    const std::string fresh = GetParam().text(1);
    unsigned saved = 0;
    for (const std::uint64_t room : {0, 5000, 70000, 1200000, 2400000}) {
        SCOPED_TRACE(room);
        const PlaceForTest place;
        const auto content = [&]() -> std::optional<std::string> {
            const std::string name = static_cast<const Place&>(place).home + GetParam().target;
            if (!std::filesystem::exists(name))
                return std::nullopt;
            return place.Read(GetParam().target);
        };
        {
            Prepare(GetParam(), place);
            TestSystem system;
            const Session session(system, place, GetParam());
            const Saving saving = GetParam().begin(place, 1);
            const std::string held = saving.content ? saving.content() : "";
            Fill(room);
            const std::string error = ErrorOf(saving.save);
            saved += error.empty();
            EXPECT_TRUE(content() == (error.empty() ? fresh : GetParam().before)) << error;
            std::filesystem::remove(Filler());
            if (!error.empty()) {
                EXPECT_TRUE(!saving.content || saving.content() == held);
                EXPECT_EQ(ErrorOf(saving.save), "");
                EXPECT_TRUE(content() == fresh);
            }
        }
        EXPECT_THAT(place.LeftOvers(GetParam()), testing::IsEmpty());
    }
    EXPECT_GT(saved, 0u);
}

INSTANTIATE_TEST_SUITE_P(Saves, FullDisk, testing::ValuesIn(SaveScenarios()), TestName);

} // namespace
} // namespace vnbytstr::test

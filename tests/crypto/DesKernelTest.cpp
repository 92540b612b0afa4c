#include "src/crypto/DesKernel.h"

#include "src/crypto/DesTables.h"
#include "tests/crypto/DesOracle.h"
#include "tests/support/KernelTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

using namespace vnbytstr;
using namespace vnbytstr::detail;
using vnbytstr::test::DesOracle;

namespace {

using Bytes = std::vector<BYTE>;
using Key = std::array<BYTE, 8>;
using Schedule = std::array<DWORD, 32>;

Schedule ScheduleOf(const Key& key, bool encrypt) {
    Schedule schedule;
    BuildDesSchedule(key, encrypt, schedule);
    return schedule;
}

class DesKernel : public vnbytstr::test::KernelTest {
protected:
    template <class Container>
    void Fill(Container& bytes) {
        for (BYTE& byte : bytes)
            byte = static_cast<BYTE>(m_random());
    }

    std::mt19937 m_random{46};
};
VNBYTSTR_FOR_ALL_KERNELS(DesKernel);

} // namespace

TEST(DesSchedule, HoldsTheGroupsOfTheRoundKeysInBytes) {
    // Round key 1 of the key 133457799BBCDFF1, as worked out in the literature: 000110 110000
    // 001011 101111 111111 000111 000001 110010.
    const Schedule schedule = ScheduleOf({0x13, 0x34, 0x57, 0x79, 0x9B, 0xBC, 0xDF, 0xF1}, true);
    EXPECT_EQ(schedule[0], 0x060B3F01u);
    EXPECT_EQ(schedule[1], 0x302F0732u);
    const Schedule back = ScheduleOf({0x13, 0x34, 0x57, 0x79, 0x9B, 0xBC, 0xDF, 0xF1}, false);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(back[2 * i], schedule[30 - 2 * i]);
        EXPECT_EQ(back[2 * i + 1], schedule[31 - 2 * i]);
    }
}

TEST(DesBlockFunction, MeetsTheKnownAnswerAndOpenSsl) {
    const Key known = {0x13, 0x34, 0x57, 0x79, 0x9B, 0xBC, 0xDF, 0xF1};
    DWORD block[2] = {0x01234567, 0x89ABCDEF};
    ComputeDesBlock(block, ScheduleOf(known, true));
    EXPECT_EQ(block[0], 0x85E81354u);
    EXPECT_EQ(block[1], 0x0F0AB405u);
    ComputeDesBlock(block, ScheduleOf(known, false));
    EXPECT_EQ(block[0], 0x01234567u);
    EXPECT_EQ(block[1], 0x89ABCDEFu);

    std::mt19937 random{1};
    for (int round = 0; round < 20000; ++round) {
        Key key;
        Bytes bytes(8);
        for (std::size_t i = 0; i < 8; ++i) {
            key[i] = static_cast<BYTE>(random());
            bytes[i] = static_cast<BYTE>(random());
        }
        const bool encrypt = round % 2 == 0;
        DesBlock ours = LoadDesBlock(bytes.data());
        ComputeDesBlock(ours.data(), ScheduleOf(key, encrypt));
        Bytes out(8);
        StoreDesBlock(out.data(), ours);
        ASSERT_EQ(out, DesOracle(bytes, key, encrypt, nullptr));
    }
}

// Counts around the groups of 64, 256 and 512 blocks, into another place and in place.
TEST_P(DesKernel, AgreesWithOpenSslForEveryCountAndMode) {
    std::vector<std::size_t> counts;
    for (std::size_t count = 0; count <= 140; ++count)
        counts.push_back(count);
    for (std::size_t count :
         {255u, 256u, 257u, 288u, 300u, 511u, 512u, 513u, 600u, 1024u, 1300u, 4096u})
        counts.push_back(count);
    for (const std::size_t count : counts) {
        Key key;
        std::array<BYTE, 8> iv;
        Bytes in(count * 8);
        Fill(key);
        Fill(iv);
        Fill(in);
        for (const bool encrypt : {true, false}) {
            const Schedule schedule = ScheduleOf(key, encrypt);
            Bytes out(in.size() + 8, 0xA5);
            DesEcb(in.data(), out.data(), count, schedule);
            Bytes expected = DesOracle(in, key, encrypt, nullptr);
            expected.insert(expected.end(), 8, 0xA5); // nothing is written after the last block
            ASSERT_EQ(out, expected) << count << " blocks, encrypt " << encrypt;
            Bytes same = in;
            DesEcb(same.data(), same.data(), count, schedule);
            ASSERT_TRUE(std::equal(same.begin(), same.end(), expected.begin()));

            const auto cbc = encrypt ? DesCbcEncrypt : DesCbcDecrypt;
            auto theirs = iv;
            expected = DesOracle(in, key, encrypt, theirs.data());
            expected.insert(expected.end(), 8, 0xA5);
            DesBlock chain = LoadDesBlock(iv.data());
            std::fill(out.begin(), out.end(), BYTE{0xA5});
            cbc(in.data(), out.data(), count, schedule, chain);
            ASSERT_EQ(out, expected) << count << " blocks, encrypt " << encrypt;
            if (count > 0) {
                ASSERT_EQ(chain, LoadDesBlock(theirs.data()));
            }
            same = in;
            chain = LoadDesBlock(iv.data());
            cbc(same.data(), same.data(), count, schedule, chain);
            ASSERT_TRUE(std::equal(same.begin(), same.end(), expected.begin()));
        }
    }
}

// A chain cut anywhere goes on as if it had not been.
TEST_P(DesKernel, ContinuesAChain) {
    Key key;
    Bytes in(700 * 8);
    Fill(key);
    Fill(in);
    for (const bool encrypt : {true, false}) {
        const auto cbc = encrypt ? DesCbcEncrypt : DesCbcDecrypt;
        const Schedule schedule = ScheduleOf(key, encrypt);
        std::array<BYTE, 8> iv{};
        const Bytes expected = DesOracle(in, key, encrypt, iv.data());
        for (int round = 0; round < 20; ++round) {
            DesBlock chain = {0, 0};
            Bytes out(in.size());
            for (std::size_t at = 0; at < 700;) {
                const std::size_t count = std::min<std::size_t>(1 + m_random() % 600, 700 - at);
                cbc(in.data() + at * 8, out.data() + at * 8, count, schedule, chain);
                at += count;
            }
            ASSERT_EQ(out, expected);
        }
    }
}

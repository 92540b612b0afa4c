// The AVX-512 loops, run through a simulation of their instructions, against the plain ones.
#include "src/charset/CcsidKernels.h"

#if defined(__x86_64__)

namespace vnbytstr::detail {
std::size_t MapBytesSimulated(const ByteTable& table, const BYTE* in, BYTE* out,
                              std::size_t size) noexcept;
KernelStep BytesToUtf8Simulated(const ByteToUtf8Table& table, std::span<const BYTE> in,
                                std::span<BYTE> out) noexcept;
KernelStep Utf8ToBytesSimulated(const Utf8ToByteTable& table, std::span<const BYTE> in,
                                std::span<BYTE> out) noexcept;
} // namespace vnbytstr::detail

#define VNBYTSTR_SIMULATE_AVX512
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wconversion"
#include "src/charset/CcsidKernelsAvx512.cpp"
#pragma GCC diagnostic pop

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace vnbytstr::detail {
namespace {

TEST(CcsidSimulated, BytesAreMappedAsByThePlainLoop) {
    std::mt19937 random(3);
    for (const bool hasGaps : {false, true}) {
        ByteTable table;
        for (std::size_t i = 0; i < 256; ++i)
            table.to[i] = static_cast<BYTE>(i * 167 + 13);
        table.hasGaps = hasGaps;
        table.gap = 0x1A;
        for (std::size_t size = 0; size < 300; ++size) {
            std::vector<BYTE> in(size);
            for (BYTE& byte : in) {
                byte = static_cast<BYTE>(random());
                if (random() % 256 != 0 && table.to[byte] == table.gap)
                    ++byte; // a gap now and then
            }
            std::vector<BYTE> plain(size, 0x55), simulated(size, 0x55);
            const std::size_t done = MapBytesPlain(table, in.data(), plain.data(), size);
            ASSERT_EQ(MapBytesSimulated(table, in.data(), simulated.data(), size), done);
            plain.resize(done);
            simulated.resize(done);
            ASSERT_EQ(simulated, plain);
        }
    }
}

/// Bytes without a counterpart (81), with one of three bytes (80), and of one or two. `turn` is
/// added to the bytes, so that not all tables have ASCII at its place.
ByteToUtf8Table MakeTable(unsigned turn) {
    ByteToUtf8Table table;
    table.asciiIsAscii = turn == 0;
    for (unsigned code = 0; code < 256; ++code) {
        const std::size_t byte = (code + turn) % 256;
        const auto lead = static_cast<BYTE>(0xC0 | code >> 6);
        const auto trail = static_cast<BYTE>(0x80 | (code & 0x3F));
        table.bytes[byte] = code == 0x80   ? std::array<BYTE, 4>{0xE2, 0x82, 0xAC, 3}
                            : code == 0x81 ? std::array<BYTE, 4>{}
                            : code < 0x80  ? std::array<BYTE, 4>{static_cast<BYTE>(code), 0, 0, 1}
                                           : std::array<BYTE, 4>{lead, trail, 0, 2};
        table.first[byte] = table.bytes[byte][0];
        table.second[byte] = code < 0x80 ? 0 : code < 0x82 ? 1 : trail;
    }
    return table;
}

Utf8ToByteTable MakeTable(const ByteToUtf8Table& back) {
    Utf8ToByteTable table;
    table.asciiIsAscii = back.asciiIsAscii;
    table.below800.fill(Utf8ToByteTable::kNone);
    table.blocks = std::make_unique<std::array<WORD, 64>[]>(1);
    table.blocks[0].fill(Utf8ToByteTable::kNone);
    table.latin1.hasGaps = true;
    table.latin1.gap = 0x81;
    table.latin1.to.fill(table.latin1.gap);
    for (unsigned byte = 0; byte < 256; ++byte) {
        const std::array<BYTE, 4>& bytes = back.bytes[byte];
        const unsigned code = bytes[3] == 1 ? bytes[0] : (bytes[0] & 3u) << 6 | (bytes[1] & 0x3Fu);
        if ((bytes[3] == 1 || bytes[3] == 2) && byte != table.latin1.gap) {
            table.below800[code] = static_cast<WORD>(byte);
            table.latin1.to[code] = static_cast<BYTE>(byte);
        }
    }
    return table;
}

TEST(CcsidSimulated, Utf8IsTranslatedAsByThePlainLoops) {
    std::mt19937 random(5);
    for (const unsigned turn : {0u, 64u}) {
        const ByteToUtf8Table table = MakeTable(turn);
        const Utf8ToByteTable back = MakeTable(table);
        for (int round = 0; round < 3000; ++round) {
            // Long stretches without the odd ones: of ASCII, of two bytes, and mixed.
            std::vector<BYTE> in(random() % 500);
            const unsigned kind = random() % 3;
            for (BYTE& byte : in) {
                const unsigned code = random() % 200 == 0 ? random() % 256
                                      : kind == 0 || (kind == 2 && random() % 4 != 0)
                                          ? random() % 0x80
                                          : 0x82 + random() % 0x7E;
                byte = static_cast<BYTE>(code + turn);
            }
            const std::size_t room = random() % 8 == 0 ? random() % 600 : 3 * in.size();
            std::vector<BYTE> plain(room, 0x55), simulated(room, 0x55);
            const auto expectSame = [&](KernelStep expected, KernelStep step) {
                ASSERT_EQ(step.consumed, expected.consumed) << "round " << round;
                ASSERT_EQ(step.produced, expected.produced) << "round " << round;
                ASSERT_TRUE(std::equal(plain.begin(),
                                       plain.begin() + static_cast<std::ptrdiff_t>(step.produced),
                                       simulated.begin()))
                    << "round " << round;
            };
            const KernelStep step = BytesToUtf8Plain(table, in, plain);
            ASSERT_NO_FATAL_FAILURE(expectSame(step, BytesToUtf8Simulated(table, in, simulated)));
            std::vector<BYTE> text(plain.begin(),
                                   plain.begin() + static_cast<std::ptrdiff_t>(step.produced));
            if (random() % 4 == 0 && !text.empty()) // cut, or broken
                text[random() % text.size()] = static_cast<BYTE>(random());
            ASSERT_NO_FATAL_FAILURE(expectSame(Utf8ToBytesPlain(back, text, plain),
                                               Utf8ToBytesSimulated(back, text, simulated)));
        }
    }
}

} // namespace
} // namespace vnbytstr::detail

#endif

// The AVX-512 loop, run through a simulation of its instructions, against the plain one.
#include "src/charset/CcsidKernels.h"

#if defined(__x86_64__)

namespace vnbytstr::detail {
std::size_t MapBytesSimulated(const ByteTable& table, const BYTE* in, BYTE* out,
                              std::size_t size) noexcept;
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

} // namespace
} // namespace vnbytstr::detail

#endif

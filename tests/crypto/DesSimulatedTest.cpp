// The AVX-512 source, compiled over instructions made of simpler ones, so that its logic is tried
// on every machine.
#define VNBYTSTR_SIMULATE_AVX512
#define DesRunAvx512 DesRunAvx512Simulated
#include "src/crypto/DesKernelAvx512.cpp"

#include "src/crypto/DesKernel.h"
#include "tests/crypto/DesOracle.h"

#include <gtest/gtest.h>

#include <random>

using namespace vnbytstr;
using namespace vnbytstr::detail;

TEST(DesSimulatedAvx512, AgreesWithOpenSsl) {
    std::mt19937 random{5};
    std::array<BYTE, 8> key, iv;
    std::vector<BYTE> in(2 * 4096), out(in.size());
    for (const std::span<BYTE> bytes :
         {std::span<BYTE>(key), std::span<BYTE>(iv), std::span<BYTE>(in)})
        for (BYTE& byte : bytes)
            byte = static_cast<BYTE>(random());
    std::array<DWORD, 32> schedule;
    BuildDesSchedule(key, false, schedule);
    DesKeyMasks masks;
    MakeDesKeyMasks(schedule, masks);
    std::array<BYTE, 8> theirs = iv;
    const std::vector<BYTE> expected = test::DesOracle(in, key, false, theirs.data());
    DesRunAvx512Simulated(in.data(), out.data(), 2, masks, iv.data());
    EXPECT_EQ(out, expected);
    EXPECT_EQ(iv, theirs);
}

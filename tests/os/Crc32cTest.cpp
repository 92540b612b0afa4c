#include "src/os/Crc32c.h"
#include "tests/support/KernelTest.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <string_view>
#include <vector>

namespace vnbytstr {
namespace {

std::span<const BYTE> Bytes(std::string_view text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

/// The definition, bit by bit.
DWORD ByDefinition(std::span<const BYTE> bytes) {
    DWORD crc = 0xFFFFFFFF;
    for (const BYTE byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1) ? 0x82F63B78 : 0);
    }
    return ~crc;
}

TEST(Crc32c, PublishedVectors) { // RFC 3720, B.4, and the check value of the catalogues
    std::vector<BYTE> rising(32), falling(32);
    std::iota(rising.begin(), rising.end(), BYTE{0});
    std::iota(falling.rbegin(), falling.rend(), BYTE{0});
    for (const Kernel kernel : AvailableKernels()) {
        const test::ScopedKernel scope(kernel);
        EXPECT_EQ(Crc32c(std::vector<BYTE>(32, 0)), 0x8A9136AAu);
        EXPECT_EQ(Crc32c(std::vector<BYTE>(32, 0xFF)), 0x62A8AB43u);
        EXPECT_EQ(Crc32c(rising), 0x46DD794Eu);
        EXPECT_EQ(Crc32c(falling), 0x113FDB5Cu);
        EXPECT_EQ(Crc32c(Bytes("123456789")), 0xE3069283u);
        EXPECT_EQ(Crc32c(Bytes("56789"), Crc32c(Bytes("1234"))), 0xE3069283u);
        EXPECT_EQ(Crc32c({}), 0u);
    }
}

TEST(Crc32c, AllKernelsAgreeWithTheDefinition) {
    std::mt19937 random(1);
    std::vector<BYTE> bytes(70000);
    for (BYTE& byte : bytes)
        byte = static_cast<BYTE>(random());
    for (const std::size_t length :
         {1u, 7u, 8u, 9u, 100u, 32639u, 32640u, 32768u, 65287u, 69999u}) {
        const std::span<const BYTE> part =
            std::span(bytes).subspan(length % 3).first(length - length % 3);
        const DWORD expected = ByDefinition(part);
        for (const Kernel kernel : AvailableKernels()) {
            const test::ScopedKernel scope(kernel);
            EXPECT_EQ(Crc32c(part), expected) << KernelName(kernel) << length;
        }
    }
}

} // namespace
} // namespace vnbytstr

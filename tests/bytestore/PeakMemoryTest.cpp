// How much memory a large value takes. A separate program, since a peak never goes down.
#include "tests/support/PeakMemory.h"
#include "vnbytstr/ByteStream.h"

#include <gtest/gtest.h>

#include <vector>

using vnbytstr::test::PeakKiB;

namespace {

TEST(PeakMemory, ValueOf1GiBTakesAtMost8MiB) {
    const std::vector<BYTE> piece(65536, 7);
    const long before = PeakKiB();
    ASSERT_GT(before, 0);
    CByteStream stream;
    while (stream.GetLength() < (1u << 30))
        stream.Concat(piece.data(), static_cast<DWORD>(piece.size()));
    for (DWORD index = 0; index < stream.GetLength(); index += 100003)
        ASSERT_EQ(stream.GetByte(index), 7);
    EXPECT_LE(PeakKiB() - before, 8 * 1024);
}

} // namespace

// How much memory a large value takes. A separate program, since a peak never goes down.
#include "vnbytstr/ByteStream.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

/// Peak resident memory of this process, in KiB.
long PeakKiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:"))
            return std::stol(line.substr(6));
    }
    return -1;
}

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

// How much memory the rows of a result take. A separate program, since a peak never goes down.
#include "tests/support/PeakMemory.h"
#include "vnbytstr/RowStore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using vnbytstr::test::PeakKiB;

namespace {

TEST(RowStoreMemory, IsTheCacheAndLessThanOneByteARow) {
    constexpr DWORD kRows = 2'000'000;
    const std::string text(80, 'x');
    const long before = PeakKiB();
    ASSERT_GT(before, 0);
    CRowStore store(3);
    for (DWORD row = 0; row < kRows; ++row) {
        store.BeginRow();
        store.AppendInteger(row);
        store.AppendText(text);
        store.AppendNull();
        store.EndRow();
    }
    for (DWORD row = 0; row < kRows; row += 7)
        ASSERT_EQ(store.GetValue(row, 0).GetInteger(), row);
    for (DWORD i = 0; i < 1000; ++i)
        ASSERT_EQ(store.GetValue(i * 7919 * 13 % kRows, 1).GetText(), text);
    EXPECT_LE(PeakKiB() - before, 2048 + kRows / 1024);

    // A value of 1 GiB adds what its page tables take.
    const std::vector<BYTE> piece(1 << 20, 7);
    store.BeginRow();
    store.AppendNull();
    store.BeginValue(rowBytes);
    for (int i = 0; i < 1024; ++i)
        store.AppendPiece(piece);
    store.EndValue();
    store.EndRow();
    const CRowValue value = store.GetValue(kRows, 1);
    ASSERT_EQ(value.GetLength(), 1u << 30);
    for (DWORD at = 0; at < value.GetLength(); at += 1'000'003)
        ASSERT_EQ(store.GetPiece(value, at).front(), 7);
    EXPECT_LE(PeakKiB() - before, 2048 + kRows / 1024 + 2048);
}

} // namespace

// The set of rows against a plain one.
#include "src/window/controls/RowSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <vector>

using vnbytstr::detail::RowSet;

namespace {

int NextOf(const std::vector<bool>& rows, int from, bool on) {
    for (auto row = static_cast<std::size_t>(from); row < rows.size(); ++row)
        if (rows[row] == on)
            return static_cast<int>(row);
    return on ? -1 : static_cast<int>(rows.size());
}

} // namespace

TEST(RowSet, FollowsAPlainModel) {
    constexpr int kRows = 65536 * 3 + 100;
    std::mt19937 random(7);
    const auto below = [&random](int end) {
        return static_cast<int>(random() % static_cast<unsigned>(end));
    };
    RowSet set;
    std::vector<bool> model(kRows);
    for (int step = 0; step < 600; ++step) {
        const int edge = 65536 * below(4) + below(5) - 2; // where blocks meet
        const int first = std::clamp(below(2) == 0 ? edge : below(kRows), 0, kRows - 1);
        const int length = below(3) == 0 ? below(kRows) : below(70);
        const int last = std::min(first + length, kRows - 1);
        const bool on = below(2) == 0;
        switch (below(5)) {
        case 0:
            set.InsertRow(first);
            set.Set(kRows, kRows, false);
            model.insert(model.begin() + first, false);
            model.pop_back();
            break;
        case 1:
            set.RemoveRow(first);
            model.erase(model.begin() + first);
            model.push_back(false);
            break;
        default: {
            const bool changes =
                NextOf(model, first, !on) <= last && NextOf(model, first, !on) >= 0;
            EXPECT_EQ(set.Set(first, last, on), changes) << step;
            std::fill(model.begin() + first, model.begin() + last + 1, on);
        }
        }
        ASSERT_EQ(set.Count(), std::count(model.begin(), model.end(), true)) << step;
        for (const int from : {0, first, last, below(kRows)}) {
            ASSERT_EQ(set.Has(from), model[static_cast<std::size_t>(from)]) << step;
            ASSERT_EQ(set.Next(from), NextOf(model, from, true)) << step;
            ASSERT_EQ(set.NextOutside(from), NextOf(model, from, false)) << step;
        }
    }
}

TEST(RowSet, CostsNoMoreThanABitPerRow) {
    RowSet set;
    EXPECT_TRUE(set.Set(0, INT_MAX - 1, true));
    EXPECT_EQ(set.Count(), INT_MAX);
    EXPECT_EQ(set.NextOutside(5), INT_MAX);
    EXPECT_FALSE(set.Has(-1));
    EXPECT_LE(set.MemoryUse(), 4U << 20);
    set.RemoveRow(3);
    EXPECT_EQ(set.Count(), INT_MAX - 1);
    EXPECT_EQ(set.NextOutside(5), INT_MAX - 1);
    EXPECT_TRUE(set.Set(1, INT_MAX - 1, false));
    EXPECT_EQ(set.Next(1), -1);
    EXPECT_LE(set.MemoryUse(), 10'000U);
    constexpr int kRows = 1'000'000;
    for (int row = 0; row < kRows; row += 2)
        set.Set(row, row, true);
    EXPECT_LE(set.MemoryUse(), kRows / 8 + 20'000);
}

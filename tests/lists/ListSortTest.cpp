#include "src/lists/ListSort.h"
#include "src/lists/RowMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <random>
#include <string>
#include <vector>

using namespace vnbytstr::detail;

namespace {

using Order = std::vector<DWORD>;

/// Stable sort by `less`, and the same read backwards.
template <class Less>
Order Expected(std::size_t count, bool descending, Less less) {
    Order order(count);
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(), less);
    if (descending)
        std::reverse(order.begin(), order.end());
    return order;
}

TEST(ListSort, IntegersAreReadAsTheCLibraryDoes) {
    for (const char* text :
         {"", "0", "42", "-7", "+9", "  \t\n 12abc", "abc", "-", "+-3", "9223372036854775807",
          "9223372036854775808", "-9223372036854775808", "-9223372036854775809", "00012",
          "99999999999999999999999999", "-99999999999999999999999999", "1e3", "922337203685477580",
          "-9223372036854775799"})
        EXPECT_EQ(LeadingInteger(text), std::strtoll(text, nullptr, 10)) << text;
    EXPECT_EQ(LeadingInteger(std::string_view("123456", 3)), 123); // does not read past its end
}

TEST(ListSort, IntegerOrderIsStableBothWays) {
    std::mt19937_64 random(7);
    for (const std::uint64_t range : {3ull, 70000ull, ~0ull}) {
        std::vector<std::string> texts;
        for (int i = 0; i < 3000; ++i)
            texts.push_back(
                std::to_string(static_cast<std::int64_t>(random() % range - range / 2)));
        texts[17] = "";
        texts[18] = "-9223372036854775808";
        texts[19] = "9223372036854775807";
        const std::vector<std::string_view> views(texts.begin(), texts.end());
        for (const bool descending : {false, true})
            EXPECT_EQ(IntegerOrder(views, descending),
                      Expected(texts.size(), descending, [&](DWORD a, DWORD b) {
                          return std::atoll(texts[a].c_str()) < std::atoll(texts[b].c_str());
                      }));
    }
    EXPECT_TRUE(IntegerOrder({}, false).empty());
}

TEST(RowMap, KeepsEachRowAtItsText) {
    // The model: rows that carry their text. The map with its texts must say the same.
    std::mt19937 random(3);
    std::vector<int> rows;
    std::vector<int> texts;
    CUIntArray map;
    for (int step = 0; step < 500; ++step) {
        if (step % 10 == 9) {
            std::vector<int> order(rows.size());
            std::iota(order.begin(), order.end(), 0);
            std::shuffle(order.begin(), order.end(), random);
            std::vector<int> sorted;
            for (const int from : order)
                sorted.push_back(rows[static_cast<std::size_t>(from)]);
            rows = sorted;
            ReorderMappedRows(map, order);
        } else if (step % 7 == 6) {
            const int row = static_cast<int>(random() % rows.size());
            texts.erase(texts.begin() + MappedIndex(map, row));
            rows.erase(rows.begin() + row);
            RemoveMappedRow(map, row);
        } else {
            const int row = static_cast<int>(random() % (rows.size() + 1));
            rows.insert(rows.begin() + row, step);
            texts.insert(texts.begin() + row, step);
            InsertMappedRow(map, row);
        }
        for (std::size_t i = 0; i < rows.size(); ++i)
            ASSERT_EQ(texts.at(static_cast<std::size_t>(MappedIndex(map, static_cast<int>(i)))),
                      rows[i]);
    }
    EXPECT_EQ(MappedIndex(map, -1), -1);
    EXPECT_EQ(MappedIndex(map, static_cast<int>(rows.size())), -1);
    const int before = MappedIndex(map, 0);
    ReorderMappedRows(map, std::vector<int>{0, 1}); // covers other rows: unchanged
    EXPECT_EQ(MappedIndex(map, 0), before);
}

} // namespace

// Sorting against std::stable_sort with the comparison itself, and with the C library's strtol.
#include "src/charset/SortOrder.h"
#include "src/charset/CodePage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <string>

namespace vnbytstr {
namespace {

using Less = std::function<bool(DWORD, DWORD)>;

std::vector<DWORD> StableOrder(std::size_t count, const Less& less, SortDirection direction) {
    std::vector<DWORD> order(count);
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(), less);
    if (direction == SortDirection::Descending)
        std::reverse(order.begin(), order.end());
    return order;
}

void ExpectSorted(const std::vector<std::string>& texts) {
    const std::vector<std::string_view> views(texts.begin(), texts.end());
    for (const auto direction : {SortDirection::Ascending, SortDirection::Descending}) {
        EXPECT_EQ(SortOrder(views, direction),
                  StableOrder(
                      texts.size(),
                      [&](DWORD a, DWORD b) {
                          return CompareIgnoringCaseKanaWidth(texts[a], texts[b]) < 0;
                      },
                      direction));
    }
}

TEST(SortOrder, IsTheStableOrderOfTheComparison) {
    const ScopedCodePage utf8(65001);
    std::mt19937 random(3);
    const std::vector<std::string> words = {
        "a", "A",  "b",  "Row", "row ", "é",    "E",       "ｱ",  "あ",       "\xFF",
        "",  "12", "-7", " 3",  "漢字", "long", "longer ", "zz", "aaaaaaaa", "\x01"};
    for (const std::size_t count : {0u, 1u, 2u, 100u, 6000u}) {
        std::vector<std::string> texts(count);
        for (std::string& text : texts)
            for (std::size_t i = random() % 4; i > 0; --i)
                text += words[random() % words.size()];
        ExpectSorted(texts);
    }
}

TEST(SortOrder, LooksPastLongCommonPrefixes) {
    std::mt19937 random(4);
    std::vector<std::string> texts(3000);
    for (std::string& text : texts) {
        text = std::string(random() % 3 * 50, 'x') + std::to_string(random() % 1000);
        if (random() % 4 == 0)
            text += std::string(40, 'Y') + std::to_string(random() % 10);
    }
    ExpectSorted(texts);
    ExpectSorted(std::vector<std::string>(1000, std::string(5000, 'q')));
}

} // namespace
} // namespace vnbytstr

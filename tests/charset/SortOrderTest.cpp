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
        EXPECT_EQ(IntegerSortOrder(views, direction), StableOrder(
                                                          texts.size(),
                                                          [&](DWORD a, DWORD b) {
                                                              return LeadingInteger(texts[a]) <
                                                                     LeadingInteger(texts[b]);
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

TEST(SortOrder, IntegersAreThoseOfStrtol) {
    for (const char* text : {"", "0", "12", "-12", "+7x", " \t\n\v\f\r42", "--1", "+-1", "- 1",
                             "x1", "0x10", "2147483647", "2147483648", "-2147483648", "-2147483649",
                             "99999999999999999999999999", "-99999999999999999999999999", "007"}) {
        const long long wide = std::strtoll(text, nullptr, 10);
        const auto wanted = std::clamp<long long>(wide, std::numeric_limits<LONG>::min(),
                                                  std::numeric_limits<LONG>::max());
        EXPECT_EQ(LeadingInteger(text), wanted) << text;
    }
    EXPECT_EQ(LeadingInteger(std::string_view("1\0002", 3)), 1);
    const std::vector<LONG> values = {
        5, -1, 5, std::numeric_limits<LONG>::min(), 0, std::numeric_limits<LONG>::max(), -1};
    EXPECT_EQ(SortOrder(values, SortDirection::Ascending),
              (std::vector<DWORD>{3, 1, 6, 4, 0, 2, 5}));
    EXPECT_EQ(SortOrder(values, SortDirection::Descending),
              (std::vector<DWORD>{5, 2, 0, 4, 6, 1, 3}));
}

} // namespace
} // namespace vnbytstr

// Sorting a million short texts by the locale's rules: keys, then radix, against std::stable_sort
// of the same keys and, on fewer texts, with ICU's comparison. Per text.
#include "bench/Rounds.h"
#include "src/charset/SortOrder.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <string_view>

using namespace vnbytstr;
using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;

namespace {

std::vector<std::string> MakeTexts(std::size_t count, bool mixed) {
    std::mt19937 random(1);
    std::vector<std::string> texts(count);
    for (std::string& text : texts) {
        for (std::size_t i = 4 + random() % 8; i > 0; --i)
            text += static_cast<char>("aAeEnNrRsStTlL"[random() % 14]);
        if (mixed && random() % 10 == 0)
            text += "é";
        text += " " + std::to_string(random() % 100000);
    }
    return texts;
}

template <class Less>
std::vector<DWORD> StableOrder(std::size_t count, Less less) {
    std::vector<DWORD> order(count);
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(), less);
    return order;
}

} // namespace

int main(int argc, char** argv) {
    constexpr std::size_t kMillion = 1'000'000;
    Contests contests;
    const auto views = [](const std::vector<std::string>& texts) {
        return std::vector<std::string_view>(texts.begin(), texts.end());
    };
    const auto ascii = MakeTexts(kMillion, false), mixed = MakeTexts(kMillion, true);
    const auto few = MakeTexts(kMillion / 10, true);
    const auto asciiViews = views(ascii), mixedViews = views(mixed), fewViews = views(few);
    const auto ours = [](const std::vector<std::string_view>& texts) {
        return [&texts] {
            benchmark::DoNotOptimize(SortOrder(texts, SortDirection::Ascending).data());
        };
    };

    contests.Add({"sort 1,000,000 ASCII texts",
                  kMillion,
                  Contest::Nanoseconds,
                  {{"ours", ours(asciiViews)},
                   {"stable_sort of keys",
                    [&] {
                        CollationKeys keys;
                        for (const std::string_view text : asciiViews)
                            keys.Add(text);
                        benchmark::DoNotOptimize(StableOrder(kMillion, [&](DWORD a, DWORD b) {
                                                     return keys[a] < keys[b];
                                                 }).data());
                    }}},
                  0,
                  3});
    contests.Add({"sort 1,000,000, a tenth not ASCII",
                  kMillion,
                  Contest::Nanoseconds,
                  {{"ours", ours(mixedViews)}},
                  0,
                  3});
    contests.Add({"sort 100,000 texts",
                  kMillion / 10,
                  Contest::Nanoseconds,
                  {{"ours", ours(fewViews)},
                   {"stable_sort by comparison",
                    [&] {
                        benchmark::DoNotOptimize(StableOrder(few.size(), [&](DWORD a, DWORD b) {
                                                     return CompareIgnoringCaseKanaWidth(
                                                                few[a], few[b]) < 0;
                                                 }).data());
                    }}},
                  0,
                  3});
    return contests.Run(argc, argv);
}

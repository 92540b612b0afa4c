#include "src/bytestore/ByteSearch.h"
#include "tests/support/KernelTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using namespace vnbytstr;
using vnbytstr::detail::ByteSearcher;
using vnbytstr::detail::FindBytes;

namespace {

using Bytes = std::vector<BYTE>;

std::optional<std::size_t> Oracle(const Bytes& haystack, const Bytes& pattern, std::size_t from) {
    const auto begin = haystack.begin() + static_cast<std::ptrdiff_t>(from);
    const auto hit = std::search(begin, haystack.end(), pattern.begin(), pattern.end());
    if (hit == haystack.end() && !pattern.empty())
        return std::nullopt;
    return static_cast<std::size_t>(hit - haystack.begin());
}

// Feeds `haystack` in pieces that end where `nextEnd` says.
template <class NextEnd>
std::optional<std::uint64_t> Streamed(ByteSearcher& searcher, const Bytes& haystack,
                                      NextEnd nextEnd) {
    std::size_t at = 0;
    do {
        const std::size_t end = std::min(haystack.size(), nextEnd(at));
        const Bytes piece(haystack.begin() + static_cast<std::ptrdiff_t>(at),
                          haystack.begin() +
                              static_cast<std::ptrdiff_t>(end)); // gone after the call
        if (const auto found = searcher.Feed(piece))
            return found;
        at = end;
    } while (at < haystack.size());
    return std::nullopt;
}

class ByteSearch : public vnbytstr::test::KernelTest {
protected:
    unsigned Number(unsigned low, unsigned high) {
        return low + static_cast<unsigned>(m_random() % (high - low + 1));
    }
    Bytes Random(std::size_t size, unsigned alphabet) {
        Bytes bytes(size);
        for (BYTE& byte : bytes)
            byte = static_cast<BYTE>(m_random() % alphabet);
        return bytes;
    }
    Bytes Cut(const Bytes& from, std::size_t size) {
        const auto at = static_cast<std::ptrdiff_t>(m_random() % (from.size() - size + 1));
        return {from.begin() + at, from.begin() + at + static_cast<std::ptrdiff_t>(size)};
    }

    std::mt19937 m_random{20240229};
};
VNBYTSTR_FOR_ALL_KERNELS(ByteSearch);

// Repeats `unit` up to `size` bytes.
Bytes Repeat(const std::string& unit, std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<BYTE>(unit[i % unit.size()]);
    return bytes;
}

Bytes Fibonacci(std::size_t size) {
    std::string a = "a";
    std::string b = "ab";
    while (b.size() < size) {
        a.swap(b);
        b = a + b;
    }
    return {b.begin(), b.begin() + static_cast<std::ptrdiff_t>(size)};
}

// Patterns and data that make simple algorithms quadratic, or that have the periods the two-way
// algorithm treats apart.
std::vector<std::pair<Bytes, Bytes>> HardCases() {
    std::vector<std::pair<Bytes, Bytes>> cases;
    for (std::size_t size : {2u, 3u, 5u, 16u, 17u, 31u, 33u, 64u, 100u, 300u}) {
        std::vector<Bytes> patterns = {Repeat("a", size), Repeat("ab", size), Repeat("aab", size),
                                       Fibonacci(size)};
        for (std::size_t at : {std::size_t{0}, size / 2, size - 2, size - 1}) {
            patterns.push_back(Repeat("a", size));
            patterns.back()[at] = 'b';
        }
        for (const Bytes& pattern : patterns) {
            for (const char* unit : {"a", "aaaaaaab", "ab", "aab", "abaab"}) {
                Bytes haystack = Repeat(unit, 4000);
                cases.emplace_back(haystack, pattern);
                haystack.insert(haystack.end(), pattern.begin(), pattern.end());
                haystack.insert(haystack.end(), 40, 'a');
                cases.emplace_back(haystack, pattern);
            }
            // Nearly the pattern, again and again: the last byte differs, then the first.
            Bytes nearly;
            while (nearly.size() < 4000) {
                nearly.insert(nearly.end(), pattern.begin(), pattern.end());
                nearly.back() = 'c';
                nearly.insert(nearly.end(), pattern.begin() + 1, pattern.end());
            }
            cases.emplace_back(nearly, pattern);
            nearly.insert(nearly.end(), pattern.begin(), pattern.end());
            cases.emplace_back(nearly, pattern);
        }
    }
    return cases;
}

} // namespace

TEST_P(ByteSearch, FindsWhatASimpleSearchFinds) {
    for (int round = 0; round < 20000; ++round) {
        const unsigned alphabet = Number(1, round % 8 == 0 ? 256 : 3);
        const Bytes haystack = Random(m_random() % 300, alphabet);
        const std::size_t size = m_random() % 70;
        const bool cut = size <= haystack.size() && m_random() % 2 == 0;
        const Bytes pattern = cut ? Cut(haystack, size) : Random(size, alphabet);
        const std::size_t from = m_random() % (haystack.size() + 1);
        ASSERT_EQ(FindBytes(haystack, pattern, from), Oracle(haystack, pattern, from))
            << "round " << round;
    }
}

TEST_P(ByteSearch, FindsAnOccurrenceAtEveryPlaceAndNothingPastTheEnd) {
    for (std::size_t haystackSize :
         {15u, 16u, 31u, 32u, 33u, 63u, 64u, 65u, 127u, 128u, 129u, 200u}) {
        for (std::size_t size : {1u, 2u, 3u, 4u, 8u, 15u}) {
            for (std::size_t at = 0; at + size <= haystackSize; ++at) {
                Bytes haystack(haystackSize, 'x');
                const Bytes pattern = Repeat("pattern", size);
                std::copy(pattern.begin(), pattern.end(),
                          haystack.begin() + static_cast<std::ptrdiff_t>(at));
                ASSERT_EQ(FindBytes(haystack, pattern), at);
                ASSERT_EQ(FindBytes(haystack, pattern, at + 1), std::nullopt);
                const std::span shorter(haystack.data(),
                                        at + size - 1); // the rest is not looked at
                ASSERT_EQ(FindBytes(shorter, pattern), std::nullopt);
            }
        }
    }
}

TEST_P(ByteSearch, FindsTheEmptyPatternWhereItStarts) {
    const Bytes haystack = Repeat("abc", 5);
    EXPECT_EQ(FindBytes(haystack, {}), 0u);
    EXPECT_EQ(FindBytes(haystack, {}, 5), 5u);
    EXPECT_EQ(FindBytes(haystack, {}, 6), std::nullopt);
    EXPECT_EQ(FindBytes({}, haystack), std::nullopt);
    ByteSearcher searcher({});
    EXPECT_EQ(searcher.Feed({}), 0u);
}

TEST_P(ByteSearch, FindsAcrossEverySplit) {
    for (int round = 0; round < 60; ++round) {
        const unsigned alphabet = Number(1, 4);
        const Bytes haystack = Random(60, alphabet);
        const Bytes pattern = Cut(haystack, 1 + m_random() % 40);
        const auto expected = Oracle(haystack, pattern, 0);
        ByteSearcher searcher(pattern);
        for (std::size_t first = 0; first <= haystack.size(); ++first) {
            for (std::size_t second = first; second <= haystack.size(); ++second) {
                searcher.Restart();
                const auto found = Streamed(searcher, haystack, [&](std::size_t at) {
                    return at < first ? first : at < second ? second : haystack.size();
                });
                ASSERT_EQ(found, expected) << first << ' ' << second;
            }
        }
    }
}

TEST_P(ByteSearch, MeetsHardCasesInMemoryAndInPieces) {
    for (const auto& [haystack, pattern] : HardCases()) {
        const auto expected = Oracle(haystack, pattern, 0);
        ASSERT_EQ(FindBytes(haystack, pattern), expected);
        for (std::size_t piece : {1u, 37u, 1000u}) {
            ByteSearcher searcher(pattern);
            ASSERT_EQ(Streamed(searcher, haystack, [=](std::size_t at) { return at + piece; }),
                      expected)
                << "pieces of " << piece;
        }
    }
}

TEST_P(ByteSearch, ReportsAnOccurrenceWithItsLastByte) {
    const Bytes pattern = Repeat("abcab", 100);
    Bytes haystack = Repeat("abcab", 250);
    haystack[120] = 'x';
    ByteSearcher searcher(pattern);
    for (std::size_t i = 0; i < haystack.size(); ++i) {
        const auto found = searcher.Feed(std::span(haystack).subspan(i, 1));
        if (i < 100 - 1) {
            ASSERT_EQ(found, std::nullopt);
        } else {
            ASSERT_EQ(found, 0u);
            break;
        }
    }
    searcher.Restart();
    ASSERT_EQ(searcher.Feed(std::span(haystack).subspan(30)),
              Oracle(haystack, pattern, 30).value() - 30);
}

TEST_P(ByteSearch, FindsPatternsLongerThanAPiece) {
    for (const unsigned alphabet : {1u, 2u, 256u}) {
        Bytes haystack = Random(400000, alphabet);
        Bytes pattern = Cut(haystack, 100000);
        for (int change = 0; change < 2; ++change) {
            const auto expected = Oracle(haystack, pattern, 0);
            ByteSearcher searcher(pattern);
            ASSERT_EQ(Streamed(searcher, haystack, [](std::size_t at) { return at + 32768; }),
                      expected);
            pattern[alphabet == 1 ? 0 : 99000] ^= 0x80; // else the oracle takes too long
        }
    }
}

// Long patterns, where the search skips data until too much of that looks like the pattern.
TEST_P(ByteSearch, FindsLongPatternsWhereverTheyStand) {
    for (int round = 0; round < 150; ++round) {
        const unsigned alphabet = round % 3 == 0 ? 2 : round % 3 == 1 ? 30 : 256;
        const std::size_t size = Number(255, round % 10 == 0 ? 6000 : 900);
        Bytes haystack = Random(20000 + Number(0, 20000), alphabet);
        Bytes pattern = round % 4 == 0 ? Cut(haystack, size) : Random(size, alphabet);
        if (round % 5 == 0) { // a stretch that begins and ends like the pattern everywhere
            pattern.assign(size, 0);
            pattern[Number(0, 1) * (size - 1)] = 1;
            std::fill_n(haystack.begin() + 9000, 9000, BYTE{0});
        }
        if (round % 2 == 0) {
            const std::size_t at = m_random() % (haystack.size() - size + 1);
            std::copy(pattern.begin(), pattern.end(),
                      haystack.begin() + static_cast<std::ptrdiff_t>(at));
        }
        const auto expected = Oracle(haystack, pattern, 0);
        ASSERT_EQ(FindBytes(haystack, pattern), expected) << "round " << round;
        ByteSearcher searcher(pattern);
        for (const std::size_t piece : {std::size_t{1000}, haystack.size()}) {
            searcher.Restart();
            ASSERT_EQ(Streamed(searcher, haystack, [=](std::size_t at) { return at + piece; }),
                      expected)
                << "round " << round << ", pieces of " << piece;
        }
    }
}

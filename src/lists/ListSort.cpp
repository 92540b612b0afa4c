#include "src/lists/ListSort.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <utility>

namespace vnbytstr::detail {
namespace {

struct KeyedRow {
    std::uint64_t key;
    std::uint32_t row;
};

/// Stable, from the lowest digit up; a digit that is the same in all keys is skipped. `other` is
/// scratch memory of the same size.
void RadixSort(std::span<KeyedRow> rows, std::span<KeyedRow> other) {
    constexpr unsigned kBits = 11;
    constexpr unsigned kDigits = (64 + kBits - 1) / kBits;
    constexpr std::size_t kValues = std::size_t{1} << kBits;
    std::vector<std::array<std::uint32_t, kValues>> counts(kDigits);
    const auto digitOf = [](std::uint64_t key, unsigned digit) {
        return static_cast<std::size_t>(key >> (digit * kBits)) & (kValues - 1);
    };
    for (const KeyedRow& row : rows)
        for (unsigned digit = 0; digit < kDigits; ++digit)
            ++counts[digit][digitOf(row.key, digit)];

    std::span<KeyedRow> from = rows;
    for (unsigned digit = 0; digit < kDigits; ++digit) {
        std::array<std::uint32_t, kValues>& places = counts[digit];
        if (places[digitOf(from.front().key, digit)] == from.size())
            continue;
        std::uint32_t next = 0;
        for (std::uint32_t& place : places)
            next += std::exchange(place, next);
        for (const KeyedRow& row : from)
            other[places[digitOf(row.key, digit)]++] = row;
        std::swap(from, other);
    }
    if (from.data() != rows.data())
        std::copy(from.begin(), from.end(), rows.begin());
}

/// From this number of rows on, a radix sort is faster than comparing.
constexpr std::size_t kMinRadixRows = 1500;

void StableSort(std::span<KeyedRow> rows, std::span<KeyedRow> scratch) {
    if (rows.size() >= kMinRadixRows)
        RadixSort(rows, scratch.first(rows.size()));
    else
        std::stable_sort(rows.begin(), rows.end(),
                         [](const KeyedRow& a, const KeyedRow& b) { return a.key < b.key; });
}

} // namespace

std::int64_t LeadingInteger(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size() && (text[at] == ' ' || (text[at] >= '\t' && text[at] <= '\r')))
        ++at;
    bool negative = false;
    if (at < text.size() && (text[at] == '-' || text[at] == '+'))
        negative = text[at++] == '-';
    // Accumulated as a negative number, since the negative range is larger by one.
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    std::int64_t value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        const int digit = text[at] - '0';
        if (value < (kMin + digit) / 10)
            return negative ? kMin : std::numeric_limits<std::int64_t>::max();
        value = value * 10 - digit;
    }
    if (negative)
        return value;
    return value == kMin ? std::numeric_limits<std::int64_t>::max() : -value;
}

std::vector<DWORD> IntegerOrder(std::span<const std::string_view> texts, bool descending) {
    std::vector<DWORD> order(texts.size());
    if (texts.empty())
        return order;
    std::vector<KeyedRow> rows(texts.size());
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::int64_t value = LeadingInteger(texts[i]);
        least = std::min(least, value);
        rows[i] = {static_cast<std::uint64_t>(value), static_cast<std::uint32_t>(i)};
    }
    for (KeyedRow& row : rows)
        row.key -= static_cast<std::uint64_t>(least);
    std::vector<KeyedRow> scratch(rows.size());
    StableSort(rows, scratch);
    for (std::size_t i = 0; i < rows.size(); ++i)
        order[descending ? rows.size() - 1 - i : i] = rows[i].row;
    return order;
}

} // namespace vnbytstr::detail

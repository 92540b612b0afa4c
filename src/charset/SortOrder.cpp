#include "src/charset/SortOrder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace vnbytstr {

namespace {

/// Eight bytes of a key from some depth on, the first one highest, and whose they are.
struct Item {
    std::uint64_t part;
    DWORD index;
};

constexpr std::size_t kPart = sizeof(std::uint64_t);
constexpr std::size_t kFewForRadix = 256; // below, comparing beats counting

void CheckCount(std::size_t count) {
    if (count > std::numeric_limits<DWORD>::max())
        throw std::length_error("too many texts to sort");
}

/// Zeros fill the part after a key's end, so a part whose last byte is not 0 has a successor.
std::uint64_t PartAt(std::string_view key, std::size_t depth) {
    std::uint64_t part = 0;
    const std::size_t rest = key.size() > depth ? key.size() - depth : 0;
    std::memcpy(&part, key.data() + std::min(depth, key.size()), std::min(rest, kPart));
    if constexpr (std::endian::native == std::endian::little)
        part = __builtin_bswap64(part);
    return part;
}

bool GoesOn(std::uint64_t part) { return (part & 0xFF) != 0; }

bool IsBefore(const Item& left, const Item& right) {
    return left.part != right.part ? left.part < right.part : left.index < right.index;
}

/// Sorts by the bytes of the part, one after the other, from the highest; `spare` is as long as
/// `items`.
void SortByParts(std::span<Item> items, std::span<Item> spare, int shift) {
    if (items.size() < kFewForRadix || shift < 0) {
        std::sort(items.begin(), items.end(), IsBefore);
        return;
    }
    const auto byteOf = [shift](const Item& item) { return static_cast<BYTE>(item.part >> shift); };
    std::array<std::size_t, 257> starts{};
    for (const Item& item : items)
        ++starts[byteOf(item) + std::size_t{1}];
    if (std::find(starts.begin(), starts.end(), items.size()) != starts.end()) {
        SortByParts(items, spare, shift - 8); // all have the same byte
        return;
    }
    for (std::size_t i = 1; i < starts.size(); ++i)
        starts[i] += starts[i - 1];
    std::array<std::size_t, 257> next = starts;
    for (const Item& item : items)
        spare[next[byteOf(item)]++] = item;
    std::copy_n(spare.begin(), items.size(), items.begin());
    for (std::size_t i = 0; i + 1 < starts.size(); ++i) {
        const std::size_t size = starts[i + 1] - starts[i];
        if (size > 1)
            SortByParts(items.subspan(starts[i], size), spare.subspan(starts[i], size), shift - 8);
    }
}

/// Bytes all keys of the range have in common from `depth` on.
std::size_t CommonLength(const CollationKeys& keys, std::span<const Item> items,
                         std::size_t depth) {
    const std::string_view first = keys[items.front().index].substr(depth);
    std::size_t common = first.size();
    for (const Item& item : items.subspan(1)) {
        const std::string_view key = keys[item.index].substr(depth);
        const std::size_t end = std::min(common, key.size());
        common = 0;
        while (common < end && key[common] == first[common])
            ++common;
        if (common == 0)
            break;
    }
    return common;
}

class KeySorter {
public:
    KeySorter(const CollationKeys& keys, std::vector<Item>& items)
        : m_keys(keys), m_items(items), m_spare(items.size()) {}

    /// Ranges whose keys agree so far wait in a list: keys may be long, and the stack is not.
    void Run() {
        if (m_items.size() > 1)
            m_waiting.push_back({0, m_items.size(), 0});
        while (!m_waiting.empty()) {
            const Range range = m_waiting.back();
            m_waiting.pop_back();
            Sort(range);
        }
    }

private:
    struct Range {
        std::size_t begin, end, depth;
    };

    void Sort(Range range) {
        const std::span<Item> items =
            std::span(m_items).subspan(range.begin, range.end - range.begin);
        const std::size_t depth = range.depth + CommonLength(m_keys, items, range.depth);
        for (Item& item : items)
            item.part = PartAt(m_keys[item.index], depth);
        SortByParts(items, std::span(m_spare).first(items.size()), 56);
        for (std::size_t begin = 0; begin < items.size();) {
            std::size_t end = begin + 1;
            while (end < items.size() && items[end].part == items[begin].part)
                ++end;
            if (end - begin > 1 && GoesOn(items[begin].part))
                m_waiting.push_back({range.begin + begin, range.begin + end, depth + kPart});
            begin = end;
        }
    }

    const CollationKeys& m_keys;
    std::vector<Item>& m_items;
    std::vector<Item> m_spare;
    std::vector<Range> m_waiting;
};

std::vector<DWORD> IndexesOf(const std::vector<Item>& items, SortDirection direction) {
    std::vector<DWORD> order(items.size());
    std::transform(items.begin(), items.end(), order.begin(),
                   [](const Item& item) { return item.index; });
    if (direction == SortDirection::Descending)
        std::reverse(order.begin(), order.end());
    return order;
}

} // namespace

std::vector<DWORD> SortOrder(const CollationKeys& keys, SortDirection direction) {
    CheckCount(keys.GetCount());
    std::vector<Item> items(keys.GetCount());
    for (std::size_t i = 0; i < items.size(); ++i)
        items[i] = {0, static_cast<DWORD>(i)};
    KeySorter(keys, items).Run();
    return IndexesOf(items, direction);
}

std::vector<DWORD> SortOrder(std::span<const std::string_view> texts, SortDirection direction) {
    CheckCount(texts.size());
    std::size_t bytes = 0;
    for (const std::string_view text : texts)
        bytes += text.size();
    CollationKeys keys;
    keys.Reserve(texts.size(), bytes);
    for (const std::string_view text : texts)
        keys.Add(text);
    return SortOrder(keys, direction);
}

} // namespace vnbytstr

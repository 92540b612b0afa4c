#include "src/bytestore/KeySort.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vnbytstr::detail {

// --- a block -------------------------------------------------------------------------------------

KeyBlock::KeyBlock(std::size_t size) : m_size(size / sizeof(Item) * sizeof(Item)) {
    m_memory = WithMemoryException([&] { return std::make_unique_for_overwrite<BYTE[]>(m_size); });
    Clear();
}

void KeyBlock::Clear() {
    m_used = 0;
    m_items = {reinterpret_cast<Item*>(m_memory.get() + m_size), 0};
}

bool KeyBlock::Add(std::string_view key, DWORD rank) {
    const auto length = static_cast<DWORD>(key.size());
    const std::size_t needed = sizeof length + key.size() + sizeof(Item);
    if (m_size - m_used - m_items.size_bytes() < needed)
        return false;
    BYTE* at = m_memory.get() + m_used;
    std::memcpy(at, &length, sizeof length);
    std::memcpy(at + sizeof length, key.data(), key.size());
    m_items = {m_items.data() - 1, m_items.size() + 1};
    m_items.front() = {0, static_cast<DWORD>(m_used), rank};
    m_used += sizeof length + key.size();
    return true;
}

std::string_view KeyBlock::KeyOf(const Item& item) const {
    const BYTE* at = m_memory.get() + item.offset;
    DWORD length;
    std::memcpy(&length, at, sizeof length);
    return {reinterpret_cast<const char*>(at + sizeof length), length};
}

ULONGLONG KeyBlock::PartAt(std::string_view key, std::size_t depth) {
    const std::size_t rest = key.size() - depth, taken = std::min(rest, kPart);
    ULONGLONG part = 0;
    for (std::size_t i = 0; i < kPart; ++i)
        part = part << 8 | (i < taken ? static_cast<BYTE>(key[depth + i]) : 0u);
    return part << 8 | (rest > kPart ? kPart + 1 : rest);
}

/// Bytes all keys have in common from `depth` on.
std::size_t KeyBlock::CommonLength(std::span<const Item> items, std::size_t depth) const {
    const std::string_view first = KeyOf(items.front()).substr(depth);
    std::size_t common = first.size();
    for (const Item& item : items.subspan(1)) {
        const std::string_view key = KeyOf(item).substr(depth);
        const std::size_t end = std::min(common, key.size());
        common = static_cast<std::size_t>(
            std::mismatch(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(end),
                          key.begin())
                .first -
            first.begin());
        if (common == 0)
            break;
    }
    return common;
}

/// Sorts keys that agree up to `depth` by comparing them.
void KeyBlock::SortFew(std::span<Item> items, std::size_t depth) const {
    std::sort(items.begin(), items.end(), [&](const Item& left, const Item& right) {
        const int order = KeyOf(left).substr(depth).compare(KeyOf(right).substr(depth));
        return order != 0 ? order < 0 : left.rank < right.rank;
    });
}

void KeyBlock::SortRange(Range range, std::vector<Range>& waiting) {
    const std::span<Item> items = m_items.subspan(range.begin, range.end - range.begin);
    const std::size_t depth = range.depth + CommonLength(items, range.depth);
    for (Item& item : items)
        item.part = PartAt(KeyOf(item), depth);
    std::sort(items.begin(), items.end(), [](const Item& left, const Item& right) {
        return left.part != right.part ? left.part < right.part : left.rank < right.rank;
    });
    for (std::size_t begin = 0; begin < items.size();) {
        std::size_t end = begin + 1;
        while (end < items.size() && items[end].part == items[begin].part)
            ++end;
        if (end - begin > 1 && (items[begin].part & 0xFF) > kPart) {
            if (end - begin <= kFew)
                SortFew(items.subspan(begin, end - begin), depth + kPart);
            else
                waiting.push_back({range.begin + begin, range.begin + end, depth + kPart});
        }
        begin = end;
    }
}

/// Ranges whose keys agree so far wait in a list: keys may be long, and the stack is not.
bool KeyBlock::Sort(const KeepOn& keepOn) {
    return WithMemoryException([&] {
        std::vector<Range> waiting;
        if (m_items.size() > 1)
            waiting.push_back({0, m_items.size(), 0});
        for (unsigned turn = 0; !waiting.empty(); ++turn) {
            if (turn % 64 == 0 && !keepOn())
                return false;
            const Range range = waiting.back();
            waiting.pop_back();
            SortRange(range, waiting);
        }
        return true;
    });
}

// --- runs ----------------------------------------------------------------------------------------

/// Reads a run from its beginning to its end, a page at a time into memory of its own: the space
/// then needs hardly any pages, however many runs there are.
class KeySorter::Run {
public:
    Run(PagedSpace& space, Extent extent)
        : m_space(space), m_extent(extent),
          m_page(std::make_unique_for_overwrite<BYTE[]>(CBytePage::m_dwPageSize)) {}

    /// Goes to the next key; false after the last.
    bool Next() {
        if (m_extent.begin == m_extent.end)
            return false;
        DWORD head[2];
        Read(reinterpret_cast<BYTE*>(head), sizeof head);
        m_rank = head[0];
        m_key.resize(head[1]);
        Read(reinterpret_cast<BYTE*>(m_key.data()), head[1]);
        return true;
    }
    DWORD GetRank() const { return m_rank; }
    bool IsBefore(const Run& other) const {
        const int order = m_key.compare(other.m_key);
        return order != 0 ? order < 0 : m_rank < other.m_rank;
    }

private:
    void Read(BYTE* to, DWORD count) {
        while (count > 0) {
            if (m_at == m_end)
                Load();
            const auto taken = std::min(count, m_end - m_at);
            std::memcpy(to, m_page.get() + m_at, taken);
            m_at += taken;
            m_extent.begin += taken;
            to += taken;
            count -= taken;
        }
    }
    void Load() {
        const std::span<const BYTE> piece = m_space.Piece(m_extent.begin);
        std::memcpy(m_page.get(), piece.data(), piece.size());
        m_at = 0;
        m_end = static_cast<DWORD>(piece.size());
    }

    PagedSpace& m_space;
    Extent m_extent; ///< what is still to be read
    std::unique_ptr<BYTE[]> m_page;
    DWORD m_at = 0, m_end = 0; ///< in m_page
    std::string m_key;
    DWORD m_rank = 0;
};

KeySorter::KeySorter(std::size_t blockSize, KeepOn keepOn)
    : m_keepOn(std::move(keepOn)), m_block(std::make_unique<KeyBlock>(blockSize)) {}

bool KeySorter::Add(std::string_view key, DWORD rank) {
    return m_block->Add(key, rank) || (StoreBlock() && m_block->Add(key, rank));
}

bool KeySorter::StoreBlock() {
    if (!m_block->Sort(m_keepOn))
        return false;
    const ULONGLONG begin = m_space.GetLength();
    for (DWORD i = 0; i < m_block->GetCount(); ++i) {
        if (i % 65536 == 0 && !m_keepOn())
            return false;
        const RankedKey item = (*m_block)[i];
        const DWORD head[] = {item.rank, static_cast<DWORD>(item.key.size())};
        m_space.Append(reinterpret_cast<const BYTE*>(head), sizeof head);
        m_space.Append(reinterpret_cast<const BYTE*>(item.key.data()), item.key.size());
    }
    WithMemoryException([&] { m_runs.push_back({begin, m_space.GetLength()}); });
    m_block->Clear();
    return true;
}

bool KeySorter::Finish(const std::function<bool(DWORD)>& take) {
    if (!m_runs.empty()) {
        if (!StoreBlock())
            return false;
        m_block.reset();
        return WithMemoryException([&] { return Merge(take); });
    }
    if (!m_block->Sort(m_keepOn))
        return false;
    for (DWORD i = 0; i < m_block->GetCount(); ++i) {
        if (!take((*m_block)[i].rank))
            return false;
    }
    return true;
}

bool KeySorter::Merge(const std::function<bool(DWORD)>& take) {
    std::vector<std::unique_ptr<Run>> runs; // a heap, the run with the least key first
    const auto isAfter = [](const auto& left, const auto& right) { return right->IsBefore(*left); };
    for (const Extent& extent : m_runs) {
        auto run = std::make_unique<Run>(m_space, extent);
        run->Next(); // none is empty
        runs.push_back(std::move(run));
    }
    std::make_heap(runs.begin(), runs.end(), isAfter);
    while (!runs.empty()) {
        if (!take(runs.front()->GetRank()))
            return false;
        std::pop_heap(runs.begin(), runs.end(), isAfter);
        if (runs.back()->Next())
            std::push_heap(runs.begin(), runs.end(), isAfter);
        else
            runs.pop_back();
    }
    return true;
}

} // namespace vnbytstr::detail

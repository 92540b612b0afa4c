// Sorting of more keys than fit in memory: they are sorted block by block, each block becomes a run
// in a temporary file, and the runs are merged.
#pragma once

#include "src/bytestore/PagedSpace.h"

#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {

/// Asked now and then; false ends the work.
using KeepOn = std::function<bool()>;

/// A key, and which one of all it is. Equal keys come in the order of their ranks.
struct RankedKey {
    std::string_view key;
    DWORD rank;
};

/// Keys in one piece of memory: their bytes from the front, what is known of them from the back.
/// Invariants: the items end where the memory ends; their offsets are distinct and below m_used;
/// m_used and the items together are at most m_size.
class KeyBlock {
public:
    /// Memory that is not used is not touched. CMemoryException.
    explicit KeyBlock(std::size_t size);

    /// False when there is no room for it.
    bool Add(std::string_view key, DWORD rank);
    DWORD GetCount() const { return static_cast<DWORD>(m_items.size()); }
    RankedKey operator[](std::size_t index) const {
        return {KeyOf(m_items[index]), m_items[index].rank};
    }
    /// False when `keepOn` has ended it.
    bool Sort(const KeepOn& keepOn);
    void Clear();

private:
    /// While a range is sorted: seven bytes of a key from some depth on, and below them how many of
    /// those there are; 8 when the key goes on after them. So equal parts that do not go on are
    /// of equal keys.
    struct Item {
        ULONGLONG part;
        DWORD offset; ///< of the key's length and bytes
        DWORD rank;
    };
    struct Range {
        std::size_t begin, end, depth;
    };
    static constexpr std::size_t kPart = 7;
    static constexpr std::size_t kFew = 16; ///< ranges of so many need no turn of their own

    std::string_view KeyOf(const Item& item) const;
    static ULONGLONG PartAt(std::string_view key, std::size_t depth);
    std::size_t CommonLength(std::span<const Item> items, std::size_t depth) const;
    void SortFew(std::span<Item> items, std::size_t depth) const;
    void SortRange(Range range, std::vector<Range>& waiting);

    std::unique_ptr<BYTE[]> m_memory;
    std::size_t m_size, m_used = 0;
    std::span<Item> m_items; ///< at the end of the memory, growing downwards
};

/// Takes keys in any order and gives their ranks in the order of the keys.
class KeySorter {
public:
    KeySorter(std::size_t blockSize, KeepOn keepOn);

    /// False when the work has been ended.
    bool Add(std::string_view key, DWORD rank);
    /// Calls `take(rank)` for all keys in order; it returns false to end the work.
    bool Finish(const std::function<bool(DWORD)>& take);

private:
    class Run;
    struct Extent {
        ULONGLONG begin, end;
    };

    bool StoreBlock();
    bool Merge(const std::function<bool(DWORD)>& take);

    KeepOn m_keepOn;
    PageAllowance m_allowance{4};
    PagedSpace m_space{m_allowance, 0x8000'0000};
    std::vector<Extent> m_runs;
    std::unique_ptr<KeyBlock> m_block;
};

} // namespace vnbytstr::detail

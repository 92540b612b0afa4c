#include "vnbytstr/RowSort.h"

#include "src/bytestore/KeySort.h"
#include "src/bytestore/RowSortKey.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string>

using namespace vnbytstr::detail;

void CRowStoreColumn::Lock() {
    if (m_mutex)
        m_mutex->lock();
}

void CRowStoreColumn::Unlock() noexcept {
    if (m_mutex)
        m_mutex->unlock();
}

namespace {

constexpr DWORD kBatch = 64; // rows under one lock
constexpr DWORD kNoRank = 0xFFFFFFFF;

/// The source's lock, as long as the object lives.
class SourceLock {
public:
    explicit SourceLock(CRowSortSource& source) : m_source(source) { m_source.Lock(); }
    ~SourceLock() { m_source.Unlock(); }
    SourceLock(const SourceLock&) = delete;
    SourceLock& operator=(const SourceLock&) = delete;

private:
    CRowSortSource& m_source;
};

/// Some rows' values, copied so that they can be looked at without the lock.
class Batch {
public:
    void Read(CRowSortSource& source, DWORD begin, DWORD end) {
        const SourceLock lock(source);
        m_bytes.clear();
        m_count = 0;
        for (DWORD row = begin; row < end; ++row) {
            Entry& entry = m_entries[m_count++];
            entry.value = source.GetValue(row);
            entry.begin = m_bytes.size();
            entry.size = std::min(entry.value.GetLength(), CRowSort::kMaxCompared);
            if (!entry.value.IsLong()) {
                m_bytes.append(entry.value.GetText().substr(0, entry.size));
            } else {
                m_bytes.resize(entry.begin + entry.size);
                source.CopyTo(entry.value, reinterpret_cast<BYTE*>(m_bytes.data() + entry.begin),
                              entry.size);
            }
        }
    }
    const CRowValue& Value(DWORD index) const { return m_entries[index].value; }
    std::string_view BytesOf(DWORD index) const {
        return std::string_view(m_bytes).substr(m_entries[index].begin, m_entries[index].size);
    }

private:
    struct Entry {
        CRowValue value;
        std::size_t begin = 0;
        DWORD size = 0;
    };
    std::array<Entry, kBatch> m_entries;
    DWORD m_count = 0;
    std::string m_bytes;
};

/// For each row its place in `order`, kNoRank where it has none; empty when all rows stand in the
/// source's own order.
std::vector<DWORD> RanksOf(const std::vector<DWORD>& order, DWORD rows) {
    std::vector<DWORD> ranks;
    if (order.empty())
        return ranks;
    ranks.resize(rows, kNoRank);
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (order[i] >= rows || ranks[order[i]] != kNoRank)
            throw new CCacheException(CCacheException::kOutOfRange);
        ranks[order[i]] = static_cast<DWORD>(i);
    }
    return ranks;
}

/// 12 bytes a row, less what the ranks take, within bounds. Larger blocks are not faster, and take
/// long to sort, during which nobody can end the work.
std::size_t BlockSize(ULONGLONG rows, const std::vector<DWORD>& ranks) {
    constexpr ULONGLONG kLeast = 8 << 20, kMost = 64 << 20;
    return static_cast<std::size_t>(std::clamp(rows * (ranks.empty() ? 12 : 8), kLeast, kMost));
}

DWORD RowCountOf(CRowSortSource& source) {
    const SourceLock lock(source);
    return source.GetRowCount();
}

bool SortRows(CRowSortSource& source, std::vector<DWORD>& order, bool descending,
              const CRowSort::Progress& progress) {
    const DWORD rows = RowCountOf(source);
    std::vector<DWORD> ranks = RanksOf(order, rows);
    const ULONGLONG sorted = order.empty() ? rows : order.size();
    ULONGLONG done = 0;
    const auto keepOn = [&] { return !progress || progress(done, rows + sorted); };

    KeySorter sorter(BlockSize(rows, ranks), keepOn);
    RowSortKeys keys;
    Batch batch;
    std::string key;
    for (DWORD begin = 0; begin < rows;) {
        const DWORD end = begin + std::min(kBatch, rows - begin);
        if (begin / kBatch % 64 == 0 && !keepOn())
            return false;
        batch.Read(source, begin, end);
        for (DWORD row = begin; row < end; ++row) {
            const DWORD rank = ranks.empty() ? row : ranks[row];
            if (rank == kNoRank)
                continue;
            keys.Make(batch.Value(row - begin), batch.BytesOf(row - begin), key);
            if (!sorter.Add(key, rank))
                return false;
        }
        done = begin = end;
    }
    std::vector<DWORD>().swap(ranks);

    std::vector<DWORD> result;
    result.reserve(static_cast<std::size_t>(sorted));
    const bool isWhole = sorter.Finish([&](DWORD rank) {
        result.push_back(order.empty() ? rank : order[rank]);
        ++done;
        return done % 4096 != 0 || keepOn();
    });
    if (!isWhole)
        return false;
    if (descending)
        std::reverse(result.begin(), result.end());
    order.swap(result);
    return true;
}

} // namespace

bool CRowSort::Sort(CRowSortSource& source, std::vector<DWORD>& order, bool descending,
                    const Progress& progress) {
    return WithMemoryException([&] { return SortRows(source, order, descending, progress); });
}

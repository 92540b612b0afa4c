// A set of row numbers for lists of very many rows: the selection of a list box without data.
#pragma once

#include "vnbytstr/window/Export.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>

namespace vnbytstr::detail {

/// Rows from 0 to 2^31 - 2. Rows are kept in blocks of 65536: a block without rows costs nothing,
/// one of which every row is in the set a few dozen bytes, any other a bit per row. When memory
/// runs out std::bad_alloc is thrown; every row is then either as before or as asked for.
class VNBYTSTR_CONTROLS_API RowSet {
public:
    bool Has(int row) const noexcept;
    int Count() const noexcept { return m_count; }
    /// Rows first to last (inclusive). Returns whether that changed anything.
    bool Set(int first, int last, bool on);
    /// The next row of the set at or after `from`; -1 when there is none.
    int Next(int from) const noexcept;
    /// The next row at or after `from` that is not in the set.
    int NextOutside(int from) const noexcept;
    /// A row was inserted (removed): the rows from it on (after it) have other numbers now. The
    /// inserted row is not in the set. Takes time in proportion to the runs of rows after it.
    void InsertRow(int row);
    void RemoveRow(int row);
    void Clear() noexcept;

    /// Approximate number of bytes in use, for tests of the memory per row.
    std::size_t MemoryUse() const noexcept;

private:
    static constexpr int kBlockRows = 65536;
    static constexpr int kWordBits = 64;
    using Bits = std::array<std::uint64_t, kBlockRows / kWordBits>;
    struct Block {
        int count = 0;
        std::unique_ptr<Bits> bits; ///< null when every row is in the set
    };

    int SetInBlock(int block, int first, int last, bool on);
    void Move(int from, int by);
    void Check() const noexcept;

    std::map<int, Block> m_blocks; ///< by row / kBlockRows
    int m_count = 0;
};

} // namespace vnbytstr::detail

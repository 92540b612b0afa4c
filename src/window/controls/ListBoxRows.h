// The rows of a list box: texts, data, selection and heights, apart from any window.
#pragma once

#include "src/window/controls/RowSet.h"
#include "vnbytstr/framework/Types.h"
#include "vnbytstr/window/Export.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {

/// A list of rows. Indexes count from 0 and must be those of a row, unless said otherwise.
///
/// A row costs 16 bytes and its text with a NUL; 8 more when any row has data, 10 more when any row
/// has its own height. Adding at the end takes amortised constant time; inserting and removing move
/// the rows that follow. When memory runs out, std::bad_alloc is thrown and nothing has changed.
///
/// Without data (SetNoData) there is only a number of rows and their selection, all rows have the
/// common height, and a row costs nothing but its bit in the selection.
class VNBYTSTR_CONTROLS_API ListBoxRows {
public:
    int Count() const noexcept { return m_noData ? m_count : static_cast<int>(m_rows.size()); }
    bool Has(int row) const noexcept { return row >= 0 && row < Count(); }

    /// Removes all rows; rows added from now on have (have no) texts, data and own heights.
    void SetNoData(bool on) noexcept;
    bool IsNoData() const noexcept { return m_noData; }
    /// Without data only: adds rows at the end or removes the last ones.
    void SetCount(int count);

    /// The text, followed by a NUL; empty without data. Valid until a row's text is set or a row
    /// is removed.
    std::string_view Text(int row) const noexcept {
        if (m_noData)
            return ""; // with its NUL
        const Row& entry = m_rows[Index(row)];
        return {entry.text, entry.length};
    }
    /// A text of at most 0x7FFFFFFE bytes; `row` may be Count().
    void Insert(int row, std::string_view text, std::uintptr_t data = 0);
    void Add(std::string_view text, std::uintptr_t data = 0) { Insert(Count(), text, data); }
    /// Adds `count` texts that follow one another in `texts`, each with its NUL. False (and
    /// nothing added) when there are fewer.
    bool AddMany(std::string_view texts, int count);
    void SetText(int row, std::string_view text);
    void Remove(int row);
    void Clear() noexcept;
    /// Makes room for that many more rows.
    void Reserve(int rows);

    std::uintptr_t Data(int row) const noexcept { return m_data.empty() ? 0 : m_data[Index(row)]; }
    void SetData(int row, std::uintptr_t data);

    bool IsSelected(int row) const noexcept {
        return m_noData ? m_marked.Has(row) : m_rows[Index(row)].selected != 0;
    }
    /// Returns whether that changed anything.
    bool Select(int row, bool on);
    /// Rows first to last (inclusive).
    void SelectRange(int first, int last, bool on);
    /// Those and no others. Returns whether that changed anything.
    bool SelectOnly(int first, int last);
    int SelectedCount() const noexcept { return m_noData ? m_marked.Count() : m_selected; }
    /// The next selected row at or after `from`; -1 when there is none.
    int NextSelected(int from) const noexcept;

    /// The first row after `after`, and from the top again, whose text begins with (is) `text` in
    /// either case; -1 when there is none. `after` -1 (or not a row): from the top. See
    /// TextMatch.h.
    int FindBeginning(int after, std::string_view text) const { return Find(after, text, false); }
    int FindExact(int after, std::string_view text) const { return Find(after, text, true); }

    /// The row that stood at order[i] comes to i, with all it has. False (and nothing changed) when
    /// `order` is no permutation, and without data.
    bool Reorder(std::span<const DWORD> order);

    // --- rows put aside ---
    /// How many rows are put aside: kept with all they have, but for their selection, and no rows
    /// of the list.
    int AsideCount() const noexcept { return static_cast<int>(m_aside.size()); }
    std::string_view AsideText(int index) const noexcept {
        return {m_aside[Index(index)].text, m_aside[Index(index)].length};
    }
    /// From now on the list has these rows and no others, in this order: below Count() a row of the
    /// list, from Count() on one put aside. The rest is put aside: first what was there, then what
    /// was a row, each in its order. False (and nothing changed) when a number is out of range or
    /// comes twice, and without data.
    bool ShowOnly(std::span<const DWORD> rows);

    // --- heights, in pixels ---
    /// The height of every row without its own.
    void SetHeight(int height);
    int Height() const noexcept { return m_height; }
    void SetHeightOf(int row, int height);
    int HeightOf(int row) const noexcept {
        return m_heights.empty() ? m_height : m_heights[Index(row)];
    }
    /// Where a row begins, from the top of the first; `row` may be Count(). O(log n) after rows
    /// came and went.
    std::int64_t TopOf(int row) const {
        return m_heights.empty() ? static_cast<std::int64_t>(row) * m_height : SumBefore(row);
    }
    /// The row that the place `y` lies in; -1 above the first, Count() below the last.
    int RowAt(std::int64_t y) const;

    /// Approximate number of bytes in use, for tests of the memory per row.
    std::size_t MemoryUse() const noexcept;

private:
    struct Row {
        char* text;
        DWORD length : 31;
        DWORD selected : 1;
    };
    struct Chunk {
        std::unique_ptr<char[]> bytes;
        std::size_t size = 0;
        std::size_t used = 0;
    };

    static std::size_t Index(int row) noexcept {
        return static_cast<std::size_t>(static_cast<unsigned>(row));
    }
    int Find(int after, std::string_view text, bool exact) const;
    void LeaveOut(std::span<const DWORD> kept);
    char* Allocate(std::size_t bytes);
    char* Store(std::string_view text);
    void Discard(const Row& row);
    void Compact();
    void EnsureSums() const;
    std::int64_t SumBefore(int row) const;
    void Check() const noexcept;

    bool m_noData = false;
    int m_count = 0; ///< of rows without data
    RowSet m_marked; ///< the selected rows without data
    std::vector<Row> m_rows;
    std::vector<Row> m_aside;
    std::vector<std::uintptr_t> m_asideData; ///< like m_data
    std::vector<WORD> m_asideHeights;        ///< like m_heights
    std::vector<Chunk> m_chunks;
    std::size_t m_live = 0;    ///< bytes of texts in use, with their NULs
    std::size_t m_garbage = 0; ///< bytes of texts no longer in use
    std::vector<std::uintptr_t> m_data;
    int m_selected = 0;
    int m_height = 16;
    std::vector<WORD> m_heights;
    mutable std::vector<std::int64_t> m_sums; ///< a Fenwick tree over m_heights
    mutable bool m_sumsValid = false;
};

} // namespace vnbytstr::detail

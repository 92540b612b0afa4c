// Which rows of a row store are deleted, so that the others can be counted without them.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <vector>

namespace vnbytstr::detail {

/// One bit for each row ever appended (up to the last deleted one), and a count for every 512 of
/// them: at most 1/5 byte a row, nothing before the first deletion.
///
/// Invariants; debug builds check those about the deleted row after each deletion:
///  1. m_bits has 8 words for each entry of m_before.
///  2. m_before[b] is the number of set bits below bit 512 * b.
///  3. m_count is the number of all set bits.
class DeletedRows {
public:
    DWORD GetCount() const { return m_count; }
    /// The place, counted with the deleted rows, of the row that is `row` without them.
    DWORD PlaceOf(DWORD row) const { return m_count == 0 ? row : Select(row); }
    /// Deletes the row at a place, which must not be deleted yet. `places` is the number of all.
    /// CMemoryException, with nothing changed.
    void Delete(DWORD place, DWORD places);
    void Clear() noexcept;

private:
    DWORD Select(DWORD row) const;
    void CheckInvariants(DWORD place) const;

    std::vector<ULONGLONG> m_bits;
    std::vector<DWORD> m_before;
    DWORD m_count = 0;
};

} // namespace vnbytstr::detail

// Where the rows of a filtered list belong among all of its rows. Rows that the filter hides are
// put aside; each row, shown or not, has a place, counted from 0, at which it stands without the
// filter.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <span>
#include <vector>

namespace vnbytstr::detail {

/// Rows are numbered as ListBoxShowOnly numbers them: the shown ones first, then those put aside.
class FilterPlaces {
public:
    bool IsActive() const { return m_isActive; }
    /// All rows are shown.
    void Begin(int count);
    void End() { *this = {}; }

    int ShownCount() const { return static_cast<int>(m_shown.size()); }
    int TotalCount() const { return static_cast<int>(m_shown.size() + m_aside.size()); }
    /// The place of a shown row, -1 for any other.
    int PlaceOf(int row) const;
    /// The row at a place, -1 when it is put aside or there is no such place.
    int RowAt(int place) const;
    /// The numbers of all rows in the order of their places.
    std::vector<DWORD> InOrder() const;

    /// From now on these rows are shown; their places must ascend. Returns the numbers of the
    /// others, in the order in which they are put aside; perhaps nothing unless they are wanted.
    std::vector<DWORD> ShowOnly(std::span<const DWORD> rows, bool wantsRest = true);
    /// There are so many shown rows now: new ones have been added at the end of all.
    void Appended(int shownCount);
    /// A shown row was inserted before (or is to be the last after) the others.
    void Inserted(int row);
    /// A shown row was removed.
    void Removed(int row);

private:
    std::vector<DWORD> LeaveOut(std::span<const DWORD> rows, bool wantsRest);
    void Check() const;

    bool m_isActive = false;
    std::vector<DWORD> m_shown; ///< the place of each shown row, ascending
    std::vector<DWORD> m_aside; ///< of each row put aside
};

} // namespace vnbytstr::detail

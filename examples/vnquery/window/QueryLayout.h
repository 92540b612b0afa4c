// How a query's result was last looked at: kept in the profile.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vnquery {

struct QueryLayout {
    enum class Sort { None, Ascending, Descending };

    std::vector<std::size_t>
        order;                  ///< the result's columns from the first displayed one to the last
    std::vector<int> widths;    ///< of the result's columns, in pixels at scale 1; 0: not set
    std::size_t sortColumn = 0; ///< column of the result
    Sort sort = Sort::None;

    bool operator==(const QueryLayout&) const = default;
};

/// Columns in the result's order, without widths and sorting.
QueryLayout DefaultLayout(std::size_t columns);

/// Reads what was kept for the query, or for one that differs only in blanks, comments and the case
/// of words; the default one when nothing was or when it does not fit the
/// number of columns.
QueryLayout LoadLayout(std::string_view sql, std::size_t columns);
/// Keeps the layout (root 1, section "Queries"), and forgets the oldest ones past 200 queries.
/// Returns whether it could be saved.
bool SaveLayout(std::string_view sql, const QueryLayout& layout);

} // namespace vnquery

// How a query's result was last shown: its columns, sorting and filter, in the profile.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vnquery {

struct QueryLayout {
    enum class Sort { None, Ascending, Descending };

    /// The result's columns from left to right, hidden ones included.
    std::vector<std::size_t> order;
    /// Of the result's columns, in pixels at scale 1; 0: not set.
    std::vector<int> widths;
    /// Column of the result.
    std::size_t sortColumn = 0;
    Sort sort = Sort::None;
    std::set<std::size_t> hidden; ///< columns of the result that are not shown; never all
    int frozen = 0;               ///< so many shown columns stay in view
    std::map<std::size_t, std::string> filters; ///< conditions by columns of the result

    bool operator==(const QueryLayout&) const = default;
};

/// Columns in the result's order, without anything else.
QueryLayout DefaultLayout(std::size_t columns);

/// Reads the layout that was saved for the query, or for one that differs only in blanks, comments
/// and the case of words; the default layout when there is none or when it does not fit the number
/// of columns.
QueryLayout LoadLayout(std::string_view sql, std::size_t columns);
/// Saves the layout (root 1, section "Queries") and removes the oldest ones beyond 200 queries.
/// Returns whether that succeeded.
bool SaveLayout(std::string_view sql, const QueryLayout& layout);

} // namespace vnquery

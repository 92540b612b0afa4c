// Recognises queries whose rows are rows of one table.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vnquery {

/// A query such as "select a, b from t where c order by 2", taken apart in front of its FROM.
struct OneTableQuery {
    std::string select; ///< up to FROM
    std::string from;   ///< FROM and the rest, without a semicolon at its end
    std::string table;  ///< the table's name as it stands in the query, without quotes
};

/// Takes a query apart when nothing but its words shows that each row it gives comes from one row
/// of one table, or view, named in it: no second SELECT, no join, no grouping. Nothing in other
/// cases; some queries that would do are among them.
std::optional<OneTableQuery> ParseOneTableQuery(std::string_view sql);

/// The text with its words in upper case and one blank between its parts, without comments; what
/// stands in quotes stays.
std::string NormaliseSql(std::string_view sql);

/// The name in double quotes.
std::string QuoteName(std::string_view name);

} // namespace vnquery

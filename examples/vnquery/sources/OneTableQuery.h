// Recognizes queries whose rows are rows of one table.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vnquery {

/// A query such as "select a, b from t where c order by 2", split before its FROM.
struct OneTableQuery {
    std::string select; ///< up to FROM
    std::string from;   ///< FROM and the rest, without a semicolon at its end
    std::string table;  ///< the table's name as it stands in the query, without quotes
};

/// Splits a query when its words alone show that each row of the result comes from one row of one
/// table or view: no second SELECT, no join, no grouping. Returns nothing for others, among them
/// some that would qualify.
std::optional<OneTableQuery> ParseOneTableQuery(std::string_view sql);

/// The text with its words in upper case and one blank between tokens, without comments. Quoted
/// text is unchanged.
std::string NormaliseSql(std::string_view sql);

/// The name in double quotes.
std::string QuoteName(std::string_view name);

} // namespace vnquery

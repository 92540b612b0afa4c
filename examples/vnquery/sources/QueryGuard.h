// Whether a statement for a database server only reads.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vnquery {

/// How a server reads SQL text. Other stands for all servers that are not known: a statement must
/// then be a query in every one of the known ways to read it.
enum class SqlServer { PostgreSql, MySql, Other };

/// From the name that the driver gives its database system.
SqlServer ServerOf(std::string_view systemName);

/// Why a text is not run.
struct QueryRefusal {
    enum class Reason {
        Empty,    ///< nothing but blanks and comments
        Several,  ///< more than one statement
        NotAQuery ///< `word` changes something, or may
    };
    Reason reason;
    std::string word; ///< in upper case
};

/// Nothing when the text is one statement that begins as a query and has no word outside of quotes
/// and comments with which a change could begin: SELECT, VALUES, WITH, TABLE, SHOW, DESCRIBE or
/// EXPLAIN, without DELETE, INTO and the like. Comments that some servers execute are refused.
///
/// It looks at words only. A function that the query calls may still change something; what stops
/// that is the server's read-only transaction (see OdbcConnection).
std::optional<QueryRefusal> FindRefusal(std::string_view sql, SqlServer server);

} // namespace vnquery

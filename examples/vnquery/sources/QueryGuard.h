// Where statements end, and whether one for a database server only reads.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vnquery {

/// How a server reads SQL text. Other stands for all unknown servers: a statement must then be a
/// query in each of the known dialects.
enum class SqlServer { Sqlite, PostgreSql, MySql, Other };

/// From the name that the driver gives its database system.
SqlServer ServerOf(std::string_view systemName);

struct SqlStatement {
    std::string text;
    bool isEnded = false; ///< by a semicolon, which the text includes
};

/// The statements of the text, without those that are nothing but blanks and comments. The last one
/// may not have ended. (Other is read as standard SQL here.)
std::vector<SqlStatement> SplitStatements(std::string_view sql, SqlServer server);

/// Why a statement is not run.
struct QueryRefusal {
    enum class Reason {
        Empty,    ///< nothing but blanks and comments
        Several,  ///< more than one statement
        NotAQuery ///< `word` changes something, or may
    };
    Reason reason;
    std::string word; ///< in upper case
};

/// Nothing when the text is a single query: it begins with SELECT, VALUES, WITH, TABLE, SHOW,
/// DESCRIBE or EXPLAIN and has, outside of quotes and comments, no word that could begin a change
/// (DELETE, INTO and so on). Comments that some servers execute are refused.
///
/// Only words are examined. A function that the query calls may still change something; the
/// server's read-only transaction prevents that (see OdbcConnection).
std::optional<QueryRefusal> FindRefusal(std::string_view sql, SqlServer server);

} // namespace vnquery

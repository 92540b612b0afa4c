// Where statements end, and whether one for a database server only reads.
#pragma once

#include "vnquery/sources/SqlLexer.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vnquery {

struct SqlStatement {
    std::string text;
    bool isEnded = false;  ///< by a semicolon, which the text includes
    std::size_t begin = 0; ///< where the statement's text begins, in bytes
};

/// The statements of the text, without those that are nothing but blanks and comments. The last one
/// may not have ended. (Other is read as standard SQL here.)
std::vector<SqlStatement> SplitStatements(std::string_view sql, SqlServer server);

/// Why a statement is not run.
struct QueryRefusal {
    enum class Reason {
        Empty,          ///< nothing but blanks and comments
        Several,        ///< more than one statement
        NotAQuery,      ///< `word` changes something, or may
        EndsTransaction ///< `word` would end the session's transaction
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

/// Where changes are allowed (see Session): why a statement is not run. It may change anything, but
/// neither end the transaction (COMMIT, ROLLBACK, END; ROLLBACK TO a savepoint is fine) nor begin
/// one. What a procedure of the server does is not seen.
std::optional<QueryRefusal> FindSessionRefusal(std::string_view sql, SqlServer server);

/// Whether the server takes the statement out of every transaction: it commits at once, on MySQL
/// and MariaDB (and, to be safe, on unknown servers) with all that was not committed before. DDL
/// there; VACUUM on SQLite; nothing on PostgreSQL.
bool CommitsByItself(std::string_view sql, SqlServer server);

/// Whether the number of changed rows means something for the statement: INSERT, UPDATE and so on.
bool CountsRows(std::string_view sql, SqlServer server);

} // namespace vnquery

// SQL text cut into tokens as each server reads it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vnquery {

/// How a server reads SQL text. Other stands for all unknown servers: a statement must then be a
/// query in each of the known dialects.
enum class SqlServer { Sqlite, PostgreSql, MySql, Other };

/// From the name that the driver gives its database system.
SqlServer ServerOf(std::string_view systemName);

/// How servers differ in reading the same text.
struct SqlDialect {
    bool hasNestedComments = false;
    bool hasHashComments = false;       ///< from # to the end of the line
    bool needsBlankAfterDashes = false; ///< "--1" is two minus signs, not a comment
    bool hasBackslashes = false;        ///< in strings, before an escaped character
    bool hasDoubleQuotedStrings = false;
    bool hasEscapeStrings = false;  ///< E'...' with backslashes
    bool hasDollarQuotes = false;   ///< $tag$...$tag$
    bool hasBrackets = false;       ///< around names
    bool hasChosenQuotes = false;   ///< q'[...]'
    bool needsNoSemicolons = false; ///< statements need none between them
};

/// All ways in which a server may read a text (a server may have several modes); the first is the
/// usual one, for Other standard SQL.
std::span<const SqlDialect> DialectsOf(SqlServer server);

enum class SqlTokenKind { Word, Number, String, QuotedName, Comment, Symbol };

/// A part of the text, from `begin` up to `end` (in bytes), with its quotes.
struct SqlToken {
    SqlTokenKind kind;
    std::size_t begin;
    std::size_t end;
    /// The text ends within this quote or comment: what has to stand before further text so that it
    /// is read as going on here, such as "'", "$tag$" or "/*".
    std::string opener = {};

    bool IsOpen() const { return !opener.empty(); }
    std::string_view In(std::string_view sql) const { return sql.substr(begin, end - begin); }
};

/// Whether the token may be the name of a table, column and so on.
bool IsName(const SqlToken& token);
/// The name, without its quotes; "" while these are open.
std::string NameOf(std::string_view sql, const SqlToken& token);

/// A byte of words: a letter, digit, _ or $, or one of a character beyond ASCII.
bool IsWordByte(char ch);

/// The tokens of the text, comments among them, blanks not. A symbol is one byte; a number is
/// digits only ("1.5" is a number, a symbol and a number); each byte above 0x7F counts as a letter.
/// An open quote or comment is the last token.
std::vector<SqlToken> LexSql(std::string_view sql, const SqlDialect& dialect);
/// The same as the server usually reads it.
std::vector<SqlToken> LexSql(std::string_view sql, SqlServer server);

} // namespace vnquery

#include "vnquery/sources/QueryGuard.h"

#include "vnquery/result/AsciiUpper.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace vnquery {

namespace {

using Reason = QueryRefusal::Reason;

/// How servers differ in reading the same text.
struct Dialect {
    bool hasNestedComments = false;
    bool hasHashComments = false;       ///< from # to the end of the line
    bool needsBlankAfterDashes = false; ///< "--1" is two minus signs, not a comment
    bool hasBackslashes = false;        ///< in strings, before an escaped character
    bool hasEscapeStrings = false;      ///< E'...' with backslashes
    bool hasDollarQuotes = false;       ///< $tag$...$tag$
    bool hasBrackets = false;           ///< around names
    bool hasChosenQuotes = false;       ///< q'[...]'
    bool needsNoSemicolons = false;     ///< statements need none between them
};

constexpr Dialect kPostgreSql = {
    .hasNestedComments = true, .hasEscapeStrings = true, .hasDollarQuotes = true};
constexpr Dialect kMySql = {
    .hasHashComments = true, .needsBlankAfterDashes = true, .hasBackslashes = true};
constexpr Dialect kMySqlPlain = {.hasHashComments = true, .needsBlankAfterDashes = true};
constexpr Dialect kTransact = {
    .hasNestedComments = true, .hasBrackets = true, .needsNoSemicolons = true};
constexpr Dialect kOracle = {.hasChosenQuotes = true};
constexpr Dialect kStandard = {};
constexpr Dialect kSqlite = {.hasBrackets = true};

constexpr std::array kOfSqlite = {kSqlite};
constexpr std::array kOfPostgreSql = {kPostgreSql};
constexpr std::array kOfMySql = {kMySql, kMySqlPlain};
constexpr std::array kAll = {kStandard, kPostgreSql, kMySql, kMySqlPlain, kTransact, kOracle};

constexpr std::array<std::string_view, 8> kBeginnings = {"SELECT", "WITH",     "VALUES", "TABLE",
                                                         "SHOW",   "DESCRIBE", "DESC",   "EXPLAIN"};
/// Words that begin a change.
constexpr std::array<std::string_view, 17> kChanges = {
    "UPDATE", "DELETE", "MERGE",  "UPSERT", "TRUNCATE", "INTO",    "CREATE", "ALTER",   "DROP",
    "RENAME", "GRANT",  "REVOKE", "CALL",   "EXEC",     "EXECUTE", "COMMIT", "SHUTDOWN"};
/// The same, unless a parenthesis follows: then they are functions.
constexpr std::array<std::string_view, 2> kFunctionsToo = {"INSERT", "REPLACE"};
/// More of them, for servers that need no semicolon between statements.
constexpr std::array<std::string_view, 7> kTransactChanges = {
    "BACKUP", "RESTORE", "DBCC", "KILL", "BULK", "DENY", "RECONFIGURE"};

template <std::size_t Count>
bool IsOneOf(const std::array<std::string_view, Count>& words, std::string_view word) {
    return std::ranges::find(words, word) != words.end();
}

bool IsDigit(char ch) { return ch >= '0' && ch <= '9'; }
bool IsLetter(char ch) {
    return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || ch == '_' ||
           static_cast<unsigned char>(ch) >= 0x80;
}

/// A word in upper case, a symbol, or "" for a quoted text or a number.
using Token = std::string;

/// Splits the text as a server with that dialect does. An unterminated quote or comment ends the
/// tokens: the server rejects such a text.
class Lexer {
public:
    Lexer(std::string_view sql, const Dialect& dialect) : m_sql(sql), m_dialect(dialect) {}

    std::vector<Token> Run() {
        std::vector<Token> tokens;
        while (m_at < m_sql.size())
            if (!SkipBlank() && !SkipComment(tokens))
                tokens.push_back(Next());
        return tokens;
    }

    std::vector<SqlStatement> Split() {
        std::vector<SqlStatement> statements;
        std::size_t begin = 0;
        bool isBlank = true;
        const auto end = [&](bool isEnded) {
            if (!isBlank)
                statements.push_back({std::string(m_sql.substr(begin, m_at - begin)), isEnded});
            begin = m_at;
            isBlank = true;
        };
        std::vector<Token> ignored;
        while (m_at < m_sql.size()) {
            const bool isBlock = StartsWith("/*");
            if (SkipBlank())
                continue;
            if (SkipComment(ignored))
                isBlank &= !isBlock || m_at < m_sql.size() || m_sql.ends_with("*/");
            else if (Next() == ";")
                end(true);
            else
                isBlank = false;
        }
        end(false);
        return statements;
    }

private:
    char At(std::size_t at) const { return at < m_sql.size() ? m_sql[at] : '\0'; }
    bool StartsWith(std::string_view text) const { return m_sql.substr(m_at).starts_with(text); }
    void SkipPast(std::string_view end) {
        const std::size_t found = m_sql.find(end, m_at);
        m_at = found == std::string_view::npos ? m_sql.size() : found + end.size();
    }
    bool SkipBlank() {
        if (static_cast<unsigned char>(m_sql[m_at]) > ' ')
            return false;
        ++m_at;
        return true;
    }
    bool SkipComment(std::vector<Token>& tokens) {
        const bool isDashes = StartsWith("--") && (!m_dialect.needsBlankAfterDashes ||
                                                   static_cast<unsigned char>(At(m_at + 2)) <= ' ');
        if (isDashes || (m_dialect.hasHashComments && StartsWith("#"))) {
            SkipPast("\n");
            return true;
        }
        if (!StartsWith("/*"))
            return false;
        if (StartsWith("/*!") || StartsWith("/*M!"))
            tokens.emplace_back("/*!"); // its content is executed
        int depth = 0;
        do {
            if (StartsWith("/*") && (depth == 0 || m_dialect.hasNestedComments)) {
                ++depth;
                m_at += 2;
            } else if (StartsWith("*/")) {
                --depth;
                m_at += 2;
            } else {
                ++m_at;
            }
        } while (depth > 0 && m_at < m_sql.size());
        return true;
    }
    Token Next() {
        const char ch = m_sql[m_at];
        if (IsDigit(ch)) {
            while (IsDigit(At(m_at)))
                ++m_at;
            return {};
        }
        if (ch == '$' && m_dialect.hasDollarQuotes && SkipDollarQuote())
            return {};
        if (IsLetter(ch))
            return Word();
        if (ch == '\'' || ch == '"' || ch == '`') {
            SkipQuote(ch, m_dialect.hasBackslashes && ch != '`');
            return {};
        }
        if (ch == '[' && m_dialect.hasBrackets) {
            SkipQuote(']', false);
            return {};
        }
        ++m_at;
        return Token(1, ch);
    }
    Token Word() {
        Token word;
        while (IsLetter(At(m_at)) || IsDigit(At(m_at)) || At(m_at) == '$')
            word += ToUpper(m_sql[m_at++]);
        if (At(m_at) == '\'' && word == "E" && m_dialect.hasEscapeStrings) {
            SkipQuote('\'', true);
            return {};
        }
        if (At(m_at) == '\'' && (word == "Q" || word == "NQ") && m_dialect.hasChosenQuotes) {
            SkipChosenQuote();
            return {};
        }
        return word;
    }
    /// A quote inside is doubled.
    void SkipQuote(char end, bool hasBackslashes) {
        for (++m_at; m_at < m_sql.size(); ++m_at) {
            if (hasBackslashes && m_sql[m_at] == '\\') {
                ++m_at;
            } else if (m_sql[m_at] == end) {
                if (At(m_at + 1) != end)
                    break;
                ++m_at;
            }
        }
        m_at = std::min(m_at + 1, m_sql.size());
    }
    bool SkipDollarQuote() {
        std::size_t end = m_at + 1;
        while (IsLetter(At(end)) || (end > m_at + 1 && IsDigit(At(end))))
            ++end;
        if (At(end) != '$')
            return false;
        const std::string_view tag = m_sql.substr(m_at, end + 1 - m_at);
        m_at = end + 1;
        SkipPast(tag);
        return true;
    }
    void SkipChosenQuote() {
        const char begin = At(m_at + 1);
        const char end = begin == '['   ? ']'
                         : begin == '(' ? ')'
                         : begin == '{' ? '}'
                         : begin == '<' ? '>'
                                        : begin;
        m_at = std::min(m_at + 2, m_sql.size());
        const char both[] = {end, '\''};
        SkipPast({both, 2});
    }

    std::string_view m_sql;
    const Dialect& m_dialect;
    std::size_t m_at = 0;
};

bool IsChange(std::span<const Token> tokens, std::size_t at, const Dialect& dialect) {
    const Token& word = tokens[at];
    if (word == "/*!")
        return true;
    if (at > 0 && tokens[at - 1] == ".") // a column after its table
        return false;
    if (IsOneOf(kFunctionsToo, word))
        return at + 1 == tokens.size() || tokens[at + 1] != "(";
    return IsOneOf(kChanges, word) ||
           (dialect.needsNoSemicolons && IsOneOf(kTransactChanges, word));
}

std::optional<QueryRefusal> FindRefusal(std::string_view sql, const Dialect& dialect) {
    const std::vector<Token> all = Lexer(sql, dialect).Run();
    std::span<const Token> tokens = all;
    while (!tokens.empty() && tokens.front() == ";")
        tokens = tokens.subspan(1);
    while (!tokens.empty() && tokens.back() == ";")
        tokens = tokens.first(tokens.size() - 1);
    if (tokens.empty())
        return QueryRefusal{Reason::Empty, {}};
    const auto first =
        std::ranges::find_if(tokens, [](const Token& token) { return token != "("; });
    if (first == tokens.end() || !IsOneOf(kBeginnings, *first))
        return QueryRefusal{Reason::NotAQuery, first == tokens.end() ? "(" : *first};
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        if (IsChange(tokens, at, dialect))
            return QueryRefusal{Reason::NotAQuery, tokens[at]};
        if (tokens[at] == ";")
            return QueryRefusal{Reason::Several, {}};
    }
    return {};
}

} // namespace

SqlServer ServerOf(std::string_view systemName) {
    if (systemName.starts_with("PostgreSQL"))
        return SqlServer::PostgreSql;
    if (systemName.starts_with("MySQL") || systemName.starts_with("MariaDB"))
        return SqlServer::MySql;
    return SqlServer::Other;
}

namespace {

std::span<const Dialect> DialectsOf(SqlServer server) {
    switch (server) {
    case SqlServer::Sqlite:
        return kOfSqlite;
    case SqlServer::PostgreSql:
        return kOfPostgreSql;
    case SqlServer::MySql:
        return kOfMySql;
    case SqlServer::Other:
        break;
    }
    return kAll;
}

} // namespace

std::vector<SqlStatement> SplitStatements(std::string_view sql, SqlServer server) {
    return Lexer(sql, DialectsOf(server).front()).Split();
}

std::optional<QueryRefusal> FindRefusal(std::string_view sql, SqlServer server) {
    for (const Dialect& dialect : DialectsOf(server))
        if (std::optional<QueryRefusal> refusal = FindRefusal(sql, dialect))
            return refusal;
    return {};
}

} // namespace vnquery

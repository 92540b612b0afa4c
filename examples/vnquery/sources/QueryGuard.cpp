#include "vnquery/sources/QueryGuard.h"

#include "vnquery/result/AsciiUpper.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace vnquery {

namespace {

using Reason = QueryRefusal::Reason;

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

/// What the guard sees of a token: a word in upper case, a symbol, "/*!" for a comment that some
/// servers execute, or "" for a quoted text or a number.
using Token = std::string;

std::vector<Token> TokensOf(std::string_view sql, const SqlDialect& dialect) {
    std::vector<Token> tokens;
    for (const SqlToken& token : LexSql(sql, dialect)) {
        const std::string_view text = token.In(sql);
        if (token.kind == SqlTokenKind::Word || token.kind == SqlTokenKind::Symbol)
            tokens.push_back(ToUpper(text));
        else if (token.kind != SqlTokenKind::Comment)
            tokens.emplace_back();
        else if (text.starts_with("/*!") || text.starts_with("/*M!"))
            tokens.emplace_back("/*!");
    }
    return tokens;
}

bool IsChange(std::span<const Token> tokens, std::size_t at, const SqlDialect& dialect) {
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

/// Without the semicolons around the statement.
std::span<const Token> Trimmed(std::span<const Token> tokens) {
    while (!tokens.empty() && tokens.front() == ";")
        tokens = tokens.subspan(1);
    while (!tokens.empty() && tokens.back() == ";")
        tokens = tokens.first(tokens.size() - 1);
    return tokens;
}

/// The word that says what the statement does; "" without one.
Token FirstWord(std::span<const Token> tokens) {
    const auto first = std::ranges::find_if(
        tokens, [](const Token& token) { return token != "(" && token != ";"; });
    return first == tokens.end() ? Token() : *first;
}

std::optional<QueryRefusal> FindRefusal(std::string_view sql, const SqlDialect& dialect) {
    const std::vector<Token> all = TokensOf(sql, dialect);
    const std::span<const Token> tokens = Trimmed(all);
    if (tokens.empty())
        return QueryRefusal{Reason::Empty, {}};
    const Token first = FirstWord(tokens);
    if (!IsOneOf(kBeginnings, first))
        return QueryRefusal{Reason::NotAQuery, first.empty() ? tokens[0] : first};
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        if (IsChange(tokens, at, dialect))
            return QueryRefusal{Reason::NotAQuery, tokens[at]};
        if (tokens[at] == ";")
            return QueryRefusal{Reason::Several, {}};
    }
    return {};
}

/// Whether a statement of this dialect would end the transaction, or begin another one.
bool EndsTransaction(std::span<const Token> tokens, const SqlDialect& dialect) {
    const Token first = FirstWord(tokens);
    const auto has = [&](std::string_view word) {
        return std::ranges::find(tokens, word) != tokens.end();
    };
    if (first == "ROLLBACK" && has("TO"))
        return false;
    if (dialect.needsNoSemicolons && (has("COMMIT") || has("ROLLBACK")))
        return true;
    return first == "BEGIN" || first == "COMMIT" || first == "ROLLBACK" || first == "END" ||
           first == "ABORT" || first == "/*!" ||
           ((first == "START" || first == "PREPARE") && has("TRANSACTION")) ||
           (first == "SET" && has("AUTOCOMMIT"));
}

/// Whether a semicolon stands between statements: not within parentheses.
bool AreSeveral(std::span<const Token> tokens) {
    int depth = 0;
    return std::ranges::any_of(tokens, [&](const Token& token) {
        depth += token == "(" ? 1 : token == ")" ? -1 : 0;
        return token == ";" && depth <= 0;
    });
}

/// Statements that a trigger of SQLite consists of end with semicolons of their own; the trigger
/// ends with END after one of them.
class TriggerBody {
public:
    /// The next token of the statement.
    void Add(std::string_view text) {
        const std::string word = ToUpper(text);
        if (m_state == State::Create)
            m_state = word == "TRIGGER"                       ? State::Body
                      : word == "TEMP" || word == "TEMPORARY" ? State::Create
                                                              : State::Other;
        else if (m_state == State::Begin)
            m_state = word == "CREATE" ? State::Create : State::Other;
        else if (m_state == State::Body || m_state == State::End)
            m_state = word == "END" && m_isAfterSemicolon ? State::End : State::Body;
        m_isAfterSemicolon = word == ";";
    }
    bool IsWithin() const { return m_state == State::Body; }

private:
    enum class State { Begin, Create, Body, End, Other };
    State m_state = State::Begin;
    bool m_isAfterSemicolon = false;
};

} // namespace

std::vector<SqlStatement> SplitStatements(std::string_view sql, SqlServer server) {
    std::vector<SqlStatement> statements;
    std::size_t begin = 0;
    bool isBlank = true;
    TriggerBody trigger;
    const auto end = [&](std::size_t at, bool isEnded) {
        if (!isBlank)
            statements.push_back({std::string(sql.substr(begin, at - begin)), isEnded, begin});
        begin = at;
        isBlank = true;
        trigger = {};
    };
    for (const SqlToken& token : LexSql(sql, server)) {
        const bool isSemicolon = token.kind == SqlTokenKind::Symbol && token.In(sql) == ";";
        if (isSemicolon && !trigger.IsWithin()) {
            end(token.end, true);
        } else if (token.kind != SqlTokenKind::Comment || token.IsOpen()) {
            isBlank = false;
            if (server == SqlServer::Sqlite && token.kind != SqlTokenKind::Comment)
                trigger.Add(token.In(sql));
        }
    }
    end(sql.size(), false);
    return statements;
}

std::optional<QueryRefusal> FindRefusal(std::string_view sql, SqlServer server) {
    for (const SqlDialect& dialect : DialectsOf(server))
        if (std::optional<QueryRefusal> refusal = FindRefusal(sql, dialect))
            return refusal;
    return {};
}

std::optional<QueryRefusal> FindSessionRefusal(std::string_view sql, SqlServer server) {
    for (const SqlDialect& dialect : DialectsOf(server)) {
        const std::vector<Token> all = TokensOf(sql, dialect);
        const std::span<const Token> tokens = Trimmed(all);
        if (tokens.empty())
            return QueryRefusal{Reason::Empty, {}};
        if (EndsTransaction(tokens, dialect))
            return QueryRefusal{Reason::EndsTransaction, FirstWord(tokens)};
        // SQLite itself runs only the first one; a routine's body has semicolons.
        if (server != SqlServer::Sqlite && AreSeveral(tokens) && !CommitsByItself(sql, server))
            return QueryRefusal{Reason::Several, {}};
    }
    return {};
}

bool CommitsByItself(std::string_view sql, SqlServer server) {
    constexpr std::array<std::string_view, 22> kWords = {
        "CREATE", "ALTER",   "DROP",  "RENAME",   "TRUNCATE", "GRANT",    "REVOKE", "LOCK",
        "UNLOCK", "ANALYZE", "CHECK", "OPTIMIZE", "REPAIR",   "FLUSH",    "RESET",  "CACHE",
        "CHANGE", "START",   "STOP",  "INSTALL",  "COMMENT",  "UNINSTALL"};
    const std::vector<Token> tokens = TokensOf(sql, DialectsOf(server).front());
    const Token first = FirstWord(tokens);
    if (server == SqlServer::Sqlite)
        return first == "VACUUM";
    const Token second = tokens.size() > 1 ? tokens[1] : Token();
    if (server == SqlServer::MySql && // what is executed may be any of them
        (first == "EXECUTE" || first == "IMPORT" || (first == "SET" && second == "PASSWORD") ||
         (first == "LOAD" && second == "INDEX")))
        return true;
    return server != SqlServer::PostgreSql && second != "TEMPORARY" && IsOneOf(kWords, first);
}

bool CountsRows(std::string_view sql, SqlServer server) {
    constexpr std::array<std::string_view, 6> kWords = {"INSERT",  "UPDATE", "DELETE",
                                                        "REPLACE", "MERGE",  "WITH"};
    return IsOneOf(kWords, FirstWord(TokensOf(sql, DialectsOf(server).front())));
}

} // namespace vnquery

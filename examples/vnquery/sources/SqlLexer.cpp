#include "vnquery/sources/SqlLexer.h"

#include "vnquery/result/AsciiUpper.h"

#include <algorithm>
#include <array>

namespace vnquery {

namespace {

constexpr SqlDialect kPostgreSql = {
    .hasNestedComments = true, .hasEscapeStrings = true, .hasDollarQuotes = true};
constexpr SqlDialect kMySql = {.hasHashComments = true,
                               .needsBlankAfterDashes = true,
                               .hasBackslashes = true,
                               .hasDoubleQuotedStrings = true};
constexpr SqlDialect kMySqlPlain = {.hasHashComments = true, .needsBlankAfterDashes = true};
constexpr SqlDialect kTransact = {
    .hasNestedComments = true, .hasBrackets = true, .needsNoSemicolons = true};
constexpr SqlDialect kOracle = {.hasChosenQuotes = true};
constexpr SqlDialect kStandard = {};
constexpr SqlDialect kSqlite = {.hasBrackets = true};

constexpr std::array kOfSqlite = {kSqlite};
constexpr std::array kOfPostgreSql = {kPostgreSql};
constexpr std::array kOfMySql = {kMySql, kMySqlPlain};
constexpr std::array kAll = {kStandard, kPostgreSql, kMySql, kMySqlPlain, kTransact, kOracle};

bool IsDigit(char ch) { return ch >= '0' && ch <= '9'; }
bool IsLetter(char ch) {
    return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || ch == '_' ||
           static_cast<unsigned char>(ch) >= 0x80;
}

class Lexer {
public:
    Lexer(std::string_view sql, const SqlDialect& dialect) : m_sql(sql), m_dialect(dialect) {}

    std::vector<SqlToken> Run() {
        std::vector<SqlToken> tokens;
        while (m_at < m_sql.size()) {
            if (static_cast<unsigned char>(m_sql[m_at]) <= ' ') {
                ++m_at;
                continue;
            }
            m_begin = m_at;
            m_opener.clear();
            const SqlTokenKind kind = SkipComment() ? SqlTokenKind::Comment : Next();
            tokens.push_back({kind, m_begin, m_at, m_opener});
        }
        return tokens;
    }

private:
    char At(std::size_t at) const { return at < m_sql.size() ? m_sql[at] : '\0'; }
    bool StartsWith(std::string_view text) const { return m_sql.substr(m_at).starts_with(text); }
    /// The token's text up to here.
    std::string Begun() const { return std::string(m_sql.substr(m_begin, m_at - m_begin)); }
    /// Without `end` in the rest of the text, the token stays open.
    void SkipPast(std::string_view end) {
        const std::size_t found = m_sql.find(end, m_at);
        if (found == std::string_view::npos)
            m_opener = Begun();
        m_at = found == std::string_view::npos ? m_sql.size() : found + end.size();
    }
    bool SkipComment() {
        const bool isDashes = StartsWith("--") && (!m_dialect.needsBlankAfterDashes ||
                                                   static_cast<unsigned char>(At(m_at + 2)) <= ' ');
        if (isDashes || (m_dialect.hasHashComments && StartsWith("#"))) {
            SkipPast("\n");
            m_opener.clear(); // the text's end ends it, too
            return true;
        }
        if (!StartsWith("/*"))
            return false;
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
        for (; depth > 0; --depth)
            m_opener += "/*";
        return true;
    }
    SqlTokenKind Next() {
        const char ch = m_sql[m_at];
        if (IsDigit(ch)) {
            while (IsDigit(At(m_at)))
                ++m_at;
            return SqlTokenKind::Number;
        }
        if (ch == '$' && m_dialect.hasDollarQuotes && SkipDollarQuote())
            return SqlTokenKind::String;
        if (IsLetter(ch))
            return Word();
        if (ch == '\'' || ch == '"' || ch == '`') {
            SkipQuote(ch, m_dialect.hasBackslashes && ch != '`');
            return ch == '\'' || (ch == '"' && m_dialect.hasDoubleQuotedStrings)
                       ? SqlTokenKind::String
                       : SqlTokenKind::QuotedName;
        }
        if (ch == '[' && m_dialect.hasBrackets) {
            SkipQuote(']', false);
            return SqlTokenKind::QuotedName;
        }
        ++m_at;
        return SqlTokenKind::Symbol;
    }
    SqlTokenKind Word() {
        while (IsWordByte(At(m_at)))
            ++m_at;
        if (At(m_at) != '\'')
            return SqlTokenKind::Word;
        const std::string word = ToUpper(Begun());
        if (word == "E" && m_dialect.hasEscapeStrings) {
            SkipQuote('\'', true);
            return SqlTokenKind::String;
        }
        if ((word == "Q" || word == "NQ") && m_dialect.hasChosenQuotes) {
            SkipChosenQuote();
            return SqlTokenKind::String;
        }
        return SqlTokenKind::Word;
    }
    /// A quote inside is doubled.
    void SkipQuote(char end, bool hasBackslashes) {
        ++m_at;
        const std::string opener = Begun();
        for (; m_at < m_sql.size(); ++m_at) {
            if (hasBackslashes && m_sql[m_at] == '\\') {
                ++m_at;
            } else if (m_sql[m_at] == end) {
                if (At(m_at + 1) != end)
                    break;
                ++m_at;
            }
        }
        if (m_at >= m_sql.size())
            m_opener = opener;
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
    const SqlDialect& m_dialect;
    std::size_t m_at = 0;
    std::size_t m_begin = 0; ///< of the token
    std::string m_opener;
};

} // namespace

SqlServer ServerOf(std::string_view systemName) {
    if (systemName.starts_with("PostgreSQL"))
        return SqlServer::PostgreSql;
    if (systemName.starts_with("MySQL") || systemName.starts_with("MariaDB"))
        return SqlServer::MySql;
    return SqlServer::Other;
}

std::span<const SqlDialect> DialectsOf(SqlServer server) {
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

bool IsName(const SqlToken& token) {
    return token.kind == SqlTokenKind::Word || token.kind == SqlTokenKind::QuotedName;
}

std::string NameOf(std::string_view sql, const SqlToken& token) {
    const std::string_view text = token.In(sql);
    if (token.kind != SqlTokenKind::QuotedName)
        return std::string(text);
    std::string name;
    for (std::size_t at = 1; !token.IsOpen() && at + 1 < text.size(); ++at) {
        name += text[at];
        if (text[at] == text.back()) // doubled
            ++at;
    }
    return name;
}

bool IsWordByte(char ch) { return IsLetter(ch) || IsDigit(ch) || ch == '$'; }

std::vector<SqlToken> LexSql(std::string_view sql, const SqlDialect& dialect) {
    return Lexer(sql, dialect).Run();
}

std::vector<SqlToken> LexSql(std::string_view sql, SqlServer server) {
    return LexSql(sql, DialectsOf(server).front());
}

} // namespace vnquery

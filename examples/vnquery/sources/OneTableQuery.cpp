#include "vnquery/sources/OneTableQuery.h"

#include "vnquery/result/AsciiUpper.h"

#include <algorithm>
#include <array>
#include <vector>

namespace vnquery {

namespace {

enum class TokenKind { Word, QuotedName, String, Symbol };

struct Token {
    TokenKind kind;
    std::size_t begin;
    std::string text; ///< a word in upper case, a name or string without its quotes
};

bool IsWordByte(char ch) {
    const auto byte = static_cast<unsigned char>(ch);
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') || byte == '_' || byte == '$' || byte >= 0x80;
}

/// Splits SQL text into tokens as SQLite does, leaving out blanks and comments.
class Tokenizer {
public:
    explicit Tokenizer(std::string_view sql) : m_sql(sql) {}

    std::vector<Token> Run() {
        std::vector<Token> tokens;
        while (SkipBlanks())
            tokens.push_back(Next());
        return tokens;
    }

private:
    bool StartsWith(std::string_view text) const { return m_sql.substr(m_at).starts_with(text); }
    void SkipPast(std::string_view end) {
        const std::size_t found = m_sql.find(end, m_at);
        m_at = found == std::string_view::npos ? m_sql.size() : found + end.size();
    }
    bool SkipBlanks() {
        while (m_at < m_sql.size()) {
            if (StartsWith("--")) {
                SkipPast("\n");
            } else if (StartsWith("/*")) {
                m_at += 2;
                SkipPast("*/");
            } else if (std::string_view(" \t\n\f\r").find(m_sql[m_at]) != std::string_view::npos) {
                ++m_at;
            } else {
                return true;
            }
        }
        return false;
    }
    Token Next() {
        const std::size_t begin = m_at;
        const char ch = m_sql[m_at];
        if (IsWordByte(ch)) {
            std::string word;
            while (m_at < m_sql.size() && IsWordByte(m_sql[m_at]))
                word += ToUpper(m_sql[m_at++]);
            return {TokenKind::Word, begin, word};
        }
        if (ch == '"' || ch == '`' || ch == '[' || ch == '\'')
            return {ch == '\'' ? TokenKind::String : TokenKind::QuotedName, begin,
                    Quoted(ch == '[' ? ']' : ch)};
        ++m_at;
        return {TokenKind::Symbol, begin, std::string(1, ch)};
    }
    /// A quote inside is doubled; brackets have no such escape.
    std::string Quoted(char quote) {
        std::string text;
        for (++m_at; m_at < m_sql.size(); ++m_at) {
            if (m_sql[m_at] == quote) {
                ++m_at;
                if (quote == ']' || m_at >= m_sql.size() || m_sql[m_at] != quote)
                    break;
            }
            text += m_sql[m_at];
        }
        return text;
    }

    std::string_view m_sql;
    std::size_t m_at = 0;
};

bool IsWord(const Token& token, std::string_view word) {
    return token.kind == TokenKind::Word && token.text == word;
}

bool IsSymbol(const Token& token, std::string_view symbol) {
    return token.kind == TokenKind::Symbol && token.text == symbol;
}

/// Words that show, or may show, that the rows of the result are not those of the table.
bool IsForbidden(const Token& token) {
    constexpr std::array<std::string_view, 11> kWords = {"JOIN",   "UNION",  "INTERSECT", "EXCEPT",
                                                         "WITH",   "VALUES", "DISTINCT",  "GROUP",
                                                         "HAVING", "WINDOW", "OVER"};
    return token.kind == TokenKind::Word && std::ranges::find(kWords, token.text) != kWords.end();
}

/// Index of the FROM that belongs to the SELECT at the beginning; nothing when there is another
/// SELECT or FROM.
std::optional<std::size_t> FindFrom(const std::vector<Token>& tokens) {
    std::optional<std::size_t> from;
    int depth = 0;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const Token& token = tokens[i];
        if (IsForbidden(token) || IsWord(token, "SELECT") != (i == 0) || IsSymbol(token, ";"))
            return {};
        depth += IsSymbol(token, "(") ? 1 : IsSymbol(token, ")") ? -1 : 0;
        if (IsWord(token, "FROM")) {
            if (from || depth != 0)
                return {};
            from = i;
        }
    }
    return from;
}

/// The name of the table after FROM, if it is the only one.
std::optional<std::string> FindTable(const std::vector<Token>& tokens, std::size_t from,
                                     std::string_view sql) {
    std::size_t name = from + 1;
    if (name + 2 < tokens.size() && IsSymbol(tokens[name + 1], "."))
        name += 2;
    if (name >= tokens.size() ||
        (tokens[name].kind != TokenKind::Word && tokens[name].kind != TokenKind::QuotedName))
        return {};
    for (std::size_t i = name + 1; i < tokens.size(); ++i) {
        if (IsWord(tokens[i], "WHERE") || IsWord(tokens[i], "ORDER") || IsWord(tokens[i], "LIMIT"))
            break;
        if (IsSymbol(tokens[i], ",") || IsSymbol(tokens[i], "("))
            return {};
    }
    const Token& token = tokens[name];
    return token.kind == TokenKind::Word ? std::string(sql.substr(token.begin, token.text.size()))
                                         : token.text;
}

} // namespace

std::optional<OneTableQuery> ParseOneTableQuery(std::string_view sql) {
    std::vector<Token> tokens = Tokenizer(sql).Run();
    while (!tokens.empty() && IsSymbol(tokens.back(), ";")) {
        sql = sql.substr(0, tokens.back().begin);
        tokens.pop_back();
    }
    const std::optional<std::size_t> from = FindFrom(tokens);
    if (!from)
        return {};
    const std::optional<std::string> table = FindTable(tokens, *from, sql);
    if (!table || table->empty()) // as in an open bracket at the text's end
        return {};
    const std::size_t cut = tokens[*from].begin;
    return OneTableQuery{std::string(sql.substr(0, cut)), std::string(sql.substr(cut)), *table};
}

std::string NormaliseSql(std::string_view sql) {
    std::string text;
    for (const Token& token : Tokenizer(sql).Run()) {
        if (!text.empty())
            text += ' ';
        text += token.kind == TokenKind::String       ? "'" + token.text + "'"
                : token.kind == TokenKind::QuotedName ? QuoteName(token.text)
                                                      : token.text;
    }
    return text;
}

std::string QuoteName(std::string_view name) {
    std::string quoted = "\"";
    for (const char ch : name)
        quoted.append(ch == '"' ? 2 : 1, ch);
    return quoted + '"';
}

} // namespace vnquery

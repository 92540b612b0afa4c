#include "vnquery/sources/OneTableQuery.h"

#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/SqlLexer.h"

#include <algorithm>
#include <array>
#include <vector>

namespace vnquery {

namespace {

/// A token without what SQL text may leave out: comments, and the case of words.
struct Token {
    SqlToken token;
    std::string text; ///< a word in upper case
};

std::vector<Token> TokensOf(std::string_view sql) {
    std::vector<Token> tokens;
    for (SqlToken& token : LexSql(sql, SqlServer::Sqlite))
        if (token.kind != SqlTokenKind::Comment) {
            const std::string_view text = token.In(sql);
            const bool isWord = token.kind == SqlTokenKind::Word;
            tokens.push_back({std::move(token), isWord ? ToUpper(text) : std::string(text)});
        }
    return tokens;
}

bool IsWord(const Token& token, std::string_view word) {
    return token.token.kind == SqlTokenKind::Word && token.text == word;
}

bool IsSymbol(const Token& token, std::string_view symbol) {
    return token.token.kind == SqlTokenKind::Symbol && token.text == symbol;
}

/// Words that show, or may show, that the rows of the result are not those of the table.
bool IsForbidden(const Token& token) {
    constexpr std::array<std::string_view, 11> kWords = {"JOIN",   "UNION",  "INTERSECT", "EXCEPT",
                                                         "WITH",   "VALUES", "DISTINCT",  "GROUP",
                                                         "HAVING", "WINDOW", "OVER"};
    return token.token.kind == SqlTokenKind::Word &&
           std::ranges::find(kWords, token.text) != kWords.end();
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
    if (name >= tokens.size() || !IsName(tokens[name].token))
        return {};
    for (std::size_t i = name + 1; i < tokens.size(); ++i) {
        if (IsWord(tokens[i], "WHERE") || IsWord(tokens[i], "ORDER") || IsWord(tokens[i], "LIMIT"))
            break;
        if (IsSymbol(tokens[i], ",") || IsSymbol(tokens[i], "("))
            return {};
    }
    return NameOf(sql, tokens[name].token);
}

} // namespace

std::optional<OneTableQuery> ParseOneTableQuery(std::string_view sql) {
    std::vector<Token> tokens = TokensOf(sql);
    while (!tokens.empty() && IsSymbol(tokens.back(), ";")) {
        sql = sql.substr(0, tokens.back().token.begin);
        tokens.pop_back();
    }
    const std::optional<std::size_t> from = FindFrom(tokens);
    if (!from)
        return {};
    const std::optional<std::string> table = FindTable(tokens, *from, sql);
    if (!table || table->empty()) // as in an open bracket at the text's end
        return {};
    const std::size_t cut = tokens[*from].token.begin;
    return OneTableQuery{std::string(sql.substr(0, cut)), std::string(sql.substr(cut)), *table};
}

std::string NormaliseSql(std::string_view sql) {
    std::string text;
    for (const Token& token : TokensOf(sql)) {
        if (!text.empty())
            text += ' ';
        text += token.text;
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

#include "vnquery/sources/SqlFormat.h"

#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/SqlWords.h"

#include <algorithm>
#include <array>

namespace vnquery {

namespace {

constexpr std::size_t kStep = 4;

template <std::size_t Count>
bool IsOneOf(const std::array<std::string_view, Count>& words, std::string_view word) {
    return std::ranges::find(words, word) != words.end();
}

constexpr std::array<std::string_view, 14> kClauses = {
    "SELECT", "FROM",   "WHERE",     "HAVING", "LIMIT", "OFFSET", "UNION",
    "EXCEPT", "VALUES", "INTERSECT", "WINDOW", "SET",   "JOIN",   "RETURNING"};
/// Begin a clause together with the word that follows.
constexpr std::array<std::string_view, 6> kJoins = {"LEFT",  "RIGHT", "FULL",
                                                    "INNER", "CROSS", "NATURAL"};

class Formatter {
public:
    Formatter(std::string_view sql, SqlServer server)
        : m_sql(sql), m_tokens(LexSql(sql, server)), m_words(m_tokens.size()) {
        for (std::size_t at = 0; at < m_tokens.size(); ++at)
            if (m_tokens[at].kind == SqlTokenKind::Word && !IsPartOfName(at))
                m_words[at] = ToUpper(m_tokens[at].In(sql));
            else if (m_tokens[at].kind == SqlTokenKind::Symbol)
                m_words[at] = m_tokens[at].In(sql);
    }

    std::string Run() {
        std::size_t end = 0;
        for (std::size_t at = 0; at < m_tokens.size(); ++at) {
            const SqlToken& token = m_tokens[at];
            if (m_words[at] == ")" && m_depths.size() > 1)
                m_depths.pop_back();
            const std::string_view gap = m_sql.substr(end, token.begin - end);
            if (at > 0)
                m_text += Gap(at, gap);
            m_text += IsSqlWord(m_words[at]) ? m_words[at] : std::string(token.In(m_sql));
            if (m_words[at] == "(")
                m_depths.push_back(OpensQuery(at) ? Depth() + 1 : -Depth());
            else if (m_words[at] == ";")
                m_depths = {1};
            m_isFirst = m_words[at] == ";" || (m_isFirst && token.kind == SqlTokenKind::Comment);
            end = token.end;
        }
        if (!m_tokens.empty() && m_sql.substr(end).find('\n') != std::string_view::npos)
            m_text += '\n';
        return m_text;
    }

private:
    std::string_view Word(std::size_t at) const {
        return at < m_words.size() ? std::string_view(m_words[at]) : std::string_view();
    }
    /// Around "." and in parameters and variables words are names.
    bool IsPartOfName(std::size_t at) const {
        if (at + 1 < m_tokens.size() && m_tokens[at + 1].In(m_sql) == ".")
            return true;
        if (at == 0 || m_tokens[at - 1].kind != SqlTokenKind::Symbol)
            return false;
        const char before = m_sql[m_tokens[at - 1].begin];
        return before == '.' || (m_tokens[at - 1].end == m_tokens[at].begin &&
                                 std::string_view(":&@$#").find(before) != std::string_view::npos);
    }
    bool OpensQuery(std::size_t at) const {
        return Word(at + 1) == "SELECT" || Word(at + 1) == "WITH" || Word(at + 1) == "VALUES";
    }
    int Depth() const { return std::abs(m_depths.back()); }
    bool BeginsClause(std::size_t at) const {
        const std::string_view word = Word(at);
        const std::string_view before = Word(at - 1);
        // A line break after "--" would make a comment of it for some servers.
        if (m_depths.back() < 0 || before == "(" || before == "-")
            return false;
        if (word == "FROM")
            return before != "DELETE" && before != "DISTINCT";
        if (word == "VALUES") // not the function of that name
            return before != "=" && before != ",";
        if (word == "JOIN")
            return !IsOneOf(kJoins, before) && before != "OUTER";
        if (word == "GROUP" || word == "ORDER")
            return Word(at + 1) == "BY";
        if (IsOneOf(kJoins, word))
            return before != "NATURAL" && (Word(at + 1) == "JOIN" || Word(at + 1) == "OUTER" ||
                                           (word == "NATURAL" && IsOneOf(kJoins, Word(at + 1))));
        return IsOneOf(kClauses, word);
    }
    std::string Gap(std::size_t at, std::string_view gap) const {
        const auto breaks = std::ranges::count(gap, '\n');
        const bool isComment = m_tokens[at].kind == SqlTokenKind::Comment;
        if (Word(at - 1) == ";" && !(isComment && breaks == 0))
            return breaks > 1 ? "\n\n" : "\n";
        const bool isClause = !isComment && BeginsClause(at);
        const bool isLess =
            isClause || isComment || m_isFirst || Word(at) == ")" || Word(at) == ";";
        std::string indent(kStep * static_cast<std::size_t>(Depth() - (isLess ? 1 : 0)), ' ');
        if (EndsLine(at - 1))
            return indent;
        if (isClause || breaks > 0)
            return "\n" + indent;
        return gap.empty() ? "" : " ";
    }
    /// A comment up to the end of its line, which belongs to it.
    bool EndsLine(std::size_t at) const {
        return m_tokens[at].kind == SqlTokenKind::Comment && m_sql[m_tokens[at].end - 1] == '\n';
    }

    std::string_view m_sql;
    std::vector<SqlToken> m_tokens;
    std::vector<std::string> m_words; ///< of words and symbols, in upper case
    /// Of the open parentheses: how many of them hold queries, and one; negative in one that does
    /// not.
    std::vector<int> m_depths = {1};
    bool m_isFirst = true; ///< no token of the statement yet
    std::string m_text;
};

} // namespace

std::string FormatSql(std::string_view sql, SqlServer server) {
    return Formatter(sql, server).Run();
}

std::string ToggleSqlComment(std::string_view lines) {
    std::vector<std::string> all;
    bool isCommented = true;
    for (std::size_t at = 0; at <= lines.size();) {
        const std::size_t end = std::min(lines.find('\n', at), lines.size());
        const std::string& line = all.emplace_back(lines.substr(at, end - at));
        const std::size_t first = line.find_first_not_of(" \t");
        isCommented &= first == std::string::npos || line.compare(first, 2, "--") == 0;
        at = end + 1;
    }
    std::string text;
    for (std::string& line : all) {
        const std::size_t first = line.find_first_not_of(" \t");
        if (first != std::string::npos && isCommented)
            line.erase(first, line.compare(first, 3, "-- ") == 0 ? 3 : 2);
        else if (first != std::string::npos)
            line.insert(0, "-- ");
        text += (&line == all.data() ? "" : "\n") + line;
    }
    return text;
}

} // namespace vnquery

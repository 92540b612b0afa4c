#include "vnquery/sources/SqlCompletion.h"

#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/SqlWords.h"

#include <algorithm>
#include <set>

namespace vnquery {

namespace {

bool BeginsWith(std::string_view name, std::string_view upperBegin) {
    return name.size() >= upperBegin.size() &&
           std::ranges::equal(name.substr(0, upperBegin.size()), upperBegin, {},
                              [](char ch) { return ToUpper(ch); });
}

/// The tokens of the statement that the cursor is in, up to its semicolon.
std::span<const SqlToken> StatementAt(std::string_view sql, std::span<const SqlToken> tokens,
                                      std::size_t at) {
    std::size_t first = 0;
    std::size_t last = 0;
    for (; last < tokens.size(); ++last) {
        if (tokens[last].In(sql) != ";")
            continue;
        if (tokens[last].begin >= at)
            break;
        first = last + 1;
    }
    return tokens.subspan(first, last - first);
}

} // namespace

SqlCompletion::SqlCompletion(std::shared_ptr<const Catalog> catalog)
    : m_catalog(std::move(catalog)) {
    if (!m_catalog)
        return;
    for (const CatalogTable& table : m_catalog->tables) {
        m_byName[ToUpper(table.name)].push_back(&table);
        if (!table.schema.empty())
            m_bySchema[ToUpper(table.schema)].push_back(&table);
    }
}

std::map<std::string, SqlCompletion::Tables>
SqlCompletion::NamedTables(std::string_view sql, std::span<const SqlToken> tokens) const {
    std::map<std::string, Tables> named;
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        const auto isPoint = [&](std::size_t where) {
            return where < tokens.size() && tokens[where].In(sql) == ".";
        };
        if (!IsName(tokens[at]) || isPoint(at + 1)) // a schema, or the table of a column
            continue;
        const std::string name = ToUpper(NameOf(sql, tokens[at]));
        const auto found = m_byName.find(name);
        if (found == m_byName.end())
            continue;
        Tables tables = found->second;
        if (at > 1 && isPoint(at - 1)) {
            const std::string schema = ToUpper(NameOf(sql, tokens[at - 2]));
            std::erase_if(tables, [&](const CatalogTable* table) {
                return ToUpper(table->schema) != schema;
            });
        } else if (std::ranges::any_of(tables, [](auto* table) { return !table->needsSchema; })) {
            std::erase_if(tables, [](const CatalogTable* table) { return table->needsSchema; });
        }
        std::size_t alias = at + 1;
        if (alias < tokens.size() && ToUpper(tokens[alias].In(sql)) == "AS")
            ++alias;
        const bool hasAlias = alias < tokens.size() && IsName(tokens[alias]) &&
                              !IsSqlWord(ToUpper(tokens[alias].In(sql)));
        named[hasAlias ? ToUpper(NameOf(sql, tokens[alias])) : name] = std::move(tables);
    }
    return named;
}

SqlCompletion::Answer SqlCompletion::Find(std::string_view sql, std::size_t at) const {
    Answer answer{at, {}, false};
    const std::vector<SqlToken> all = LexSql(sql, Server());
    std::size_t next = 0; // the token that the cursor is not behind
    while (next < all.size() && all[next].end < at)
        ++next;
    if (next < all.size() && all[next].begin < at) {
        if (all[next].kind == SqlTokenKind::Word)
            answer.begin = all[next].begin;
        else if (all[next].kind == SqlTokenKind::Symbol)
            ++next;
        else if (all[next].end > at || all[next].IsOpen() ||
                 all[next].kind != SqlTokenKind::QuotedName)
            return answer;
    }
    const std::string begin = ToUpper(sql.substr(answer.begin, at - answer.begin));
    std::set<std::string> words;
    const auto add = [&](const std::string& name, const std::string& text) {
        if (words.size() < kMost && BeginsWith(name, begin))
            words.insert(text);
    };
    const auto addColumns = [&](const Tables& tables) {
        for (const CatalogTable* table : tables)
            for (const CatalogColumn& column : table->columns)
                add(column.name, SqlName(column.name, Server()));
    };
    const auto flush = [&] {
        for (const std::string& word : words)
            if (answer.words.size() < kMost &&
                std::ranges::find(answer.words, word) == answer.words.end())
                answer.words.push_back(word);
        words.clear();
    };
    std::map<std::string, Tables> named = NamedTables(sql, StatementAt(sql, all, at));
    answer.isAfterPoint = next > 0 && all[next - 1].In(sql) == ".";
    if (answer.isAfterPoint && next > 1 && IsName(all[next - 2])) {
        const std::string owner = ToUpper(NameOf(sql, all[next - 2]));
        if (const auto found = named.find(owner); found != named.end())
            addColumns(found->second);
        else if (const auto schema = m_bySchema.find(owner); schema != m_bySchema.end())
            for (const CatalogTable* table : schema->second)
                add(table->name, SqlName(table->name, Server()));
        else if (const auto table = m_byName.find(owner); table != m_byName.end())
            addColumns(table->second);
        flush();
    }
    if (answer.isAfterPoint)
        return answer;
    for (const auto& [name, tables] : named)
        addColumns(tables);
    flush();
    // The index is sorted: what begins so stands together.
    for (auto found = m_byName.lower_bound(begin);
         found != m_byName.end() && found->first.starts_with(begin) && words.size() < kMost;
         ++found)
        for (const CatalogTable* table : found->second)
            add(table->name, SqlName(*table, Server()));
    for (auto found = m_bySchema.lower_bound(begin);
         found != m_bySchema.end() && found->first.starts_with(begin); ++found)
        add(found->second.front()->schema, SqlName(found->second.front()->schema, Server()));
    flush();
    const bool isUpper = answer.begin < at && sql[answer.begin] == begin[0];
    for (const std::string_view word : SqlWords()) {
        std::string text(word);
        if (!isUpper)
            std::ranges::transform(text, text.begin(), [](char ch) {
                return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch - 'A' + 'a') : ch;
            });
        add(text, text);
    }
    flush();
    return answer;
}

} // namespace vnquery

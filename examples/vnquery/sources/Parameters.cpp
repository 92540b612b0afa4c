#include "vnquery/sources/Parameters.h"

#include "vnquery/result/AsciiUpper.h"

#include "vnbytstr/GlobalVars.h"

#include <algorithm>

namespace vnquery {

namespace {

/// Whether a colon or ampersand after this character is an operator.
bool BelongsToWord(char before) {
    return IsWordByte(before) || std::string_view(")]}'\"`:&[@").find(before) != std::string::npos;
}

} // namespace

void Parameters::AddGlobalVariables() {
    const CGlobalVars& globals = GetGlobals();
    for (int i = 1; i < globals.GetSize(); ++i) {
        CString name;
        CString value;
        if (globals.GetGlobalVariable(i, name, value) == CGlobalVars::Success)
            variables.emplace(std::string(name),
                              std::string(value, static_cast<std::size_t>(value.GetLength())));
    }
}

std::vector<SqlName> FindNames(std::string_view sql, SqlServer server) {
    std::vector<SqlName> names;
    char sign = '\0'; // : or & at `begin`, if it may begin a name
    std::size_t begin = 0;
    for (const SqlToken& token : LexSql(sql, server)) {
        if (token.kind == SqlTokenKind::Word && sign != '\0' && token.begin == begin + 1) {
            const std::string_view word = token.In(sql);
            names.push_back(
                {begin, token.end, sign == '&', sign == '&' ? ToUpper(word) : std::string(word)});
        }
        begin = token.begin;
        const std::string_view text = token.In(sql);
        const bool isSign = text == ":" || text == "&";
        sign = isSign && (begin == 0 || !BelongsToWord(sql[begin - 1])) ? text[0] : '\0';
    }
    return names;
}

std::vector<SqlName> FindMissing(std::string_view sql, SqlServer server,
                                 const Parameters& parameters) {
    std::vector<SqlName> missing;
    for (SqlName& name : FindNames(sql, server)) {
        const bool isKnown = name.isVariable ? parameters.variables.contains(name.name)
                                             : parameters.values.contains(name.name);
        const bool isNoted = std::ranges::any_of(missing, [&](const SqlName& other) {
            return other.name == name.name && other.isVariable == name.isVariable;
        });
        if (!isKnown && !isNoted)
            missing.push_back(std::move(name));
    }
    return missing;
}

SqlText::SqlText(std::string_view sql, SqlServer server, const Parameters& parameters, bool marks) {
    std::size_t done = 0;
    m_pieces.push_back({0, 0, false});
    for (const SqlName& name : FindNames(sql, server)) {
        const auto variable = parameters.variables.find(name.name);
        const auto value = parameters.values.find(name.name);
        if (name.isVariable ? variable == parameters.variables.end()
                            : !marks || value == parameters.values.end())
            continue;
        m_text += sql.substr(done, name.begin - done);
        m_pieces.push_back({m_text.size(), name.begin, true});
        m_text += name.isVariable ? variable->second : "?";
        if (!name.isVariable)
            m_values.push_back(value->second);
        m_pieces.push_back({m_text.size(), name.end, false});
        done = name.end;
    }
    m_text += sql.substr(done);
}

std::size_t SqlText::ToOriginal(std::size_t offset) const {
    const auto after = std::ranges::upper_bound(m_pieces, offset, {}, &Piece::begin);
    const Piece& piece = *std::prev(after);
    return piece.original + (piece.isReplaced ? 0 : offset - piece.begin);
}

} // namespace vnquery

#include "src/lists/CellCondition.h"

#include "src/charset/Collation.h"
#include "src/framework/AsciiCase.h"

#include <algorithm>

namespace vnbytstr::detail {
namespace {

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    // Blanks in a text in quotes count, also while the closing one is missing.
    const bool isOpen = !text.empty() && text.front() == '"' && text.find('"', 1) == text.npos;
    while (!isOpen && !text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

/// A text in double quotes without them; the closing one may be missing while it is typed.
std::string_view Unquoted(std::string_view text) {
    if (text.empty() || text.front() != '"')
        return text;
    text.remove_prefix(1);
    if (!text.empty() && text.back() == '"')
        text.remove_suffix(1);
    return text;
}

/// An ASCII word in either case, blanks between its parts.
bool IsWord(std::string_view text, std::string_view word) {
    std::string joined;
    for (const char ch : text)
        if (ch != ' ')
            joined += AsciiLower(ch);
    return joined == word;
}

/// Where two points stand outside of quotes.
std::size_t FindPoints(std::string_view text) {
    bool isQuoted = false;
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        isQuoted = isQuoted != (text[i] == '"');
        if (!isQuoted && text[i] == '.' && text[i + 1] == '.')
            return i;
    }
    return std::string_view::npos;
}

thread_local std::string keyBuffer;

} // namespace

CellCondition::CellCondition(std::string_view typed, bool isNumber, std::string_view nullText)
    : m_typed(typed), m_null(nullText), m_isNumber(isNumber) {
    Parse(Trimmed(m_typed));
}

void CellCondition::Parse(std::string_view typed) {
    if (typed.empty())
        return;
    if (IsWord(typed, "null") || IsWord(typed, "isnull") || IsWord(typed, "=null")) {
        m_kind = Kind::Null;
    } else if (IsWord(typed, "notnull") || IsWord(typed, "isnotnull") || IsWord(typed, "<>null") ||
               IsWord(typed, "!=null")) {
        m_kind = Kind::NotNull;
    } else if (typed.front() != '"' && (typed.front() == '=' || typed.front() == '<' ||
                                        typed.front() == '>' || typed.substr(0, 2) == "!=")) {
        if (!ParseComparison(typed))
            m_kind = Kind::Nothing;
    } else if (FindPoints(typed) != std::string_view::npos) {
        if (!ParseRange(typed))
            m_kind = Kind::Nothing;
    } else {
        const std::string_view text = Unquoted(typed);
        if (text.empty())
            return;
        m_contained.emplace(text);
        m_kind = Kind::Contains;
    }
}

bool CellCondition::ParseComparison(std::string_view typed) {
    const std::size_t length = typed.substr(0, 2) == "<=" || typed.substr(0, 2) == ">=" ||
                                       typed.substr(0, 2) == "<>" || typed.substr(0, 2) == "!="
                                   ? 2
                                   : 1;
    const std::string_view sign = typed.substr(0, length);
    const std::string_view operand = Trimmed(typed.substr(length));
    if (operand.empty())
        return false;
    m_kind = sign == "<>" || sign == "!=" ? Kind::NotEqual : Kind::Range;
    const bool isIncluded = sign != "<" && sign != ">";
    if (sign.front() != '<' || sign == "<>") // = > >= <> !=
        if (!SetBound(m_low, operand, isIncluded))
            return false;
    return sign.front() == '>' || SetBound(m_high, operand, isIncluded);
}

bool CellCondition::ParseRange(std::string_view typed) {
    const std::size_t points = FindPoints(typed);
    const std::string_view low = Trimmed(typed.substr(0, points));
    const std::string_view high = Trimmed(typed.substr(points + 2));
    m_kind = Kind::Range;
    return (!low.empty() || !high.empty()) && (low.empty() || SetBound(m_low, low, true)) &&
           (high.empty() || SetBound(m_high, high, true));
}

bool CellCondition::SetBound(Bound& bound, std::string_view typed, bool isIncluded) {
    bound.isSet = true;
    bound.isIncluded = isIncluded;
    bound.text = Unquoted(typed);
    if (m_isNumber)
        return bound.number.Read(bound.text);
    Collation::Current().AppendKey(bound.text, bound.key);
    return true;
}

bool CellCondition::IsInRange(std::string_view text, bool& isComparable) const {
    const auto holds = [](const Bound& bound, int order) {
        return order == 0 ? bound.isIncluded : order > 0;
    };
    isComparable = true;
    if (m_isNumber) {
        NumberText number;
        isComparable = number.Read(text);
        return isComparable && (!m_low.isSet || holds(m_low, number.Compare(m_low.number))) &&
               (!m_high.isSet || holds(m_high, -number.Compare(m_high.number)));
    }
    keyBuffer.clear();
    Collation::Current().AppendKey(text, keyBuffer);
    return (!m_low.isSet || holds(m_low, keyBuffer.compare(m_low.key))) &&
           (!m_high.isSet || holds(m_high, -keyBuffer.compare(m_high.key)));
}

bool CellCondition::MatchesOther(std::string_view text, bool isNull) const {
    bool isComparable = false;
    switch (m_kind) {
    case Kind::Null:
        return isNull;
    case Kind::NotNull:
        return !isNull;
    case Kind::Range:
        return !isNull && IsInRange(text, isComparable);
    case Kind::NotEqual:
        return !isNull && !IsInRange(text, isComparable) && isComparable;
    default:
        return true;
    }
}

bool CellCondition::Narrows(const CellCondition& other) const {
    if (!other.IsValid())
        return true;
    if (m_kind != other.m_kind)
        return false;
    if (m_kind == Kind::Contains)
        return ContainedText(other.m_contained->Lower()).IsIn(m_contained->Lower());
    return m_isNumber == other.m_isNumber && m_typed == other.m_typed && m_null == other.m_null;
}

} // namespace vnbytstr::detail

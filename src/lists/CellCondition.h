// The condition of one column in a CRowFilter.
#pragma once

#include "src/lists/ContainedText.h"
#include "src/lists/NumberText.h"

#include <optional>
#include <string>
#include <string_view>

namespace vnbytstr::detail {

/// Made of what was typed; immutable. CRowFilter's comment describes what may be typed.
class CellCondition {
public:
    CellCondition(std::string_view typed, bool isNumber, std::string_view nullText);
    CellCondition(const CellCondition&) = delete; // m_low and m_high refer to texts of the object
    CellCondition& operator=(const CellCondition&) = delete;

    /// False when it is not complete or compares a number with something else; matches all then.
    bool IsValid() const { return m_kind != Kind::Nothing; }
    bool Matches(std::string_view text) const {
        return Matches(text, m_kind != Kind::Contains && !m_null.empty() && text == m_null);
    }
    /// Null may be any text.
    bool Matches(std::string_view text, bool isNull) const {
        return m_kind == Kind::Contains ? m_contained->IsIn(text) : MatchesOther(text, isNull);
    }
    bool AsksForNull() const { return m_kind != Kind::Contains && m_kind != Kind::Nothing; }
    /// Whether each text that matches this is known to match `other`.
    bool Narrows(const CellCondition& other) const;

private:
    enum class Kind { Nothing, Contains, Range, NotEqual, Null, NotNull };
    /// One end of a range.
    struct Bound {
        bool isSet = false;
        bool isIncluded = false;
        std::string text;  ///< as typed
        std::string key;   ///< for texts: the collation key
        NumberText number; ///< for numbers; refers to `text`
    };

    void Parse(std::string_view typed);
    bool ParseComparison(std::string_view typed);
    bool ParseRange(std::string_view typed);
    bool SetBound(Bound& bound, std::string_view typed, bool isIncluded);
    bool MatchesOther(std::string_view text, bool isNull) const;
    bool IsInRange(std::string_view text, bool& isComparable) const;

    std::string m_typed;
    std::string m_null;
    bool m_isNumber;
    Kind m_kind = Kind::Nothing;
    std::optional<ContainedText> m_contained;
    Bound m_low;
    Bound m_high;
};

} // namespace vnbytstr::detail

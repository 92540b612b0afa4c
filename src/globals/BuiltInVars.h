// The built-in variables: names, defaults, what values they take.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <string>
#include <string_view>

namespace vnbytstr {
class Collation;
}

namespace vnbytstr::detail {

/// What values a variable takes.
struct VariableRule {
    enum class Kind : unsigned char { AnyText, NonEmpty, OneCharacter, Number };
    Kind kind = Kind::AnyText;
    LONG least = 0, most = 0; ///< of a number

    /// -1 when the value fits; else the index of the first byte that does not, 0 for the whole.
    int FirstMisfit(std::string_view value) const;
};

struct BuiltInVar {
    const char* name;
    const char* value; ///< the default, null when it is made at start-up
    VariableRule rule;
    bool isKept = false;        ///< in the profile
    bool isProgramOnly = false; ///< the user does not set it
};

/// Entries of the table with the placeholder at 0, so that the ids are the indexes.
inline constexpr int kBuiltInCount = 60;

/// The built-in variable of an id; null for the placeholder's and for unknown ids.
const BuiltInVar* FindBuiltIn(int id) noexcept;

/// Appends a name's key: equal names have equal keys. They are upper-cased in ASCII first: to
/// the rules of Turkish and Azeri i and I are two letters, to variables they are not.
void AppendNameKey(const Collation& collation, std::string_view name, std::string& key);

/// What a name denotes by the system locale's rules.
struct KnownName {
    int id = 0; ///< of a built-in variable
    bool isReserved = false;
};
KnownName FindKnownName(std::string_view name);

} // namespace vnbytstr::detail

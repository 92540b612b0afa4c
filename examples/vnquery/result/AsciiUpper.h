// Upper case for SQL words and keys, whatever the locale: only a to z have one.
#pragma once

#include <string>
#include <string_view>

namespace vnquery {

constexpr char ToUpper(char ch) {
    return ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
}

inline std::string ToUpper(std::string_view text) {
    std::string upper(text);
    for (char& ch : upper)
        ch = ToUpper(ch);
    return upper;
}

} // namespace vnquery

// Letters of ASCII in lower case.
#pragma once

#include <array>
#include <cstddef>

namespace vnbytstr::detail {

/// A table, since a comparison of each byte with 'A' and 'Z' costs branches.
inline constexpr std::array<char, 256> kAsciiLower = [] {
    std::array<char, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<char>(i >= 'A' && i <= 'Z' ? i - 'A' + 'a' : i);
    return table;
}();

/// Any other byte is itself.
constexpr char AsciiLower(char ch) { return kAsciiLower[static_cast<unsigned char>(ch)]; }

} // namespace vnbytstr::detail

// The order in which a list's rows stand after a sort by one column.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {

/// The number a text begins with, as strtol with base 10 reads it: white space, a sign, digits; 0
/// when there are none; the nearest 64-bit number when it is beyond those.
std::int64_t LeadingInteger(std::string_view text);

/// For each place after the sort, the index before it. Equal values keep their order; descending is
/// ascending reversed, equal values included.
std::vector<std::uint32_t> IntegerOrder(std::span<const std::string_view> texts, bool descending);

/// The same for texts in the order of the language, differences of case, kana type and width
/// ignored.
std::vector<std::uint32_t> TextOrder(std::span<const std::string_view> texts, bool descending);

} // namespace vnbytstr::detail

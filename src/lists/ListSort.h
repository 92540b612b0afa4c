// The order in which a list's rows stand after a sort by a column of integers. They are read with
// 64 bits, since a database's are as wide. Texts are ordered by src/charset/SortOrder.h.
#pragma once

#include "vnbytstr/framework/Types.h"

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
std::vector<DWORD> IntegerOrder(std::span<const std::string_view> texts, bool descending);

} // namespace vnbytstr::detail

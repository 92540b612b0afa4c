// The order of a list's rows after a sort by a column of integers, which are read with 64 bits like
// those of databases. src/charset/SortOrder.h orders texts.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {

/// The number at the start of a text, as strtol with base 10 reads it: white space, a sign, digits;
/// 0 without digits; the nearest 64-bit number when out of range.
std::int64_t LeadingInteger(std::string_view text);

/// For each position after the sort, the index before it. Equal values keep their order; a
/// descending sort is the exact reverse of an ascending one.
std::vector<DWORD> IntegerOrder(std::span<const std::string_view> texts, bool descending);

} // namespace vnbytstr::detail

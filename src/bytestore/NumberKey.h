// Keys of numbers, whichever form they come in: see RowSortKey.h. Equal numbers have equal keys,
// without rounding.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <string>
#include <string_view>

namespace vnbytstr::detail {

void AppendIntegerKey(LONGLONG value, std::string& key);
void AppendRealKey(double value, std::string& key);
/// Blanks around it, a sign, digits with at most one point, perhaps an exponent. Anything else has
/// the key of a NaN, after those of all numbers.
void AppendDecimalKey(std::string_view text, std::string& key);

} // namespace vnbytstr::detail

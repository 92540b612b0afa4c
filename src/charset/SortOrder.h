// The order of many texts, as a permutation: which of them stands first, second and so on.
//
// Sorting is stable: texts that are equal keep their order. A descending order is the ascending one
// reversed, so equal texts come in the reverse of their order.
#pragma once

#include "src/charset/Collation.h"

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Types.h"

#include <span>
#include <string_view>
#include <vector>

namespace vnbytstr {

enum class SortDirection { Ascending, Descending };

/// Indexes into `keys` in the order of the keys. At most 0xFFFFFFFF of them (std::length_error).
VNBYTSTR_API std::vector<DWORD> SortOrder(const CollationKeys& keys, SortDirection direction);

/// The same for texts, by the rules of the system's locale: ignoring case, kana type and width.
VNBYTSTR_API std::vector<DWORD> SortOrder(std::span<const std::string_view> texts,
                                          SortDirection direction);

} // namespace vnbytstr

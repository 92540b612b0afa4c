// Counting the characters of long texts.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace vnbytstr::detail {

/// What one run of a counter did.
struct CharCountStep {
    std::size_t bytes = 0; ///< of the text's beginning; the next character starts after them
    std::size_t chars = 0; ///< in these bytes
};

/// The lead bytes of a double-byte page, all of them 0x80 or more: bit h of the entry n says that
/// 0x80 + 16 * h + n is one.
using LeadRows = std::array<BYTE, 16>;

/// Counts the characters of a double-byte page as far as whole vectors reach; the caller counts the
/// rest. Nothing at all where the machine has no fast way.
CharCountStep CountDoubleByte(std::string_view text, const LeadRows& leads) noexcept;

/// As CountDoubleByte for UTF-8; also stops before the first vector with a broken sequence.
CharCountStep CountUtf8(std::string_view text) noexcept;

} // namespace vnbytstr::detail

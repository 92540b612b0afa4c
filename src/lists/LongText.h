// How much of long texts is drawn and measured.
#pragma once

#include <cstddef>
#include <string_view>

namespace vnbytstr::detail {

/// Of lists with more rows only the visible rows and this number of others are measured.
inline constexpr int kMaxMeasuredRows = 1000;
inline constexpr int kMaxVisibleRows = 100; ///< as many as a screen shows

/// The values of rows longer than this are cut before they are drawn.
inline constexpr std::size_t kLongRow = 32 * 1024;
inline constexpr std::size_t kMaxDrawnBytes = 8 * 1024;

/// The start of a text, cut between characters.
std::string_view Beginning(std::string_view text, std::size_t bytes);

} // namespace vnbytstr::detail

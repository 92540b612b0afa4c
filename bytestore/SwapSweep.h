// Clears away the swap files that crashed processes left behind.
#pragma once

#include <optional>
#include <string_view>

#include "platform/framework/Types.h"

namespace vnbytstr::detail {

/// Prefix of the swap files' names, as GenerateTempFileName takes it.
inline constexpr const char* kSwapPrefix = "dat";
/// The same for the shifted image that takes a swap file's name.
inline constexpr const char* kShiftedPrefix = "sft";

/// The process number in a swap file's name ("~dat-1234-0.tmp", without folder); nothing for any
/// other name.
std::optional<DWORD> OwnerOfSwapFile(std::string_view name) noexcept;

/// Removes the swap files in the temporary folder whose owner is dead: files of this user, still
/// marked as scratch, whose lock nobody holds. Never one that is in use or was kept. Reports
/// nothing.
void SweepSwapFiles();

/// SweepSwapFiles, on the first call of the process only.
void SweepSwapFilesOnce();

} // namespace vnbytstr::detail

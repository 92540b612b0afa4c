// Memory straight from the system, for those who cut it up themselves.
#pragma once

#include "../framework/Export.h"

#include <cstddef>

namespace vnbytstr {

/// Zeroed pages at an address that is a multiple of 2 MiB, in large pages where the system has
/// them: they cost a fraction of what many small ones do, at first use and when they are given
/// back. `size` is a multiple of 2 MiB. Null when there is no more.
VNBYTSTR_API void* AllocateRegion(std::size_t size) noexcept;
/// Gives back what AllocateRegion gave, with the same size.
VNBYTSTR_API void FreeRegion(void* region, std::size_t size) noexcept;

} // namespace vnbytstr

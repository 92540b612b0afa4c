// Memory straight from the system, for those who cut it up themselves.
#pragma once

#include "vnbytstr/framework/Export.h"

#include <cstddef>

namespace vnbytstr {

/// Zeroed pages; `size` is a multiple of 4096. Null when there is no more.
VNBYTSTR_API void* AllocateRegion(std::size_t size) noexcept;
/// Gives back what AllocateRegion gave, with the same size.
VNBYTSTR_API void FreeRegion(void* region, std::size_t size) noexcept;

} // namespace vnbytstr

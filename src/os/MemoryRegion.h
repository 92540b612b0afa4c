// Memory straight from the system, for memory managers.
#pragma once

#include "vnbytstr/framework/Export.h"

#include <cstddef>

namespace vnbytstr {

/// Zeroed pages; `size` is a multiple of 4096. Null when memory runs out.
VNBYTSTR_API void* AllocateRegion(std::size_t size) noexcept;
/// Frees what AllocateRegion returned, with the same size.
VNBYTSTR_API void FreeRegion(void* region, std::size_t size) noexcept;

} // namespace vnbytstr

// CRC-32C (Castagnoli): the checksum of RFC 3720, appendix B.4, and of most storage engines. It
// finds bytes that changed by accident; it is no protection against anyone who means it.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Types.h"

#include <cstddef>
#include <span>

namespace vnbytstr {

/// The checksum of `bytes`, by the processor's own instruction where it has one. With the checksum
/// of what comes before as `before`, that of both together.
VNBYTSTR_API DWORD Crc32c(std::span<const BYTE> bytes, DWORD before = 0) noexcept;

} // namespace vnbytstr

// Numbers as bytes, the most significant first.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <array>
#include <cstddef>

namespace vnbytstr::detail {

template <std::size_t Width>
ULONGLONG FromBigEndian(const std::array<BYTE, Width>& bytes) {
    ULONGLONG value = 0;
    for (BYTE byte : bytes)
        value = value << 8 | byte;
    return value;
}

/// The low Width bytes of the value.
template <std::size_t Width>
std::array<BYTE, Width> ToBigEndian(ULONGLONG value) {
    std::array<BYTE, Width> bytes;
    for (std::size_t i = Width; i-- > 0; value >>= 8)
        bytes[i] = static_cast<BYTE>(value);
    return bytes;
}

} // namespace vnbytstr::detail

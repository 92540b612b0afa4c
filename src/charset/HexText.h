// Bytes as hexadecimal digits, and back.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <cstddef>
#include <span>

namespace vnbytstr::detail {

enum class HexCase { Upper, Lower };

/// Writes two digits per byte, the high nibble first, to `out` (2 * bytes.size() characters, no
/// NUL).
void EncodeHex(std::span<const BYTE> bytes, char* out, HexCase digits = HexCase::Upper) noexcept;

/// As EncodeHex with one blank between the pairs, none after the last. Writes 3 * bytes.size() - 1
/// characters, for no bytes none.
void EncodeHexSpaced(std::span<const BYTE> bytes, char* out,
                     HexCase digits = HexCase::Upper) noexcept;

/// Where a run of DecodeHex came to a stop.
struct HexDecoded {
    std::size_t consumed = 0; ///< characters of the text; the next run starts after them
    std::size_t produced = 0; ///< bytes written
    bool ended = false;       ///< nothing more can come of this text
};

/// Reads pairs of hex digits (0-9, A-F, a-f; the high nibble first) and writes a byte for each, at
/// most `outCapacity`. Blanks (0x20) before a pair are skipped. The first character that is not a
/// hex digit ends the text, be it a NUL, a blank between the digits of a pair or anything else, as
/// does the text's length; a lone first digit is dropped. When the capacity stops it, `ended` is
/// false and the caller goes on with the rest of the text.
HexDecoded DecodeHex(const char* text, std::size_t textLength, BYTE* out,
                     std::size_t outCapacity) noexcept;

} // namespace vnbytstr::detail

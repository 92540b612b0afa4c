// Bytes as lines of hexadecimal digits with offsets and characters.
#pragma once

#include "vnquery/result/Value.h"

#include <string>

namespace vnquery {

/// Lines such as
///     0000A0  89 50 4E 47 0D 0A 1A 0A  00 00 00 0D 49 48 44 52  .PNG........IHDR
/// Offsets have as many digits as the longest one needs, at least six. Bytes that are not printable
/// ASCII show as dots. Only the bytes asked for are read, also from a value in a swap file.
class HexDump {
public:
    static constexpr DWORD kBytesPerLine = 16;

    explicit HexDump(const Value& value);
    DWORD GetLineCount() const {
        return m_length / kBytesPerLine + (m_length % kBytesPerLine ? 1 : 0);
    }
    /// Line from 0; "" past the end.
    std::string GetLine(DWORD line) const;
    /// Lines from `first` on, at most `count`, each ended by CR LF.
    std::string GetLines(DWORD first, DWORD count) const;

private:
    std::string Format(DWORD offset, std::span<const BYTE> bytes) const;

    const Value& m_value;
    DWORD m_length;
    int m_digits;
};

} // namespace vnquery

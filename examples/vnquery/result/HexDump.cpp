#include "vnquery/result/HexDump.h"

#include <algorithm>
#include <cstdio>

namespace vnquery {

namespace {

constexpr int kMinDigits = 6;

int DigitsOf(DWORD offset) {
    int digits = 0;
    for (; offset > 0; offset >>= 4)
        ++digits;
    return std::max(digits, kMinDigits);
}

} // namespace

HexDump::HexDump(const Value& value)
    : m_value(value), m_length(value.GetLength()), m_digits(DigitsOf(m_length)) {}

std::string HexDump::Format(DWORD offset, std::span<const BYTE> bytes) const {
    char text[4 * kBytesPerLine + 32];
    std::snprintf(text, sizeof text, "%0*lX ", m_digits, static_cast<unsigned long>(offset));
    std::string line = text;
    for (DWORD i = 0; i < kBytesPerLine; ++i) {
        if (i == kBytesPerLine / 2)
            line += ' ';
        if (i < bytes.size())
            std::snprintf(text, sizeof text, " %02X", bytes[i]);
        line += i < bytes.size() ? text : "   ";
    }
    line += "  ";
    for (const BYTE byte : bytes)
        line += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
    return line;
}

std::string HexDump::GetLine(DWORD line) const {
    if (line >= GetLineCount())
        return {};
    const DWORD offset = line * kBytesPerLine;
    const std::string bytes = m_value.Read(offset, std::min(kBytesPerLine, m_length - offset));
    return Format(offset, {reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()});
}

std::string HexDump::GetLines(DWORD first, DWORD count) const {
    if (first >= GetLineCount())
        return {};
    count = std::min(count, GetLineCount() - first);
    const DWORD offset = first * kBytesPerLine;
    const DWORD length = static_cast<DWORD>(
        std::min<ULONGLONG>(ULONGLONG{count} * kBytesPerLine, m_length - offset));
    const std::string bytes = m_value.Read(offset, length);
    std::string lines;
    for (DWORD done = 0; done < length; done += kBytesPerLine)
        lines
            .append(Format(offset + done, {reinterpret_cast<const BYTE*>(bytes.data()) + done,
                                           std::min(kBytesPerLine, length - done)}))
            .append("\r\n");
    return lines;
}

} // namespace vnquery

#include "vnquery/sources/OdbcText.h"

#include "vnquery/result/Value.h"

#include <bit>

namespace vnquery {

namespace {

constexpr WORD kUtf8 = 1208;
constexpr WORD kUtf16 = std::endian::native == std::endian::little ? 1202 : 1200;
static_assert(sizeof(SQLWCHAR) == 2, "unixODBC hands out UTF-16");

bool IsHighSurrogate(SQLWCHAR unit) { return (unit & 0xFC00) == 0xD800; }

} // namespace

std::vector<SQLWCHAR> ToWide(std::string_view text) {
    CByteStream bytes(reinterpret_cast<const BYTE*>(text.data()), static_cast<DWORD>(text.size()));
    bytes.TranslateCCSID(kUtf8, kUtf16);
    std::vector<SQLWCHAR> wide(bytes.GetLength() / sizeof(SQLWCHAR) + 1);
    if (!bytes.IsEmpty())
        bytes.CopyTo(0, reinterpret_cast<BYTE*>(wide.data()), bytes.GetLength(), 0);
    return wide;
}

std::string FromWide(const SQLWCHAR* text, std::size_t count) {
    std::string decoded;
    ForEachPiece(WideTextDecoder().Decode(text, count, true), [&](std::span<const BYTE> piece) {
        decoded.append(reinterpret_cast<const char*>(piece.data()), piece.size());
    });
    return decoded;
}

CByteStream WideTextDecoder::Decode(const SQLWCHAR* text, std::size_t count, bool last) {
    m_left.insert(m_left.end(), text, text + count);
    std::size_t whole = m_left.size();
    if (!last && whole > 0 && IsHighSurrogate(m_left.back()))
        --whole;
    CByteStream decoded(reinterpret_cast<const BYTE*>(m_left.data()),
                        static_cast<DWORD>(whole * sizeof(SQLWCHAR)));
    if (whole > 0)
        decoded.TranslateCCSID(kUtf16, kUtf8);
    m_left.erase(m_left.begin(), m_left.begin() + static_cast<std::ptrdiff_t>(whole));
    return decoded;
}

} // namespace vnquery

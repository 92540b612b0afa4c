#include "vnquery/sources/OdbcText.h"

#include <bit>

namespace vnquery {

namespace {

constexpr WORD kUtf8 = 1208;
constexpr WORD kUtf16 = std::endian::native == std::endian::little ? 1202 : 1200;
static_assert(sizeof(SQLWCHAR) == 2, "unixODBC hands out UTF-16");

bool IsHighSurrogate(SQLWCHAR unit) { return (unit & 0xFC00) == 0xD800; }
bool IsLowSurrogate(SQLWCHAR unit) { return (unit & 0xFC00) == 0xDC00; }

/// A character that is not half a pair, else U+FFFD; `at` goes past it.
char32_t TakeCharacter(const SQLWCHAR*& at, const SQLWCHAR* end) {
    const SQLWCHAR unit = *at++;
    if ((unit & 0xF800) != 0xD800)
        return unit;
    if (!IsHighSurrogate(unit) || at == end || !IsLowSurrogate(*at))
        return 0xFFFD;
    return 0x10000 + ((static_cast<char32_t>(unit) & 0x3FF) << 10) + (*at++ & 0x3FF);
}

/// Writes a character beyond ASCII; returns the end.
char* PutCharacter(char32_t character, char* out) {
    const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
    if (character < 0x800) {
        put(0xC0 | character >> 6);
    } else {
        if (character < 0x10000) {
            put(0xE0 | character >> 12);
        } else {
            put(0xF0 | character >> 18);
            put(0x80 | (character >> 12 & 0x3F));
        }
        put(0x80 | (character >> 6 & 0x3F));
    }
    put(0x80 | (character & 0x3F));
    return out;
}

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
    return std::string(Utf8Text().Convert(text, count));
}

std::string_view Utf8Text::Convert(const SQLWCHAR* text, std::size_t count) {
    constexpr std::size_t kMaxBytes = 3; // of one unit; a pair of units has 4
    if (m_bytes.size() < count * kMaxBytes)
        m_bytes.resize(count * kMaxBytes);
    char* out = m_bytes.data();
    for (const SQLWCHAR *at = text, *const end = text + count; at < end;) {
        if (*at < 0x80)
            *out++ = static_cast<char>(*at++);
        else
            out = PutCharacter(TakeCharacter(at, end), out);
    }
    return {m_bytes.data(), out};
}

std::string_view WideTextDecoder::Decode(const SQLWCHAR* text, std::size_t count, bool last) {
    m_units.clear();
    if (m_left)
        m_units.push_back(*m_left);
    m_left.reset();
    m_units.insert(m_units.end(), text, text + count);
    if (!last && !m_units.empty() && IsHighSurrogate(m_units.back())) {
        m_left = m_units.back();
        m_units.pop_back();
    }
    return m_text.Convert(m_units.data(), m_units.size());
}

} // namespace vnquery

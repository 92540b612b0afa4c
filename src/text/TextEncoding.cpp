#include "vnbytstr/TextEncoding.h"

#include "src/charset/HexText.h"
#include "vnbytstr/framework/Exception.h"

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cstring>
#include <limits>
#include <new>
#include <span>
#include <utility>

using vnbytstr::detail::EncodeHex;
using vnbytstr::detail::EncodeHexSpaced;
using vnbytstr::detail::HexCase;

namespace {

std::span<const BYTE> BytesOf(const CString& text) noexcept {
    return {reinterpret_cast<const BYTE*>(static_cast<const char*>(text)),
            static_cast<std::size_t>(text.GetLength())};
}

/// A string of `groups` groups of `size` characters each, with a place for a blank between them
/// when `spaced` is set; the caller writes the characters.
CString MakeGroups(std::size_t groups, std::size_t size, bool spaced) {
    const std::size_t length = groups * size + (spaced ? groups - 1 : 0);
    if (length > INT_MAX)
        AfxThrowMemoryException();
    CString text;
    text.GetBufferSetLength(static_cast<int>(length));
    return text;
}

char* Characters(CString& text) { return text.GetBuffer(text.GetLength()); }

using BitText = std::array<char, 8>;

constexpr std::array<BitText, 256> MakeBitTexts() {
    std::array<BitText, 256> texts{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        for (unsigned bit = 0; bit < 8; ++bit)
            texts[byte][bit] = (byte >> (7 - bit) & 1) != 0 ? '1' : '0';
    }
    return texts;
}
constexpr std::array<BitText, 256> kBitTexts = MakeBitTexts();

/// What a character becomes in a URL.
struct UrlText {
    std::array<char, 4> text{}; ///< with a NUL
    BYTE length = 0;
};

constexpr bool IsUrlEncoded(unsigned byte) {
    return (byte >= 0x20 && byte <= 0x29) || byte == 0x2C || (byte >= 0x3A && byte <= 0x3F) ||
           (byte >= 0x5B && byte <= 0x5E) || byte == 0x60 || (byte >= 0x7B && byte <= 0x7F);
}

constexpr std::array<UrlText, 256> MakeUrlTexts() {
    constexpr char kDigits[] = "0123456789abcdef";
    std::array<UrlText, 256> texts{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        if (IsUrlEncoded(byte))
            texts[byte] = {{'%', kDigits[byte >> 4], kDigits[byte & 0x0F], '\0'}, 3};
        else
            texts[byte] = {{static_cast<char>(byte), '\0', '\0', '\0'}, 1};
    }
    return texts;
}
constexpr std::array<UrlText, 256> kUrlTexts = MakeUrlTexts();

} // namespace

int IsBOMPresent(const unsigned char* buffer) { return buffer[0] == 0xFF && buffer[1] == 0xFE; }

int CutBOM(unsigned short* buffer, DWORD& size) {
    auto* bytes = reinterpret_cast<unsigned char*>(buffer);
    if (size < 2 || IsBOMPresent(bytes) == 0)
        return 0;
    std::memmove(bytes, bytes + 2, size - 2);
    std::memset(bytes + size - 2, 0, 2);
    return 1;
}

int IsUnicodeText(const unsigned char* buffer, DWORD length, int& bigEndian) {
    bigEndian = 0;
    const auto begins = [buffer](std::initializer_list<unsigned char> mark) {
        return std::equal(mark.begin(), mark.end(), buffer);
    };
    if (begins({0xFF, 0xFE}) || begins({0xEF, 0xBB, 0xBF})) // FF FE 00 00 is among the first
        return 1;
    if (begins({0x00, 0x00, 0xFE, 0xFF}) || begins({0xFE, 0xFF})) {
        bigEndian = 1;
        return 1;
    }
    if (length == 0)
        return 0;
    const auto zeros = std::count(buffer, buffer + length, 0);
    return static_cast<double>(zeros) / length > 0.05;
}

unsigned short WordBE2LE(unsigned short value) {
    return static_cast<unsigned short>(value << 8 | value >> 8);
}

DWORD DWordBE2LE(DWORD value) {
    const auto byte = [value](unsigned index) { return value >> 8 * index & 0xFF; };
    return (byte(0) << 20) + (byte(1) << 16) + (byte(2) << 8) + byte(3);
}

void FormatStringAsHex(CString& text, bool spaced, bool /*ignored*/) {
    if (text.IsEmpty())
        return;
    const std::span<const BYTE> bytes = BytesOf(text);
    CString hex = MakeGroups(bytes.size(), 2, spaced);
    if (spaced)
        EncodeHexSpaced(bytes, Characters(hex), HexCase::Upper);
    else
        EncodeHex(bytes, Characters(hex), HexCase::Upper);
    text = std::move(hex);
}

void FormatStringAsHex2(CString& text, bool spaced, bool ignored) {
    FormatStringAsHex(text, spaced, ignored);
}

bool FormatBufferAsHex(char*& buffer, DWORD length, DWORD& outLength) {
    const std::size_t digits = 2 * std::size_t{length};
    if (digits > std::numeric_limits<DWORD>::max())
        return false;
    auto* hex = static_cast<char*>(::operator new(digits + 1, std::nothrow));
    if (hex == nullptr)
        return false;
    EncodeHex({reinterpret_cast<const BYTE*>(buffer), length}, hex, HexCase::Upper);
    hex[digits] = '\0';
    ::operator delete(buffer);
    buffer = hex;
    outLength = static_cast<DWORD>(digits);
    return true;
}

void FormatStringAsBin(CString& text, bool spaced, bool /*ignored1*/, bool /*ignored2*/) {
    if (text.IsEmpty())
        return;
    const std::span<const BYTE> bytes = BytesOf(text);
    CString bits = MakeGroups(bytes.size(), 8, spaced);
    char* out = Characters(bits);
    const auto put = [&out](BYTE byte) {
        std::memcpy(out, kBitTexts[byte].data(), 8);
        out += 8;
    };
    if (!spaced) {
        std::for_each(bytes.begin(), bytes.end(), put);
    } else {
        put(bytes.front());
        for (const BYTE byte : bytes.subspan(1)) {
            *out++ = ' ';
            put(byte);
        }
    }
    text = std::move(bits);
}

void URLEncodeChar(char& character, char*& destination) {
    const UrlText& url = kUrlTexts[static_cast<BYTE>(character)];
    std::memcpy(destination, url.text.data(), url.length + std::size_t{1});
}

DWORD URLEncodeStr(const char* source, char*& result, bool last) {
    const std::size_t length = source != nullptr ? std::strlen(source) : 0;
    if (3 * length + 1 > std::numeric_limits<DWORD>::max())
        return 0;
    const std::size_t size = length == 0 && !last ? 2 : 6 * length + 1;
    auto* const block = static_cast<char*>(::operator new(size, std::nothrow));
    if (block == nullptr)
        return 0;
    char* out = block;
    for (const char character : std::span(source, length)) {
        // All four bytes, for speed: there is room, and the surplus is overwritten.
        const UrlText& url = kUrlTexts[static_cast<BYTE>(character)];
        std::memcpy(out, url.text.data(), 4);
        out += url.length;
    }
    if (!last)
        *out++ = '&';
    std::memset(out, 0, static_cast<std::size_t>(block + size - out));
    result = block;
    return static_cast<DWORD>(out - block);
}

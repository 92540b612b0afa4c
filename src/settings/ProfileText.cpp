#include "src/settings/ProfileText.h"

namespace vnbytstr::detail {

namespace {

const CodePage& Utf8() {
    static const CodePage& page = *CodePage::Find(65001);
    return page;
}

void AppendEscaped(std::string& out, std::string_view bytes) {
    constexpr char digits[] = "0123456789ABCDEF";
    for (const char c : bytes) {
        const auto byte = static_cast<BYTE>(c);
        out += '%';
        out += digits[byte >> 4];
        out += digits[byte & 15];
    }
}

bool NeedsEscape(char c, ProfileToken token, bool isFirst, bool isLast) {
    const auto byte = static_cast<BYTE>(c);
    if (byte < 0x20 || byte == 0x7F || c == '%')
        return true;
    if (c == ' ')
        return isFirst || isLast;
    switch (token) {
    case ProfileToken::Section:
        return c == ']';
    case ProfileToken::Name:
        return c == '=' || (isFirst && (c == '[' || c == '#' || c == ';'));
    case ProfileToken::Value:
        break;
    }
    return false;
}

/// The UTF-8 of one character of several bytes or past ASCII; empty when it has none that leads
/// back.
std::string CharToUtf8(std::string_view bytes, const CodePage& page) {
    const std::u16string wide = page.ToWide(bytes);
    for (const char16_t unit : wide) {
        if (unit == 0xFFFD || (unit >= 0x7F && unit < 0xA0))
            return {};
    }
    return page.FromWide(wide) == bytes ? Utf8().FromWide(wide) : std::string();
}

int HexDigit(char c) noexcept {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

} // namespace

std::string EncodeProfileText(std::string_view bytes, ProfileToken token, const CodePage& page) {
    std::string out;
    out.reserve(bytes.size());
    const char* const end = bytes.data() + bytes.size();
    for (const char* p = bytes.data(); p < end;) {
        const std::size_t length = page.CharLength(p, end);
        const std::string_view one(p, length);
        if (length == 1 && static_cast<BYTE>(*p) < 0x80) {
            if (NeedsEscape(*p, token, p == bytes.data(), p + 1 == end))
                AppendEscaped(out, one);
            else
                out += *p;
        } else if (const std::string text = CharToUtf8(one, page); !text.empty()) {
            out += text;
        } else {
            AppendEscaped(out, one);
        }
        p += length;
    }
    return out;
}

std::string EscapeMarks(std::string_view text, ProfileToken token) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%' && NeedsEscape(text[i], token, i == 0, i + 1 == text.size()))
            AppendEscaped(out, text.substr(i, 1));
        else
            out += text[i];
    }
    return out;
}

std::string EscapeAll(std::string_view bytes) {
    std::string out;
    AppendEscaped(out, bytes);
    return out;
}

std::string DecodeProfileText(std::string_view text, const CodePage& page, bool* isWhole) {
    std::string out;
    if (isWhole)
        *isWhole = true;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const bool isEscape = text[i] == '%' && i + 2 < text.size() && HexDigit(text[i + 1]) >= 0 &&
                              HexDigit(text[i + 2]) >= 0;
        if (isEscape) {
            out += static_cast<char>(HexDigit(text[i + 1]) << 4 | HexDigit(text[i + 2]));
            i += 3;
        } else if (page.IsUtf8() || static_cast<BYTE>(text[i]) < 0x80) {
            out += text[i++];
        } else {
            std::size_t end = i;
            while (end < text.size() && static_cast<BYTE>(text[end]) >= 0x80)
                ++end;
            const std::u16string wide = Utf8().ToWide(text.substr(i, end - i));
            const std::string bytes = page.FromWide(wide);
            if (isWhole)
                *isWhole &= page.ToWide(bytes) == wide;
            out += bytes;
            i = end;
        }
    }
    return out;
}

} // namespace vnbytstr::detail

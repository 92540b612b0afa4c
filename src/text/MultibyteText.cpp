#include "vnbytstr/MultibyteText.h"

#include "src/charset/CharacterTypes.h"
#include "src/charset/CodePage.h"
#include "src/text/SystemAnswers.h"
#include "vnbytstr/framework/Exception.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

using vnbytstr::CodePage;

namespace {

constexpr std::size_t kMaxCharBytes = 4; // bytes

std::string_view ViewOf(const CString& text) noexcept {
    return {text, static_cast<std::size_t>(text.GetLength())};
}

/// Bytes of the first `n` characters.
std::size_t BytesOfChars(std::string_view text, std::size_t n) noexcept {
    const CodePage& page = CodePage::Ansi();
    if (page.IsSingleByte())
        return std::min(n, text.size());
    const char* const end = text.data() + text.size();
    const char* p = text.data();
    for (; n > 0 && p < end; --n)
        p += page.CharLength(p, end);
    return static_cast<std::size_t>(p - text.data());
}

/// How many of the last of `size` bytes are the beginning of a character that continues after them;
/// 0 when there is a NUL among the `size` bytes.
std::size_t CutBytes(const char* text, std::size_t size) noexcept {
    const CodePage& page = CodePage::Ansi();
    if (page.IsSingleByte() || std::memchr(text, '\0', size) != nullptr)
        return 0;
    const char* const end = text + size;
    for (const char* p = text; p < end; p += page.CharLength(p, end)) {
        if (static_cast<std::size_t>(end - p) < kMaxCharBytes && page.IsCutShort(p, end))
            return static_cast<std::size_t>(end - p);
    }
    return 0;
}

void MapCase(CString& text, void (CodePage::*map)(std::span<char>) const) {
    const int length = text.GetLength();
    char* const characters = text.GetBuffer(length);
    const std::span<char> all(characters, static_cast<std::size_t>(length));
    vnbytstr::detail::WithMemoryException([&] { (CodePage::Ansi().*map)(all); });
    text.ReleaseBuffer(length);
}

} // namespace

void CheckLeadMultiByteSymbol(char* string, LONG position) {
    if (position < 0)
        return;
    const std::size_t size = static_cast<std::size_t>(position) + 1;
    const std::size_t cut = CutBytes(string, size);
    std::memset(string + size - cut, ' ', cut);
}

void CheckTrailMultiByteSymbol(char* string, LONG position) {
    const CodePage& page = CodePage::Ansi();
    const auto begin = static_cast<std::size_t>(std::max<LONG>(position, 0));
    if (begin == 0 || page.IsSingleByte() || std::memchr(string, '\0', begin + 1) != nullptr)
        return;
    char* const cut = string + begin;
    const char* const end = cut + ::strnlen(cut, kMaxCharBytes);
    const char* p = string;
    while (p < cut)
        p += page.CharLength(p, end);
    std::memset(cut, ' ', static_cast<std::size_t>(p - cut));
}

void CopyMultiByteStr(char* destination, const char* source, LONG count) {
    if (count <= 0)
        return;
    const auto size = static_cast<std::size_t>(count);
    std::memcpy(destination, source, size);
    const std::size_t cut = CutBytes(source, size);
    std::memset(destination + size - cut, ' ', cut);
}

void CopyMultiByteStr(char* destination, const char* source, LONG count, LONG limit) {
    CopyMultiByteStr(destination, source, std::min(count, limit));
}

/// A trail byte is never a NUL, so that steps by characters end where steps by bytes do.
int StrCharCount(const char* string) { return static_cast<int>(std::strlen(string) + 1); }

CString VariousByteLeft(const CString& source, int n) {
    if (n >= source.GetLength())
        return source;
    const auto count = static_cast<std::size_t>(std::max(n, 0));
    return source.Left(static_cast<int>(BytesOfChars(ViewOf(source), count)));
}

/// Backwards a double-byte text cannot be read: whether a byte is a lead byte depends on all before
/// it. So the characters to leave out are counted from the beginning.
CString VariousByteRight(const CString& source, int n) {
    if (n >= source.GetLength())
        return source;
    const std::string_view text = ViewOf(source);
    const std::size_t all = CodePage::Ansi().CountChars(text);
    const auto wanted = static_cast<std::size_t>(std::max(n, 0));
    const std::size_t left = BytesOfChars(text, all - std::min(all, wanted));
    return source.Mid(static_cast<int>(left));
}

int VariousByteLength(const CString& source) {
    return static_cast<int>(CodePage::Ansi().CountChars(ViewOf(source)));
}

void VariousByteDivision(const CString& source, CString& left, CString& right, int n) {
    // The source may be one of the two. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const CString whole = source;
    if (n <= 0) {
        left.Empty();
        right = whole;
    } else if (n >= whole.GetLength()) {
        left = whole;
        right.Empty();
    } else {
        const auto bytes =
            static_cast<int>(BytesOfChars(ViewOf(whole), static_cast<std::size_t>(n)));
        CString front = whole.Left(bytes);
        CString back = whole.Mid(bytes);
        left = std::move(front);
        right = std::move(back);
    }
}

bool IsTextVariuosBytes(const CString& source) {
    const CodePage& page = CodePage::Ansi();
    if (page.IsSingleByte())
        return false;
    const std::string_view text = ViewOf(source);
    const char* const end = text.data() + text.size();
    int found = 0;
    for (const char* p = text.data(); p < end && found < 2;) {
        const std::size_t length = page.CharLength(p, end);
        // A lead byte counts even at the end of the text.
        if (length > 1 || page.IsCutShort(p, end))
            ++found;
        p += length;
    }
    return found >= 2;
}

bool StringsAreEqual(const CString& left, const CString& right) {
    return ViewOf(left) == ViewOf(right);
}

void MakeStringUpper(CString& text) { MapCase(text, &CodePage::MakeUpper); }
void MakeStringLower(CString& text) { MapCase(text, &CodePage::MakeLower); }

CString MakeStringUpper(const CString& text) {
    CString upper(text);
    MakeStringUpper(upper);
    return upper;
}

CString MakeStringLower(const CString& text) {
    CString lower(text);
    MakeStringLower(lower);
    return lower;
}

bool IsValidIdentifierChar(char character) {
    namespace type1 = vnbytstr::type1;
    namespace type3 = vnbytstr::type3;
    const std::u16string wide = vnbytstr::detail::WithMemoryException([&] {
        return CodePage::Ansi().ToWide({&character, 1});
    });
    if (wide.size() != 1 || wide[0] == 0xFFFD)
        return false;
    const unsigned first = vnbytstr::CharacterType1(wide[0]);
    if ((first & type1::kAlpha) != 0)
        return true;
    if ((first & type1::kDefined) == 0)
        return false;
    const unsigned third = vnbytstr::CharacterType3(wide[0]);
    if (third == 0)
        return false;
    if ((third & type3::kSymbol) != 0 &&
        std::string_view("@$#_").find(character) == std::string::npos)
        return false;
    switch (third) {
    case type3::kAlpha | type3::kHalfWidth | type3::kKatakana:
    case type3::kAlpha | type3::kHalfWidth | type3::kHiragana:
    case type3::kAlpha | type3::kNonSpacing | type3::kDiacritic:
    case type3::kAlpha | type3::kNonSpacing | type3::kVowelMark:
        return false;
    case type3::kAlpha | type3::kFullWidth | type3::kKatakana:
    case type3::kAlpha | type3::kFullWidth | type3::kHiragana:
    case type3::kAlpha | type3::kIdeograph:
        return true;
    default:
        return (third & (type3::kHighSurrogate | type3::kLowSurrogate | type3::kAlpha)) != 0;
    }
}

CString DequoteString(const CString& source) {
    const int length = source.GetLength();
    if (length < 2)
        return source;
    const char first = source[0];
    const bool isQuoted = (first == '\'' || first == '"') && source[length - 1] == first;
    return isQuoted ? source.Mid(1, length - 2) : source;
}

bool IsDBCSWindows() { return vnbytstr::detail::IsDbcsEnabledOnce(); }

// Text of a code page to UTF-16 and back, and to upper and lower case.
#include "src/charset/CodePage.h"

#include "src/charset/CodePageConverters.h"

#include <unicode/uchar.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cassert>
#include <new>

namespace vnbytstr {

namespace {

constexpr char16_t kReplacement = 0xFFFD;
constexpr std::size_t kChunk = 1u << 20; // ICU counts in 32 bits, so long texts go in pieces

/// ICU's own callback writes U+001A for some broken single bytes; here it is always U+FFFD.
void U_CALLCONV ReplaceBroken(const void*, UConverterToUnicodeArgs* args, const char*, int32_t,
                              UConverterCallbackReason reason, UErrorCode* error) {
    if (reason > UCNV_IRREGULAR)
        return;
    *error = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(args, &kReplacement, 1, 0, error);
}

/// ICU's own callback drops what the target lacks and need not show (a soft hyphen, a joiner).
void U_CALLCONV ReplaceUnmapped(const void*, UConverterFromUnicodeArgs* args, const char16_t*,
                                int32_t, UChar32, UConverterCallbackReason reason,
                                UErrorCode* error) {
    if (reason > UCNV_IRREGULAR)
        return;
    *error = U_ZERO_ERROR;
    ucnv_cbFromUWriteSub(args, 0, error);
}

} // namespace

void CodePage::Converters::Prepare(UConverter* converter) {
    UErrorCode error = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter, ReplaceBroken, nullptr, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(converter, ReplaceUnmapped, nullptr, nullptr, nullptr, &error);
    if (ucnv_getType(converter) != UCNV_UTF8)
        ucnv_setSubstChars(converter, "?", 1, &error);
    assert(U_SUCCESS(error));
}

std::u16string CodePage::ToWide(std::string_view text) const {
    std::u16string wide(text.size(), u'\0'); // no byte gives more than one unit in any page here
    std::size_t done = 0;
    while (done < text.size() && static_cast<BYTE>(text[done]) < 0x80) {
        wide[done] = static_cast<BYTE>(text[done]);
        ++done;
    }
    const std::size_t plain = done;
    std::size_t written = done;
    const auto converter = m_converters->pool.Borrow();
    if (!converter.get())
        throw std::bad_alloc();
    const char* source = text.data() + done;
    const char* const end = text.data() + text.size();
    bool finished = source == end;
    while (!finished) {
        const char* const limit =
            source + std::min<std::size_t>(kChunk, static_cast<std::size_t>(end - source));
        char16_t* target = wide.data() + written;
        UErrorCode error = U_ZERO_ERROR;
        ucnv_toUnicode(converter.get(), &target, wide.data() + wide.size(), &source, limit, nullptr,
                       limit == end, &error);
        written = static_cast<std::size_t>(target - wide.data());
        if (error == U_BUFFER_OVERFLOW_ERROR)
            wide.resize(wide.size() * 2 + 16);
        else if (U_FAILURE(error))
            throw std::bad_alloc(); // nothing else is left that can go wrong
        else
            finished = source == end;
    }
    wide.resize(written);
    if (m_rotatesControls) {
        for (char16_t& unit : std::span(wide).subspan(plain))
            unit = unit == 0x1C ? 0x1A : unit == 0x7F ? 0x1C : unit == 0x1A ? 0x7F : unit;
    }
    return wide;
}

std::string CodePage::FromWide(std::u16string_view text) const {
    std::string narrow(text.size(), '\0');
    std::size_t done = 0;
    while (done < text.size() && text[done] < 0x80) {
        narrow[done] = static_cast<char>(text[done]);
        ++done;
    }
    const std::size_t plain = done;
    std::size_t written = done;
    const auto converter = m_converters->pool.Borrow();
    if (!converter.get())
        throw std::bad_alloc();
    const char16_t* source = text.data() + done;
    const char16_t* const end = text.data() + text.size();
    bool finished = source == end;
    while (!finished) {
        const char16_t* const limit =
            source + std::min<std::size_t>(kChunk, static_cast<std::size_t>(end - source));
        char* target = narrow.data() + written;
        UErrorCode error = U_ZERO_ERROR;
        ucnv_fromUnicode(converter.get(), &target, narrow.data() + narrow.size(), &source, limit,
                         nullptr, limit == end, &error);
        written = static_cast<std::size_t>(target - narrow.data());
        if (error == U_BUFFER_OVERFLOW_ERROR)
            narrow.resize(narrow.size() * 2 + 16);
        else if (U_FAILURE(error))
            throw std::bad_alloc();
        else
            finished = source == end;
    }
    narrow.resize(written);
    if (m_rotatesControls) { // none of the three is ever a trail byte
        for (char& byte : std::span(narrow).subspan(plain))
            byte = byte == 0x1A ? 0x1C : byte == 0x1C ? 0x7F : byte == 0x7F ? 0x1A : byte;
    }
    return narrow;
}

std::size_t CodePage::MapLongChar(std::span<char> text, bool upper) const {
    const std::size_t length = CharLength(text.data(), text.data() + text.size());
    const std::string_view bytes(text.data(), length);
    const std::u16string wide = ToWide(bytes);
    UChar32 character = 0;
    std::size_t units = 0;
    U16_NEXT(wide.data(), units, wide.size(), character);
    if (units != wide.size() || FromWide(wide) != bytes)
        return length; // broken, or not one character
    const UChar32 mapped = upper ? u_toupper(character) : u_tolower(character);
    if (mapped == character)
        return length;
    std::u16string other(U16_LENGTH(mapped), u'\0');
    std::size_t end = 0;
    U16_APPEND_UNSAFE(other, end, mapped);
    const std::string narrow = FromWide(other);
    if (narrow.size() == length && ToWide(narrow) == other)
        std::copy(narrow.begin(), narrow.end(), text.begin());
    return length;
}

void CodePage::MapCase(std::span<char> text, bool upper) const {
    const auto& single = upper ? m_upper : m_lower;
    for (std::size_t i = 0; i < text.size();) {
        if (IsLeadByte(text[i])) {
            i += MapLongChar(text.subspan(i), upper);
        } else {
            text[i] = static_cast<char>(single[static_cast<BYTE>(text[i])]);
            ++i;
        }
    }
}

} // namespace vnbytstr

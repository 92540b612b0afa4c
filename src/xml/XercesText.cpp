#include "src/xml/XercesText.h"

#include "vnbytstr/StrX.h"

#include "src/charset/CodePage.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <utility>

namespace vnbytstr::detail {

namespace {

/// Copies as far as all is ASCII, which is the same in every code page. Returns how much that was.
template <class From, class To>
std::size_t CopyAscii(const From* from, std::size_t size, To* to) noexcept {
    constexpr std::size_t kBlock = 16;
    std::size_t i = 0;
    for (; i + kBlock <= size; i += kBlock) {
        unsigned bits = 0;
        for (std::size_t k = 0; k < kBlock; ++k)
            bits |= static_cast<std::make_unsigned_t<From>>(from[i + k]);
        if (bits >= 0x80)
            break;
        for (std::size_t k = 0; k < kBlock; ++k)
            to[i + k] = static_cast<To>(from[i + k]);
    }
    for (; i < size; ++i) {
        const auto unit = static_cast<std::make_unsigned_t<From>>(from[i]);
        if (unit >= 0x80)
            break;
        to[i] = static_cast<To>(unit);
    }
    return i;
}

} // namespace

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): a buffer to be filled as far as needed
WideText::WideText(std::string_view text) {
    if (text.size() < kInline &&
        CopyAscii(text.data(), text.size(), m_inline.data()) == text.size()) {
        m_inline[text.size()] = u'\0';
        m_text = m_inline.data();
        m_size = text.size();
        return;
    }
    m_long = CodePage::Ansi().ToWide(text);
    m_text = m_long.c_str();
    m_size = m_long.size();
}

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
NarrowText::NarrowText(const char16_t* text) {
    const std::u16string_view wide = text != nullptr ? text : u"";
    if (wide.size() <= kInline && CopyAscii(reinterpret_cast<const std::uint16_t*>(wide.data()),
                                            wide.size(), m_inline.data()) == wide.size()) {
        m_text = {m_inline.data(), wide.size()};
        return;
    }
    m_long = CodePage::Ansi().FromWide(wide);
    if (m_long.size() > INT_MAX)
        throw std::bad_alloc();
    m_text = m_long;
}

bool IsUtf8(std::string_view text) {
    const CodePage& utf8 = *CodePage::Find(65001);
    return utf8.FromWide(utf8.ToWide(text)) == text;
}

namespace {

bool IsMistakable(std::string_view text) {
    const bool isAscii = std::all_of(text.begin(), text.end(),
                                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    return !isAscii && IsUtf8(text);
}

/// Where a piece of markup that begins at `begin` ends; that of a tag, whose attributes may hold
/// references, is its first quotation mark or its end.
std::size_t EndOfMarkup(std::u16string_view text, std::size_t begin) {
    constexpr std::pair<std::u16string_view, std::u16string_view> kWhole[] = {
        {u"<!--", u"-->"}, {u"<![CDATA[", u"]]>"}, {u"<?", u"?>"}};
    for (const auto& [opening, closing] : kWhole)
        if (text.substr(begin).starts_with(opening)) {
            const std::size_t end = text.find(closing, begin + opening.size());
            return end == std::u16string_view::npos ? text.size() : end + closing.size();
        }
    const std::size_t end = text.find_first_of(u"\"'>", begin);
    return end == std::u16string_view::npos ? text.size() : end + 1;
}

/// Writes references for all beyond ASCII in texts and in the values of attributes.
std::u16string WithReferences(std::u16string_view text) {
    std::u16string out;
    bool isInTag = false;
    char16_t quote = 0; // within the value of an attribute
    for (std::size_t i = 0; i < text.size();) {
        const char16_t unit = text[i];
        if (quote == 0 && (isInTag || unit == u'<')) {
            const std::size_t end = EndOfMarkup(text, i);
            out += text.substr(i, end - i);
            const char16_t last = text[end - 1];
            quote = last == u'"' || last == u'\'' ? last : u'\0';
            isInTag = quote != 0;
            i = end;
            continue;
        }
        ++i;
        if (unit < 0x80) {
            out += unit;
            if (unit == quote)
                quote = 0;
            continue;
        }
        char32_t character = unit;
        if (unit >= 0xD800 && unit < 0xDC00 && i < text.size())
            character = 0x10000 + ((character - 0xD800) << 10) + (text[i++] - 0xDC00);
        out += u"&#";
        for (const char digit : std::to_string(static_cast<unsigned long>(character)))
            out += static_cast<char16_t>(digit);
        out += u';';
    }
    return out;
}

} // namespace

std::string Unmistakable(std::string_view text) {
    const CodePage& page = CodePage::Ansi();
    if (page.IsUtf8() || !IsMistakable(text))
        return std::string(text);
    std::string plain = page.FromWide(WithReferences(page.ToWide(text)));
    for (const std::u16string_view blank : {u"\x3000", u"\xA0"}) {
        if (!IsMistakable(plain))
            break;
        const std::string bytes = page.FromWide(blank);
        if (!IsUtf8(bytes))
            plain += "<!--" + bytes + "-->";
    }
    return plain;
}

struct NameCache::Entry {
    bool isUsed = false;
    std::string narrow;
    std::u16string wide;
};

NameCache::NameCache() : m_entries(std::make_unique<Entry[]>(kEntries)) {}

NameCache::~NameCache() = default;

const char16_t* NameCache::Wide(const char* name) {
    const CodePage* page = &CodePage::Ansi();
    if (page != m_page) {
        m_entries = std::make_unique<Entry[]>(kEntries);
        m_page = page;
    }
    const std::string_view text(name);
    std::uint64_t first = 0, last = 0; // eight bytes at each end tell most names apart
    const std::size_t part = std::min(text.size(), sizeof first);
    std::memcpy(&first, text.data(), part);
    std::memcpy(&last, text.data() + text.size() - part, part);
    const std::uint64_t hash =
        (first * 0x9E3779B97F4A7C15u) ^ ((last + text.size()) * 0xC2B2AE3D27D4EB4Fu);
    Entry& entry = m_entries[(hash >> 40) % kEntries];
    if (!entry.isUsed || entry.narrow != text) {
        entry.isUsed = false;
        entry.wide = page->ToWide(text);
        entry.narrow = text;
        entry.isUsed = true;
    }
    return entry.wide.c_str();
}

} // namespace vnbytstr::detail

StrX::StrX(const char16_t* text) : m_text(vnbytstr::detail::NarrowText(text).String()) {}

#include "xml/XercesTextInternal.h"

#include "vnbytstr/StrX.h"

#include "platform/system/CodePage.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

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

// Between narrow text in the ANSI code page and the parser's UTF-16.
#pragma once

#include "vnbytstr/framework/String.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace vnbytstr {
class CodePage;
}

namespace vnbytstr::detail {

inline std::string_view ViewOf(const CString& text) noexcept {
    return {text, static_cast<std::size_t>(text.GetLength())};
}

/// A narrow text in UTF-16 with a NUL after it. Short ASCII, which nearly all texts are, needs no
/// allocation.
class WideText {
public:
    explicit WideText(std::string_view text);
    WideText(const WideText&) = delete;
    WideText& operator=(const WideText&) = delete;

    const char16_t* c_str() const noexcept { return m_text; }
    std::size_t size() const noexcept { return m_size; }

private:
    static constexpr std::size_t kInline = 128;
    std::array<char16_t, kInline> m_inline; // set as far as it is used
    std::u16string m_long;
    const char16_t* m_text;
    std::size_t m_size;
};

/// UTF-16 in the ANSI code page; the counterpart of WideText.
class NarrowText {
public:
    /// `text` ends with a NUL; null is empty.
    explicit NarrowText(const char16_t* text);
    NarrowText(const NarrowText&) = delete;
    NarrowText& operator=(const NarrowText&) = delete;

    std::string_view View() const noexcept { return m_text; }
    CString String() const { return {m_text.data(), static_cast<int>(m_text.size())}; }

private:
    static constexpr std::size_t kInline = 256;
    std::array<char, kInline> m_inline; // set as far as it is used
    std::string m_long;
    std::string_view m_text;
};

/// Whether the bytes are valid UTF-8.
bool IsUtf8(std::string_view text);

/// The text of an XML element, in the ANSI code page, in a form that LoadXML does not take for
/// UTF-8: as it is unless its bytes are both that and not ASCII.
std::string Unmistakable(std::string_view text);

/// The UTF-16 forms of the names used last. Programs ask for the same few over and over.
class NameCache {
public:
    NameCache();
    ~NameCache();

    /// Valid until the next call.
    const char16_t* Wide(const char* name);

private:
    struct Entry;
    static constexpr std::size_t kEntries = 256;

    std::unique_ptr<Entry[]> m_entries; // by hash; the latest with that hash stays
    const CodePage* m_page = nullptr;   // that the entries were made with
};

} // namespace vnbytstr::detail

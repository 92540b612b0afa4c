// Long texts from the ANSI code page to UTF-8, slice by slice.
#pragma once

#include "src/charset/CodePage.h"
#include "vnbytstr/framework/Types.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

class CCCSIDTranslation;

namespace vnbytstr::detail {

/// A character may lie across two slices. Bytes that are not a character become U+FFFD, as in
/// CodePage::ToWide. One object converts one text.
class AnsiToUtf8 {
public:
    AnsiToUtf8();
    ~AnsiToUtf8();
    AnsiToUtf8(const AnsiToUtf8&) = delete;
    AnsiToUtf8& operator=(const AnsiToUtf8&) = delete;

    /// Converts the next slice; `last` says that the text ends with it. The result is valid until
    /// the next call. Throws std::bad_alloc when memory runs out.
    std::span<const BYTE> Convert(std::span<const BYTE> slice, bool last);
    /// Whether the text converted so far is invalid: UTF-8 is the ANSI code page, and it is not
    /// valid UTF-8.
    bool IsForeign() const noexcept { return m_isForeign; }

private:
    std::span<const BYTE> Translate(std::span<const BYTE> slice, bool last);
    std::span<const BYTE> ConvertByCharacters(std::span<const BYTE> slice, bool last);
    std::size_t WholeCharacters(std::string_view text) const;
    bool TranslatePlain932(std::string_view text);
    void MakeRoom(std::size_t size);

    const CodePage& m_page;
    CCCSIDTranslation* m_translation = nullptr; ///< null: by characters
    std::unique_ptr<BYTE[]> m_buffer;           ///< of the translations
    std::size_t m_capacity = 0;
    std::size_t m_size = 0; ///< of what TranslatePlain932 wrote
    std::string m_pending;  ///< of ConvertByCharacters: the beginning of a character
    std::string m_converted;
    bool m_isForeign = false;
};

} // namespace vnbytstr::detail

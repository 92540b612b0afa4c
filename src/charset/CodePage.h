// The process's ANSI code page, and text in any code page the library knows: characters and their
// lengths, conversion to and from UTF-16, case.
//
// The ANSI code page is the encoding of every narrow string (CString) of the process. It is
//   1. the number in VNBYTSTR_CODEPAGE, when that names a known page;
//   2. else UTF-8 (65001) when the locale's charset is UTF-8, when the locale names none, or for
//   the
//      locales "C" and "POSIX" (they promise nothing about bytes past 0x7F, so nothing is lost);
//   3. else the page of the locale's charset; UTF-8, with a message, when there is none for it.
// It is decided at first use and stays for the life of the process.
//
// A character is one byte in a single-byte page, a lead byte with its trail byte in a double-byte
// page, a whole sequence in UTF-8 (GB 18030 and EUC-JP: up to four and three bytes).
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Types.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vnbytstr {

/// One code page. Immutable; every member may be called from every thread.
class VNBYTSTR_API CodePage {
public:
    /// The process's ANSI code page.
    static const CodePage& Ansi();
    /// The page of that number, null when it is not known: 874, 932, 936, 949, 950, 1250 to 1258,
    /// 65001, 20127 (ASCII), 28591 to 28599, 28603 and 28605 (ISO 8859), 20866 and 21866 (KOI8),
    /// 51932 (EUC-JP), 51949 (EUC-KR), 54936 (GB 18030). It lives as long as the process.
    static const CodePage* Find(UINT number);
    /// The page of a charset as locales name it ("UTF-8", "ISO-8859-15", "eucJP"), or null.
    static const CodePage* FindCharset(std::string_view charset);
    /// Sets the ANSI code page; null lets the next use decide anew. Returns the one before, null
    /// when none had been decided. For a program's start, and for tests.
    static const CodePage* SetAnsi(const CodePage* page) noexcept;

    ~CodePage();
    CodePage(const CodePage&) = delete;
    CodePage& operator=(const CodePage&) = delete;

    UINT GetNumber() const noexcept { return m_number; }
    /// The CCSID of this encoding: 1208 for UTF-8, the page's own number for the Windows pages
    /// (where callers compare with 1255 or 932), the registered one for the others.
    WORD GetCcsid() const noexcept { return m_ccsid; }
    bool IsUtf8() const noexcept { return m_scheme == Scheme::Utf8; }
    bool IsSingleByte() const noexcept { return m_scheme == Scheme::SingleByte; }

    /// Whether `byte` begins a character of several bytes, when it stands where one begins.
    bool IsLeadByte(char byte) const noexcept { return m_lead[static_cast<BYTE>(byte)] != 0; }
    /// Bytes of the character that begins at `p`, which must lie before `end`: at least 1, never
    /// past `end`. A double-byte page takes any byte after a lead byte for its trail byte; a lead
    /// byte with nothing after it counts 1, and so does each byte of a broken UTF-8 sequence.
    std::size_t CharLength(const char* p, const char* end) const noexcept {
        return IsLeadByte(*p) ? LongCharLength(p, end) : 1;
    }
    /// Whether the bytes from `p` (where a character begins) to `end` are the beginning of a longer
    /// character, which the text was cut in.
    bool IsCutShort(const char* p, const char* end) const noexcept;
    /// Number of characters.
    std::size_t CountChars(std::string_view text) const noexcept;
    /// Index of the first byte of the character that the byte at `index` belongs to; judged from
    /// the beginning of the text, as a double-byte page must be.
    std::size_t CharStart(std::string_view text, std::size_t index) const noexcept;
    /// Bytes before the first of the ASCII characters in `set` (a trail byte never counts as one):
    /// the whole length when there is none.
    std::size_t SpanWithout(std::string_view text, std::string_view set) const noexcept;

    /// To UTF-16 in native byte order. Bytes that are not a character become U+FFFD.
    std::u16string ToWide(std::string_view text) const;
    /// From UTF-16. What the page does not hold becomes '?', in UTF-8 (an unpaired surrogate)
    /// U+FFFD. Only exact mappings are used: no letter is replaced by a similar one.
    std::string FromWide(std::u16string_view text) const;

    /// Maps every character to upper (lower) case in place, one to one, by Unicode's simple
    /// mappings. A character whose counterpart needs another number of bytes, or is not in the
    /// page, stays.
    void MakeUpper(std::span<char> text) const { MapCase(text, true); }
    void MakeLower(std::span<char> text) const { MapCase(text, false); }

private:
    enum class Scheme : unsigned char { SingleByte, DoubleByte, Utf8, Gb18030, EucJp };
    struct Entry;
    struct Converters;
    struct Registry;
    static const Entry* FindEntry(UINT number) noexcept;
    static const CodePage& Decide();
    static const CodePage* OfLocale(std::string_view locale);

    explicit CodePage(const Entry& entry);
    std::size_t LongCharLength(const char* p, const char* end) const noexcept;
    void MapCase(std::span<char> text, bool upper) const;
    std::size_t MapLongChar(std::span<char> text, bool upper) const;

    UINT m_number;
    WORD m_ccsid;
    Scheme m_scheme;
    bool m_rotatesControls = false;
    std::array<BYTE, 256> m_lead{};             // 1: begins a character of several bytes
    std::array<BYTE, 16> m_leadRows{};          // the same, as the counting of characters wants it
    std::array<char16_t, 256> m_single{};       // the character of a single byte, U+FFFD for none
    std::array<BYTE, 256> m_upper{}, m_lower{}; // of single bytes
    std::unique_ptr<Converters> m_converters;

    static std::atomic<const CodePage*> s_ansi;
};

/// Makes a page the ANSI code page for the life of this object.
class VNBYTSTR_API ScopedCodePage {
public:
    /// `number` must be a known page.
    explicit ScopedCodePage(UINT number) noexcept
        : m_previous(CodePage::SetAnsi(CodePage::Find(number))) {}
    ~ScopedCodePage() { CodePage::SetAnsi(m_previous); }
    ScopedCodePage(const ScopedCodePage&) = delete;
    ScopedCodePage& operator=(const ScopedCodePage&) = delete;

private:
    const CodePage* m_previous;
};

} // namespace vnbytstr

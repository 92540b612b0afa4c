#include "src/text/AnsiToUtf8.h"

#include "vnbytstr/Ccsid.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vnbytstr::detail {

namespace {
constexpr WORD kUtf8 = 1208;

/// The translation of CCSIDs has the fast kernels, but some sets differ from the code page: 932
/// exchanges ASCII control characters, the EUC sets have another substitute for what is broken, two
/// ISO sets are of an older edition, and UTF-8 to itself is a copy, broken sequences and all.
bool IsCcsidTheSame(UINT page) {
    constexpr UINT kOthers[] = {932, 28597, 28598, 51932, 51949, 65001};
    return std::find(std::begin(kOthers), std::end(kOthers), page) == std::end(kOthers);
}

} // namespace

AnsiToUtf8::AnsiToUtf8() : m_page(CodePage::Ansi()) {
    if (IsCcsidTheSame(m_page.GetNumber()))
        m_translation = TranslateBeginEx(m_page.GetCcsid(), kUtf8);
}

AnsiToUtf8::~AnsiToUtf8() { TranslateEndEx(m_translation); }

std::span<const BYTE> AnsiToUtf8::Convert(std::span<const BYTE> slice, bool last) {
    return m_translation != nullptr ? Translate(slice, last) : ConvertByCharacters(slice, last);
}

std::span<const BYTE> AnsiToUtf8::Translate(std::span<const BYTE> slice, bool last) {
    MakeRoom(slice.size());
    std::size_t written = 0;
    for (;;) {
        auto taken = static_cast<DWORD>(slice.size());
        auto produced = static_cast<DWORD>(m_capacity - written);
        const ETranslation result = TranslateCCSIDEx(m_translation, slice.data(), &taken,
                                                     m_buffer.get() + written, &produced, last);
        written += produced;
        slice = slice.subspan(taken);
        if (result == translationFailed)
            throw std::bad_alloc(); // nothing else fails when characters are substituted
        if (result == translationDone)
            return {m_buffer.get(), written};
        auto larger = std::make_unique_for_overwrite<BYTE[]>(2 * m_capacity);
        std::memcpy(larger.get(), m_buffer.get(), written);
        m_buffer = std::move(larger);
        m_capacity *= 2;
    }
}

void AnsiToUtf8::MakeRoom(std::size_t size) {
    constexpr std::size_t kSlack = 96; // for what is pending, and for the kernels' wide stores
    if (m_capacity < 3 * size + kSlack) {
        m_capacity = 3 * size + kSlack;
        m_buffer = std::make_unique_for_overwrite<BYTE[]>(m_capacity);
    }
}

/// Bytes before the character that the text was cut in, if it was.
std::size_t AnsiToUtf8::WholeCharacters(std::string_view text) const {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* p = end;
    if (m_page.IsUtf8()) // what was cut begins among the last three bytes
        p -= std::min<std::size_t>(text.size(), 3);
    else // a character ends with any byte below 0x40, which is a lead byte in no page
        while (p > begin && static_cast<BYTE>(p[-1]) >= 0x40)
            --p;
    while (p < end && !m_page.IsCutShort(p, end))
        p += m_page.CharLength(p, end);
    return static_cast<std::size_t>(p - begin);
}

/// The CCSID's translation of a text that has nothing in which it differs from the code page.
bool AnsiToUtf8::TranslatePlain932(std::string_view text) {
    for (const char control : {'\x1A', '\x1C', '\x7F'}) { // none is ever a trail byte
        if (text.find(control) != std::string_view::npos)
            return false;
    }
    MakeRoom(text.size());
    STranslationReport report;
    auto produced = static_cast<DWORD>(m_capacity);
    const BOOL done = TranslateCCSID(932, kUtf8, reinterpret_cast<const BYTE*>(text.data()),
                                     static_cast<DWORD>(text.size()), m_buffer.get(), &produced,
                                     nullptr, translateSubstitute, &report);
    m_size = produced;
    return done && report.ullMalformed == 0;
}

std::span<const BYTE> AnsiToUtf8::ConvertByCharacters(std::span<const BYTE> slice, bool last) {
    std::string text = std::move(m_pending);
    text.append(reinterpret_cast<const char*>(slice.data()), slice.size());
    m_pending.clear();
    if (!last) {
        const std::size_t whole = WholeCharacters(text);
        m_pending = text.substr(whole);
        text.resize(whole);
    }
    if (m_page.GetNumber() == 932 && TranslatePlain932(text))
        return {m_buffer.get(), m_size};
    m_converted = CodePage::Find(65001)->FromWide(m_page.ToWide(text));
    m_isForeign |= m_page.IsUtf8() && m_converted != text;
    return {reinterpret_cast<const BYTE*>(m_converted.data()), m_converted.size()};
}

} // namespace vnbytstr::detail

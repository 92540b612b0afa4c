#include "text/AnsiToUtf8Internal.h"

#include "platform/companion/Ccsid.h"

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
    constexpr std::size_t kSlack = 96; // for what is pending, and for the kernels' wide stores
    if (m_capacity < 3 * slice.size() + kSlack) {
        m_capacity = 3 * slice.size() + kSlack;
        m_buffer = std::make_unique_for_overwrite<BYTE[]>(m_capacity);
    }
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

std::span<const BYTE> AnsiToUtf8::ConvertByCharacters(std::span<const BYTE> slice, bool last) {
    std::string text = std::move(m_pending);
    text.append(reinterpret_cast<const char*>(slice.data()), slice.size());
    m_pending.clear();
    if (!last) {
        const char* const end = text.data() + text.size();
        const char* p = text.data();
        if (m_page.IsUtf8()) // what was cut begins among the last three bytes
            p = end - std::min<std::size_t>(text.size(), 3);
        while (p < end && !m_page.IsCutShort(p, end))
            p += m_page.CharLength(p, end);
        m_pending.assign(p, end);
        text.resize(text.size() - m_pending.size());
    }
    m_converted = CodePage::Find(65001)->FromWide(m_page.ToWide(text));
    return {reinterpret_cast<const BYTE*>(m_converted.data()), m_converted.size()};
}

} // namespace vnbytstr::detail

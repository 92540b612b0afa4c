#include "src/window/controls/TextMatch.h"

#include "src/charset/CodePage.h"

#include <algorithm>
#include <array>

namespace vnbytstr::detail {

namespace {

constexpr std::array<char, 256> kLower = [] {
    std::array<char, 256> table{};
    for (int i = 0; i < 256; ++i)
        table[static_cast<std::size_t>(i)] =
            static_cast<char>(i >= 'A' && i <= 'Z' ? i - 'A' + 'a' : i);
    return table;
}();
char Lower(char ch) { return kLower[static_cast<BYTE>(ch)]; }

} // namespace

TextMatch::TextMatch(std::string_view text)
    : m_lower(text), m_ascii(std::all_of(text.begin(), text.end(),
                                         [](char ch) { return static_cast<BYTE>(ch) < 0x80; })) {
    const CodePage& page = CodePage::Ansi();
    page.MakeLower(m_lower);
    if (text.empty())
        return;
    std::string upper(m_lower);
    page.MakeUpper(upper);
    // A character keeps its length from case to case, but not its first byte.
    m_first[0] = m_lower[0];
    m_first[1] = upper[0];
}

bool TextMatch::Compare(std::string_view text) const {
    if (m_ascii)
        return std::equal(m_lower.begin(), m_lower.end(), text.begin(),
                          [](char wanted, char ch) { return wanted == Lower(ch); });
    std::string beginning(text.substr(0, m_lower.size()));
    CodePage::Ansi().MakeLower(beginning);
    return beginning == m_lower;
}

} // namespace vnbytstr::detail

#include "src/window/controls/TextMatch.h"

#include "src/charset/CodePage.h"
#include "src/framework/AsciiCase.h"

#include <algorithm>

namespace vnbytstr::detail {

TextMatch::TextMatch(std::string_view text)
    : m_lower(text), m_ascii(std::all_of(text.begin(), text.end(), [](char ch) {
          return static_cast<unsigned char>(ch) < 0x80;
      })) {
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
                          [](char wanted, char ch) { return wanted == AsciiLower(ch); });
    std::string beginning(text.substr(0, m_lower.size()));
    CodePage::Ansi().MakeLower(beginning);
    return beginning == m_lower;
}

} // namespace vnbytstr::detail

#include "src/lists/LongText.h"

#include "src/charset/CodePage.h"

namespace vnbytstr::detail {

std::string_view Beginning(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes)
        return text;
    // CharStart gets a few bytes more than are kept, not the whole text, which may be 100 MB.
    const std::string_view head = text.substr(0, bytes);
    const CodePage& page = CodePage::Ansi();
    return head.substr(0, page.CharStart(text.substr(0, bytes + 8), bytes));
}

} // namespace vnbytstr::detail

#include "src/help/HelpIndex.h"

#include "vnbytstr/HTMLHelp.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace vnbytstr::detail {

namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

std::string_view TrimLeft(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text;
}

bool ReadIdentifier(std::string_view text, DWORD& identifier) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, identifier);
    return error == std::errc() && stop == end;
}

/// What a message shows of a text that may be of any length.
std::string Excerpt(std::string_view text) {
    constexpr std::size_t kShown = 40;
    text = text.substr(0, text.find_first_of("\r\n"));
    return text.size() <= kShown ? std::string(text) : std::string(text.substr(0, kShown)) + "...";
}

bool BeginsWithIgnoringCase(std::string_view text, std::string_view beginning) {
    const auto lower = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
    };
    return text.size() >= beginning.size() &&
           std::equal(beginning.begin(), beginning.end(), text.begin(),
                      [&](char left, char right) { return left == lower(right); });
}

} // namespace

BOOL HelpIndexException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const {
    if (helpContext != nullptr)
        *helpContext = 0;
    if (buffer == nullptr || size == 0)
        return FALSE;
    const std::size_t length = std::min<std::size_t>(m_text.size(), size - 1);
    std::memcpy(buffer, m_text.data(), length);
    buffer[length] = '\0';
    return TRUE;
}

void ReadHelpIndex(std::string_view text, HelpTopics& topics) {
    const std::size_t heading = text.find('\n');
    if (heading == std::string_view::npos)
        throw new HelpIndexException(HelpFailure::NoHeading,
                                     "The index has no heading that ends in a line feed");
    text = TrimLeft(text.substr(heading + 1));
    text = text.substr(0, text.find_last_not_of(kBlanks) + 1); // none: npos + 1 is 0
    while (!text.empty()) {
        const std::size_t comma = text.find(',');
        if (comma == std::string_view::npos)
            throw new HelpIndexException(HelpFailure::NoComma,
                                         "No comma follows \"" + Excerpt(text) + "\"");
        DWORD identifier = 0;
        if (!ReadIdentifier(text.substr(0, comma), identifier))
            throw new HelpIndexException(HelpFailure::NoNumber,
                                         "\"" + Excerpt(text.substr(0, comma)) +
                                             "\" is no number from 0 to 4294967295");
        const std::size_t end = std::min(text.find('\n', comma), text.size());
        std::string_view page = text.substr(comma + 1, end - comma - 1);
        if (page.ends_with('\r'))
            page.remove_suffix(1);
        topics.try_emplace(identifier, page.data(), static_cast<int>(page.size()));
        text = TrimLeft(text.substr(end));
    }
}

DWORD MapHelpRequest(DWORD data, UINT command) {
    switch (command) {
    case CVNHTMLHelp::helpContext:
        if (data == 0)
            return CVNHTMLHelp::contents - 0x10000;
        if (data <= 0x10000)
            return data;
        if (data <= 0x20000)
            return data - 0x10000;
        if (data <= 0x30000)
            return data - 0x20000;
        return data <= 0x50000 ? data - 0x30000 : data - 0x50000;
    case CVNHTMLHelp::helpPartialKey:
        return CVNHTMLHelp::partialKeySearch;
    case CVNHTMLHelp::helpOnHelpCommand:
        return CVNHTMLHelp::helpOnHelp;
    case CVNHTMLHelp::helpContents:
        return CVNHTMLHelp::contents;
    default:
        return data;
    }
}

std::string_view FileOfPage(std::string_view page) {
    for (std::size_t i = 0; i < page.size(); ++i) {
        for (const std::string_view ending : {".html", ".htm"}) {
            if (BeginsWithIgnoringCase(page.substr(i), ending))
                return page.substr(0, i + ending.size());
        }
    }
    return page.substr(0, page.find('#'));
}

bool IsAddress(std::string_view page) {
    return BeginsWithIgnoringCase(page, "http://") || BeginsWithIgnoringCase(page, "https://");
}

} // namespace vnbytstr::detail

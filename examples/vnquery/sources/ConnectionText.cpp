#include "vnquery/sources/ConnectionText.h"

#include "vnquery/result/AsciiUpper.h"

#include <algorithm>
#include <array>

namespace vnquery {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

/// Drivers have keys of their own, such as "SSLKeyPassword": rather too much is hidden.
bool IsSecret(std::string_view key) {
    const std::string upper = ToUpper(key);
    return std::ranges::any_of(std::array{"PWD", "PASS", "SECRET", "TOKEN"}, [&](const char* word) {
        return upper.find(word) != std::string::npos;
    });
}

/// End of the value that begins at `at`: the next semicolon outside of braces. Within them a
/// closing brace is doubled, but not every driver reads it so: a secret ends where the later of the
/// two readings ends it, another value where the earlier one does.
std::size_t EndOfValue(std::string_view text, std::size_t at, bool isSecret) {
    const std::size_t first = text.find_first_not_of(kBlanks, at);
    if (first < text.size() && text[first] == '{') {
        at = std::min(text.find('}', first), text.size());
        while (isSecret && at + 1 < text.size() && text[at + 1] == '}')
            at = std::min(text.find('}', at + 2), text.size());
    }
    return std::min(text.find(';', at), text.size());
}

} // namespace

std::string HidePasswords(std::string_view text) {
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t keyEnd = std::min(text.find_first_of("=;", at), text.size());
        const bool hasValue = keyEnd < text.size() && text[keyEnd] == '=';
        const std::string_view key = text.substr(at, keyEnd - at);
        const bool isSecret = hasValue && IsSecret(key);
        const std::size_t end = hasValue ? EndOfValue(text, keyEnd + 1, isSecret) : keyEnd;
        if (isSecret)
            shown.append(key).append("=***");
        else
            shown += text.substr(at, end - at);
        if (end < text.size())
            shown += ';';
        at = end + 1;
    }
    return shown;
}

} // namespace vnquery

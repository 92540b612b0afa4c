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

/// The string with `mask` in the place of the secrets' values, or without them.
std::string Mask(std::string_view text, const char* mask) {
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t keyEnd = std::min(text.find_first_of("=;", at), text.size());
        const bool hasValue = keyEnd < text.size() && text[keyEnd] == '=';
        const std::string_view key = text.substr(at, keyEnd - at);
        const bool isSecret = hasValue && IsSecret(key);
        const std::size_t end = hasValue ? EndOfValue(text, keyEnd + 1, isSecret) : keyEnd;
        if (!isSecret)
            shown += text.substr(at, end - at);
        else if (mask)
            shown.append(key).append("=").append(mask);
        if (end < text.size() && (!isSecret || mask))
            shown += ';';
        at = end + 1;
    }
    return shown;
}

std::string_view Trim(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

} // namespace

std::string HidePasswords(std::string_view text) { return Mask(text, "***"); }
std::string RemovePasswords(std::string_view text) { return Mask(text, nullptr); }

ConnectionKeys ParseConnection(std::string_view text) {
    ConnectionKeys keys;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t keyEnd = std::min(text.find_first_of("=;", at), text.size());
        const bool hasValue = keyEnd < text.size() && text[keyEnd] == '=';
        const std::size_t end = hasValue ? EndOfValue(text, keyEnd + 1, true) : keyEnd;
        std::string value(hasValue ? Trim(text.substr(keyEnd + 1, end - keyEnd - 1)) : "");
        if (value.size() > 1 && value.front() == '{' && value.back() == '}') {
            value = value.substr(1, value.size() - 2);
            for (std::size_t i = 0; (i = value.find("}}", i)) != std::string::npos; ++i)
                value.erase(i, 1);
        }
        if (hasValue)
            keys.emplace_back(Trim(text.substr(at, keyEnd - at)), value);
        at = end + 1;
    }
    return keys;
}

std::string MakeConnection(const ConnectionKeys& keys) {
    std::string text;
    for (auto [key, value] : keys) {
        const bool isQuoted = value.find_first_of("[]{}(),;?*=!@") != std::string::npos ||
                              Trim(value).size() != value.size();
        for (std::size_t i = 0; isQuoted && (i = value.find('}', i)) != std::string::npos; i += 2)
            value.insert(i, 1, '}');
        text.append(key).append(isQuoted ? "={" : "=").append(value).append(isQuoted ? "};" : ";");
    }
    return text;
}

} // namespace vnquery

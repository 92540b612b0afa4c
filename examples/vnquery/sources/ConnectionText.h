// ODBC connection strings: their keys, and how they may be shown and kept.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vnquery {

/// The connection string with "***" in the place of each value whose key sounds like a secret
/// (password, token). Where drivers read braces in two ways, rather too much is hidden.
std::string HidePasswords(std::string_view text);
/// The same without those keys.
std::string RemovePasswords(std::string_view text);

/// Keys and values in their order.
using ConnectionKeys = std::vector<std::pair<std::string, std::string>>;
/// Values without the braces around them; what is no key and value is left out.
ConnectionKeys ParseConnection(std::string_view text);
/// A string that ParseConnection reads so, for keys without = ; and blanks at their ends. Values
/// with characters that mean something to ODBC are in braces, a closing brace within is doubled.
std::string MakeConnection(const ConnectionKeys& keys);

} // namespace vnquery

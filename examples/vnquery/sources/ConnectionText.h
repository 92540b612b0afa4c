// ODBC connection strings as they may be shown.
#pragma once

#include <string>
#include <string_view>

namespace vnquery {

/// The connection string with "***" in the place of each value whose key sounds like a secret
/// (password, token). Where drivers read braces in two ways, rather too much is hidden.
std::string HidePasswords(std::string_view text);

} // namespace vnquery

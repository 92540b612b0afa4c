// Connections that are kept under a name.
#pragma once

#include "vnquery/sources/Connection.h"

#include <optional>
#include <string>
#include <vector>

namespace vnquery {

struct SavedConnection {
    Connection connection;    ///< without its password
    bool hasPassword = false; ///< it had one, which is to be asked for
};

/// They are kept in the profile. No value whose key sounds like a secret is: see RemovePasswords.
std::vector<std::string> ListSavedConnections();
std::optional<SavedConnection> FindSavedConnection(const std::string& name);
/// Adds or replaces one. False when that could not be saved, as in the next.
bool SaveConnection(const std::string& name, const Connection& connection);
bool RemoveConnection(const std::string& name);

} // namespace vnquery

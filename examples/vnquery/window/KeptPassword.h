// Passwords of saved connections, in the desktop's secret service.
#pragma once

#include <QString>

#include <optional>

namespace vnquery {

/// Whether there is a secret service to keep passwords in.
bool CanKeepPasswords();
/// The password that is kept under that name; nothing without one.
std::optional<QString> ReadPassword(const QString& name);
/// Keeps a password; an empty one removes what is kept. Returns why that failed, else "".
QString KeepPassword(const QString& name, const QString& password);

} // namespace vnquery

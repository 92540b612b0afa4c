// The language of the program's texts and of Qt's own.
#pragma once

#include <QString>

namespace vnquery {

/// Loads the texts of the interface's language for the program and for Qt's dialogs, and turns the
/// program's direction; all widgets get QEvent::LanguageChange. At the start, and after a change.
void UseTextLanguage();

/// Keeps the language with that code (GetInstalledLanguages) in the profile and uses it. False when
/// it could not be kept; it is used until the program ends then.
bool SetTextLanguage(const QString& code);

} // namespace vnquery

// Texts between the program and its windows.
#pragma once

#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"

#include "vnbytstr/Window.h"

#include <string>

namespace vnquery {

inline std::string ToString(const CString& text) { return static_cast<const char*>(text); }
inline CString ToCString(const std::string& text) { return text.c_str(); }

/// The text of a window or control.
std::string GetText(const CWnd& window);
/// The text of a dialog's control.
std::string GetItemText(const CWnd& dialog, int id);

/// Shows a message box with that text, its first letter capitalized; returns the button.
int ShowMessage(const std::string& text, UINT type = MB_OK | MB_ICONEXCLAMATION);

/// Calls a window's handling of a message. What the library throws there, such as for a value that
/// cannot be read back from the temporary file, is shown, and the message counts as handled: it
/// must not pass through the event loop.
template <class Handling>
LRESULT TellFailures(Handling&& handling) {
    try {
        return handling();
    } catch (CException* error) {
        ShowMessage(TakeMessage(error));
        return 0;
    }
}

/// What is wrong with the settings (damaged, unreadable, not saved), after a blank line, for the
/// end of a message; empty when they are sound.
std::string SettingsTrouble();

/// WS_EX_LAYOUTRTL when the texts run from right to left, else 0.
DWORD LayoutStyle();

/// The text without the ampersands that mark letters, and without the key after a tab.
std::string WithoutMarks(const std::string& text);

} // namespace vnquery

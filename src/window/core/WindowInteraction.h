// The Interaction of programs with windows.
#pragma once

#include "src/text/ConsoleInteraction.h"

namespace vnbytstr {

/// Message boxes are windows over the active one, in the language of the resources. A call from
/// another thread than the main one waits while the main thread shows the box. The Help button
/// sends WM_HELP with the message's help identifier to the window underneath and leaves the box
/// open. Before a box opens, the window that has the mouse gets WM_CANCELMODE.
///
/// Without a display, message boxes and ShellExecute work as on the console.
class WindowInteraction : public ConsoleInteraction {
public:
    int MessageBox(const char* text, const char* caption, UINT type, UINT helpContext) override;
};

/// Makes the window version current, once, unless another one is installed.
void InstallWindowInteraction();

} // namespace vnbytstr

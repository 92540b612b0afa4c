// A message box of the system's own, for programs that have no terminal to write to.
#pragma once

#include "vnbytstr/framework/MessageBoxTypes.h"

namespace vnbytstr::detail {

/// Shows a message box and returns the button that ended it. 0, and nothing is shown, where the
/// system has none without a window layer (POSIX), or this program has a terminal or another place
/// for its messages.
int ShowMessageWindow(const char* text, const char* caption, UINT type);

} // namespace vnbytstr::detail

// Watches the mouse buttons and keys of the whole program, also in windows that are not of this
// library.
#pragma once

#include "src/window/core/HandAction.h"

#include <Qt>

namespace vnbytstr::detail {

/// Begins to watch the application's events.
void WatchHand();
/// The buttons that are down now. A button that went up while a message box was open is not: no
/// window of this library was told of it.
Qt::MouseButtons ButtonsDown();

} // namespace vnbytstr::detail

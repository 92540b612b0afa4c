// What the system classes that host Qt widgets share.
#pragma once

#include "src/window/core/WindowInternal.h"

namespace vnbytstr::detail {

/// The parent for a hosted widget.
QWidget* HostParent(Window& window);
/// Window::Host, and the directions and frames that the styles ask for.
void HostControl(Window& window, QWidget* inner);
/// Whether the WM_CHAR being handled is part of a text composed by an input method; the hosted
/// widget gets that text as a whole with its last byte.
bool IsComposed(const Window& window);
/// Registers the system classes, except the list box.
void RegisterControlClasses();

template <class Control>
std::unique_ptr<SystemControl> MakeControl(Window& window) {
    return std::make_unique<Control>(window);
}

} // namespace vnbytstr::detail

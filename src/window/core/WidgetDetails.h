// What the classes that host Qt's widgets have in common. Inside platform/window only.
#pragma once

#include "src/window/core/WindowInternal.h"

namespace vnbytstr::detail {

/// The widget to make a hosted one in.
QWidget* HostParent(Window& window);
/// Window::Host, and the directions and frames that the styles ask for.
void HostControl(Window& window, QWidget* inner);
/// Whether the message being handled comes of what an input method composed: the hosted widget gets
/// that as a whole when the last byte has come through.
bool IsComposed(const Window& window);
/// The system classes of this library's controls, but the list box.
void RegisterControlClasses();

template <class Control>
std::unique_ptr<SystemControl> MakeControl(Window& window) {
    return std::make_unique<Control>(window);
}

} // namespace vnbytstr::detail

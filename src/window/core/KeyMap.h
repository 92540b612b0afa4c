// Qt's keys as virtual keys and characters.
#pragma once

#include <string>

class QKeyEvent;

namespace vnbytstr::detail {

/// The virtual key (VK_*) of a key event; 0 for a key that has none.
int VirtualKey(const QKeyEvent& event);
/// The characters that the key makes, as bytes of the ANSI code page. `vk`: its virtual key.
std::string KeyText(const QKeyEvent& event, int vk);

} // namespace vnbytstr::detail

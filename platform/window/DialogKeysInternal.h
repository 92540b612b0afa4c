// The order of a window's controls, and what keys do among them. Inside platform/window only.
#pragma once

#include "WindowInternal.h"

#include <vector>

namespace vnbytstr::detail {

/// The windows among which this one stands, itself included, in their order.
std::vector<Window*> SiblingsOf(const Window& window);
std::vector<Window*> ChildrenOf(const Window& parent);
/// The controls from the nearest WS_GROUP at or before this one up to the next.
std::vector<Window*> ControlsOfGroup(const Window& window);
/// The first control behind this one that is no label and no frame; null for none.
Window* NextFocusable(const Window& window);
/// Gives the focus as the keyboard does: an edit control's text is selected.
void FocusControl(Window& control);

} // namespace vnbytstr::detail

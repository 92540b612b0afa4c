// The order of a window's controls, and what keys do among them.
#pragma once

#include "src/window/core/WindowInternal.h"

#include <vector>

namespace vnbytstr::detail {

/// This window and its siblings in their order.
std::vector<Window*> SiblingsOf(const Window& window);
std::vector<Window*> ChildrenOf(const Window& parent);
/// The controls from the nearest WS_GROUP at or before this one up to the next.
std::vector<Window*> ControlsOfGroup(const Window& window);
/// The next control that is neither a label nor a frame; null when there is none.
Window* NextFocusable(const Window& window);
/// Where Tab goes from a control (null: from the beginning, or the end): the next WS_TABSTOP that
/// is enabled and not hidden; of a group of radio buttons the checked one. Null when there is none.
Window* NextTabStop(const Window& dialog, const Window* from, bool back);
/// Gives the focus as the keyboard does: an edit control's text is selected.
void FocusControl(Window& control);

} // namespace vnbytstr::detail

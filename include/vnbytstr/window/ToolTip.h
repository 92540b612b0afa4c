// Tooltips: small texts near the pointer.
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

/// Shows a tooltip at once, near a point of the window's client area. It disappears when the
/// pointer leaves `rect` (null: the window), on a click, a key, or HideTip.
VNBYTSTR_CONTROLS_API void ShowTip(HWND window, POINT point, LPCSTR text, LPCRECT rect = nullptr);
VNBYTSTR_CONTROLS_API void HideTip();
/// The text of the tooltip; empty when none is shown.
VNBYTSTR_CONTROLS_API CString GetShownTip();

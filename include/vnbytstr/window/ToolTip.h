// Tips: small texts near the pointer.
#pragma once

#include "vnbytstr/window/Wnd.h"

/// The text that appears when the pointer rests over a window; null or empty takes it away.
VNBYTSTR_API void SetToolTip(HWND window, LPCSTR text);
/// Shows a text at once, near a point of the window's client area. It goes when the pointer leaves
/// `rect` (null: the window), on a click, a key, or HideTip.
VNBYTSTR_API void ShowTip(HWND window, POINT point, LPCSTR text, LPCRECT rect = nullptr);
VNBYTSTR_API void HideTip();
/// The text being shown; empty when none is.
VNBYTSTR_API CString GetShownTip();

// Tips: small texts near the pointer.
#pragma once

#include "vnbytstr/window/Wnd.h"

/// Shows a text at once, near a point of the window's client area. It goes when the pointer leaves
/// `rect` (null: the window), on a click, a key, or HideTip.
VNBYTSTR_API void ShowTip(HWND window, POINT point, LPCSTR text, LPCRECT rect = nullptr);
VNBYTSTR_API void HideTip();
/// The text being shown; empty when none is.
VNBYTSTR_API CString GetShownTip();

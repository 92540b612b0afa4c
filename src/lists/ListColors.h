// The colours of a list that no palette has: stripes and marks. Plain arithmetic.
#pragma once

#include "vnbytstr/window/WindowTypes.h"

namespace vnbytstr::detail {

/// How far apart two colours are in lightness, 1 to 21 (WCAG 2.1, contrast ratio).
double Contrast(COLORREF a, COLORREF b);
/// The window's colour with a little of the text's, in light and dark palettes alike.
COLORREF StripeColor(COLORREF window, COLORREF text);
/// For marks behind a text on a background: of the hue of `accent` if that can be seen, else
/// lighter or darker than the background, away from the text if possible. The text stays legible:
/// its contrast to the mark is 4.5, or three quarters of that to the background if that is less.
COLORREF MarkColor(COLORREF background, COLORREF text, COLORREF accent);

} // namespace vnbytstr::detail

#include "src/lists/ListColors.h"

#include <algorithm>
#include <cmath>

namespace vnbytstr::detail {
namespace {

constexpr double kLegible = 4.5;
/// Two areas that are told apart.
constexpr double kVisible = 1.15;
/// Of the contrast that a grey text has anyway.
constexpr double kKeptContrast = 0.75;

/// `percent` of `b`, the rest `a`.
COLORREF Mixed(COLORREF a, COLORREF b, int percent) {
    const auto mixed = [percent](int x, int y) {
        return static_cast<BYTE>((x * (100 - percent) + y * percent) / 100);
    };
    return RGB(mixed(GetRValue(a), GetRValue(b)), mixed(GetGValue(a), GetGValue(b)),
               mixed(GetBValue(a), GetBValue(b)));
}

/// Relative luminance, 0 to 1.
double Lightness(COLORREF color) {
    const auto linear = [](BYTE value) {
        const double v = value / 255.0;
        return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(GetRValue(color)) + 0.7152 * linear(GetGValue(color)) +
           0.0722 * linear(GetBValue(color));
}

} // namespace

double Contrast(COLORREF a, COLORREF b) {
    const double first = Lightness(a);
    const double second = Lightness(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

COLORREF StripeColor(COLORREF window, COLORREF text) {
    constexpr int kOfText = 6; // percent
    return Mixed(window, text, kOfText);
}

COLORREF MarkColor(COLORREF background, COLORREF text, COLORREF accent) {
    const double needed = std::min(kLegible, kKeptContrast * Contrast(background, text));
    const COLORREF away =
        Lightness(text) > Lightness(background) ? RGB(0, 0, 0) : RGB(255, 255, 255);
    for (const COLORREF toward : {accent, away, text})
        for (const int percent : {55, 45, 35, 25, 20, 75, 100}) {
            const COLORREF mark = Mixed(background, toward, percent);
            if (Contrast(mark, text) >= needed && Contrast(mark, background) >= kVisible)
                return mark;
        }
    return background;
}

} // namespace vnbytstr::detail

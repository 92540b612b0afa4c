// The colours that attributes give by name.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <array>

namespace vnbytstr::detail {

struct ColorName {
    const char* name;
    COLORREF color; ///< 0x00BBGGRR
};

/// In the order in which they are compared. The names and values are our own: "Navy" and "Teal" are
/// not what they are on the web.
inline constexpr std::array<ColorName, 22> kColorNames = {{
    {"Black", 0x000000},     {"Red", 0x0000FF},        {"Green", 0x00FF00},
    {"Blue", 0xFF0000},      {"Magenta", 0xFF00FF},    {"Cyan", 0xFFFF00},
    {"White", 0xFFFFFF},     {"LightGray", 0xC0C0C0},  {"DarkGray", 0x404040},
    {"Gray", 0x808080},      {"PaleYellow", 0xD0FFFF}, {"LightYellow", 0x80FFFF},
    {"Yellow", 0x00FFFF},    {"LimeGreen", 0xC0DCC0},  {"Teal", 0x808040},
    {"DarkGreen", 0x008000}, {"Maroon", 0x000080},     {"Purple", 0x800080},
    {"Orange", 0x0080FF},    {"Khaki", 0x6B97A7},      {"Brown", 0x404080},
    {"Navy", 0x804000},
}};

} // namespace vnbytstr::detail

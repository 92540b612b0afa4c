// The text that the user types to find a row.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <string_view>

namespace vnbytstr::detail {

/// A pause of more than this, in milliseconds, starts a new search.
inline constexpr DWORD kTypeAheadPause = 1000;

/// Appends what was typed at tick `now` to `text`, after emptying it if there was a pause since
/// tick `last`, and sets `last` to `now`. Ticks wrap at 32 bits.
inline void AddTyped(CString& text, DWORD& last, DWORD now, std::string_view typed) {
    if (now - last > kTypeAheadPause)
        text.Empty();
    last = now;
    text += CString(typed.data(), static_cast<int>(typed.size()));
}

} // namespace vnbytstr::detail

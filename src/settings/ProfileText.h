// How names and values stand in the profile file.
#pragma once

#include "src/charset/CodePage.h"

#include <string>
#include <string_view>

namespace vnbytstr::detail {

enum class ProfileToken { Section, Name, Value };

/// The UTF-8 form of a text in code page `page`. What could be taken for the file's own marks,
/// control characters, and bytes that are not a character of the page become %XX, so that any byte
/// string comes back whole.
std::string EncodeProfileText(std::string_view bytes, ProfileToken token, const CodePage& page);

/// A text that is in that form but for what a file cannot have: that becomes %XX. UTF-8.
std::string EscapeMarks(std::string_view text, ProfileToken token);

/// Every byte as %XX.
std::string EscapeAll(std::string_view bytes);

/// The reverse of EncodeProfileText. A '%' without two hexadecimal digits after it stands for
/// itself. `isWhole`, when it is not null, receives whether the page has every character of the
/// text; the others become what the page has for missing ones.
std::string DecodeProfileText(std::string_view text, const CodePage& page, bool* isWhole = nullptr);

} // namespace vnbytstr::detail

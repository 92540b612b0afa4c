// Text between ODBC's UTF-16 and the program's UTF-8.
#pragma once

#include "vnquery/sources/Odbc.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vnquery {

/// UTF-16 with a terminating zero, for ODBC's functions that end in W.
std::vector<SQLWCHAR> ToWide(std::string_view text);
std::string FromWide(const SQLWCHAR* text, std::size_t count);
/// The text that an ODBC function has put into a buffer; `units` is its length as the function
/// tells it, which may be more than the buffer holds, or negative.
template <std::size_t Size>
std::string FromBuffer(const SQLWCHAR (&buffer)[Size], SQLLEN units) {
    return FromWide(buffer, static_cast<std::size_t>(
                                std::clamp<SQLLEN>(units, 0, static_cast<SQLLEN>(Size) - 1)));
}

/// Converts UTF-16 to UTF-8 in memory of its own, which it keeps for the next text. Half a
/// surrogate pair becomes U+FFFD, as in the library's translation.
class Utf8Text {
public:
    /// Valid until the next call.
    std::string_view Convert(const SQLWCHAR* text, std::size_t count);

private:
    std::vector<char> m_bytes;
};

/// Converts pieces of UTF-16 to UTF-8; a surrogate pair may lie across two of them.
class WideTextDecoder {
public:
    /// The piece, together with what was left of the one before, in UTF-8; valid until the next
    /// call.
    std::string_view Decode(const SQLWCHAR* text, std::size_t count, bool last);

private:
    Utf8Text m_text;
    std::vector<SQLWCHAR> m_units;
    std::optional<SQLWCHAR> m_left; ///< the first half of a pair
};

} // namespace vnquery

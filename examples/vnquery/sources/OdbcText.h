// Text between ODBC's UTF-16 and the program's UTF-8.
#pragma once

#include "vnquery/sources/Odbc.h"

#include <string>
#include <string_view>
#include <vector>

namespace vnquery {

/// UTF-16 with a terminating zero, for ODBC's functions that end in W.
std::vector<SQLWCHAR> ToWide(std::string_view text);
std::string FromWide(const SQLWCHAR* text, std::size_t count);

/// Turns pieces of UTF-16 into UTF-8, also where a pair of surrogates lies across two of them.
class WideTextDecoder {
public:
    /// The piece, with what was left of the one before, in UTF-8. `last`: nothing follows; a half
    /// of a pair then becomes U+FFFD.
    CByteStream Decode(const SQLWCHAR* text, std::size_t count, bool last);

private:
    std::vector<SQLWCHAR> m_left; ///< at most one unit
};

} // namespace vnquery

// Translates a text file from one coded character set to another.
#pragma once

#include <vnbytstr/ByteStore.h>

#include <string>

namespace vnquery {

/// Writes `from` (a file) in another coded character set to `to`; the two may be the same file.
/// Throws Failure; a file `to` that exists is then as it was.
void TranslateFile(WORD fromCcsid, WORD toCcsid, const std::string& from, const std::string& to);

} // namespace vnquery

// Translates a text file from one coded character set to another.
#pragma once

#include "vnbytstr/ByteStore.h"

#include <string>

namespace vnquery {

/// Writes the file `from`, translated, to the file `to`; both may be the same file. Throws Failure;
/// an older file `to` then stays as it was.
void TranslateFile(WORD fromCcsid, WORD toCcsid, const std::string& from, const std::string& to);

} // namespace vnquery

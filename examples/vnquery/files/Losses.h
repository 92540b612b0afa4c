// What a translation could not represent: where, and as a message.
#pragma once

#include "vnbytstr/OutputStreamWriter.h"

#include <optional>
#include <string>
#include <string_view>

namespace vnquery {

/// Offset in bytes of the first character of the text (UTF-8) that the coded character set lacks,
/// or of the first malformed sequence of bytes; nothing when the whole text can be translated.
std::optional<ULONGLONG> FindFirstLoss(std::string_view text, WORD ccsid);

/// For instance "2 characters that CCSID 37 does not hold"; "" when nothing was lost.
std::string DescribeLosses(const STranslationReport& report, WORD ccsid);

} // namespace vnquery

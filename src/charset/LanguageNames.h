// Windows' three-letter names of languages, and their display names.
#pragma once

#include "vnbytstr/framework/Export.h"

#include <string>
#include <string_view>

namespace vnbytstr {

/// Windows' abbreviated language name of a POSIX locale: "DEA" for "de_AT.UTF-8", "SRM" for
/// "sr_RS@latin". A country that Windows has no name for gives that of the language's main country
/// ("DEU" for "de_BE"), a language it does not know "ZZZ". "C", "POSIX" and the empty locale, which
/// have no language, count as English of the United States ("ENU").
VNBYTSTR_API std::string AbbreviatedLanguageName(std::string_view locale);

/// The POSIX locale (without a charset) whose abbreviated name is `code`; empty when there is none.
VNBYTSTR_API std::string LocaleOfLanguage(std::string_view code);

/// Name of the language of `locale`, with its country, in that language and in the ANSI code page,
/// beginning with a capital; in English when the page does not hold it. Empty for an empty locale.
VNBYTSTR_API std::string LanguageDisplayName(const std::string& locale);

} // namespace vnbytstr

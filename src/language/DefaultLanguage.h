// The language that goes with the system's settings.
#pragma once

#include "vnbytstr/framework/String.h"

#include <string_view>
#include <vector>

namespace vnbytstr::detail {

/// The codes a program may be translated to, in the order they are searched in.
extern const std::vector<std::string_view> kLanguageCodes;

/// The language code that goes with the system's locale and version.
CString GetDefaultUILanguage();
/// The code for a system whose abbreviated language name is `name`; `isOld`: it is of the NT family
/// and at most version 4.
CString MapLanguage(std::string_view name, bool isOld);

} // namespace vnbytstr::detail

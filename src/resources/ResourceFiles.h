// Where the resource libraries are.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <string>
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

/// Full name of the resource library of that language; empty when there is none.
CString GetResourceDLLName(const char* language, const char* prefix);

} // namespace vnbytstr::detail

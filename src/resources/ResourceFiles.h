// Where the resource libraries are.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <map>
#include <string>
#include <string_view>

namespace vnbytstr::detail {

/// Full name of the resource library of that language; empty when there is none.
CString GetResourceDLLName(const char* language, const char* prefix);
/// The resource libraries `prefix` + language code + ".dll" that are there: the full name of each by its
/// code. Of several with one name the first folder's counts.
std::map<std::string, std::string> FindResourceFiles(std::string_view prefix);

} // namespace vnbytstr::detail

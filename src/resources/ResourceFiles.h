// Which resource library is loaded: by language and folder.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <map>
#include <string>
#include <string_view>

namespace vnbytstr::detail {

/// What everything falls back to.
constexpr const char* kEnglish = "ENU";

/// Full name of the resource library of that language; empty when there is none.
CString GetResourceDLLName(const char* language, const char* prefix);
/// The resource libraries `prefix` + language code + ".dll" that are there: the full name of each
/// by its code. Of several with one name the first folder's counts.
std::map<std::string, std::string> FindResourceFiles(std::string_view prefix);

/// Loads the resource library of that language, or else the English one. Null, with the reason in
/// the trace, when there is neither or when it cannot be loaded. The caller frees it with
/// FreeResourceLibrary.
HINSTANCE LoadResourceFile(const char* language, const char* prefix);

} // namespace vnbytstr::detail

// How names lead to variables.
#pragma once

#include "vnbytstr/GlobalVars.h"

#include "platform/system/Collation.h"

#include <string>
#include <unordered_map>

#include <string_view>

namespace vnbytstr::detail {

inline std::string_view ViewOf(const CString& text) {
    return {text, static_cast<std::size_t>(text.GetLength())};
}

} // namespace vnbytstr::detail

struct CGlobalVars::SIndex {
    /// The rules names are matched by, as they were when the table was made.
    const vnbytstr::Collation* collation = &vnbytstr::Collation::Current();
    std::unordered_map<std::string, CGlobalVar*> byKey;
};

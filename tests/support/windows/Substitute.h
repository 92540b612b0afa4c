// Whether the tests run on a substitute for Windows.
#pragma once

#include "vnbytstr/framework/Types.h"

namespace vnbytstr::test {

/// True on Wine, which does some things in another way; docs/windows.md lists them.
inline bool IsSubstitute() {
    return ::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}

} // namespace vnbytstr::test

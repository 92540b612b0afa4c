// Files longer than the standard library can make on every system.
#pragma once

#include "src/os/PlatformSystem.h"

#include <stdexcept>
#include <string>

namespace vnbytstr::test {

/// Cuts a file or extends it with zeros.
inline void SetLength(const std::string& name, std::uint64_t length) {
    System& system = PlatformSystem();
    FileHandle file = kNoFile;
    if (system.OpenFile(name.c_str(), kOpenWrite, file) != 0 ||
        (system.SetFileLength(file, length) | system.CloseFile(file)) != 0)
        throw std::runtime_error(name + " did not get that length");
}

} // namespace vnbytstr::test

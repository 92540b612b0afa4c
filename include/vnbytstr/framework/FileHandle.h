// An open file as the system knows it.
#pragma once

#include "vnbytstr/framework/Types.h"

namespace vnbytstr {

/// An open file. A value of the system's own (a descriptor on POSIX): files are read, written,
/// moved in and closed by CFile. kNoFile is never an open one.
using FileHandle = std::intptr_t;
inline constexpr FileHandle kNoFile = -1;

/// Tells a file from every other one that exists at the same time, whatever its names are. A
/// number is used again once its file is gone and nobody has it open.
struct FileIdentity {
    /// The file system's number and the file's in it.
    std::uint64_t device = 0;
    std::uint64_t file = 0;

    /// FALSE as constructed: no file.
    bool IsKnown() const noexcept { return device != 0 || file != 0; }
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

} // namespace vnbytstr

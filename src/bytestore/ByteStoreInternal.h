// Shared by the source files of CByteStore.
#pragma once

#include "src/bytestore/Containers.h"
#include "vnbytstr/ByteStore.h"

namespace vnbytstr::detail {

/// Throws the CFileException for a system error number; nothing for 0.
inline void ThrowIf(int error, const char* name) {
    if (error != 0)
        CFileException::ThrowOsError(error, name);
}

/// The first accesses of a series, which read the clock; the ones after them make up a run.
inline constexpr int kStampsBeforeRun = 16;

} // namespace vnbytstr::detail

// What NativeSystem's source files here share.
#pragma once

#include "src/os/System.h"

#include <sys/stat.h>

#include <cerrno>

namespace vnbytstr::posix {

/// The scratch mark of FileStatus is the sticky bit: the kernel ignores it on regular files, and
/// nobody sets it by chance.
inline constexpr mode_t kScratchMark = S_ISVTX;

inline int Descriptor(FileHandle handle) noexcept { return static_cast<int>(handle); }

/// Runs a system call again while a signal interrupts it.
template <typename Call>
auto Retry(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// 0, or the error number of a call that gives a negative value on failure.
template <typename Call>
int ErrorOf(Call call) {
    return Retry(call) < 0 ? errno : 0;
}

void FillStatus(const struct stat& from, FileStatus& status) noexcept;

} // namespace vnbytstr::posix

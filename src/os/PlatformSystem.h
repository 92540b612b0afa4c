// The factory of the real system. Each folder for a system (posix, windows) implements it once.
#pragma once

#include "src/os/System.h"

namespace vnbytstr {

/// The real system of this platform, made at the first call. Takes no memory from the heap, and is
/// never destroyed: objects with static lifetime may still use it at exit.
System& PlatformSystem() noexcept;

} // namespace vnbytstr

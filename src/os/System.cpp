#include "src/os/System.h"

#include "src/os/PosixSystem.h"

#include <atomic>
#include <new>

namespace vnbytstr {

namespace {
std::atomic<System*> g_installed{nullptr};
std::atomic<unsigned> g_installCount{0};
} // namespace

System& System::Current() noexcept {
    if (System* installed = g_installed.load(std::memory_order_acquire))
        return *installed;
    // Never destroyed: objects with static lifetime may still delete their files at exit. It takes
    // no memory that there might be none of.
    alignas(PosixSystem) static std::byte place[sizeof(PosixSystem)];
    static System* const posix = new (place) PosixSystem;
    return *posix;
}

System* System::Install(System* system) noexcept {
    System* previous = g_installed.exchange(system, std::memory_order_acq_rel);
    g_installCount.fetch_add(1, std::memory_order_relaxed);
    return previous;
}

unsigned System::InstallCount() noexcept { return g_installCount.load(std::memory_order_relaxed); }

} // namespace vnbytstr

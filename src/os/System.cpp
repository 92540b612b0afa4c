#include "src/os/System.h"

#include "src/os/PlatformSystem.h"

#include <atomic>

namespace vnbytstr {

namespace {
std::atomic<System*> g_installed{nullptr};
std::atomic<unsigned> g_installCount{0};
} // namespace

System& System::Current() noexcept {
    if (System* installed = g_installed.load(std::memory_order_acquire))
        return *installed;
    return PlatformSystem();
}

System* System::Install(System* system) noexcept {
    System* previous = g_installed.exchange(system, std::memory_order_acq_rel);
    g_installCount.fetch_add(1, std::memory_order_relaxed);
    return previous;
}

unsigned System::InstallCount() noexcept { return g_installCount.load(std::memory_order_relaxed); }

} // namespace vnbytstr

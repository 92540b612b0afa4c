#include "vnbytstr/Interaction.h"

#include "src/framework/DefaultInteraction.h"

#include <atomic>

namespace vnbytstr {

namespace {
std::atomic<Interaction*> g_installed{nullptr};
} // namespace

Interaction& Interaction::Current() noexcept {
    if (Interaction* installed = g_installed.load(std::memory_order_acquire))
        return *installed;
    return DefaultInteraction();
}

Interaction* Interaction::Install(Interaction* interaction) noexcept {
    return g_installed.exchange(interaction, std::memory_order_acq_rel);
}

} // namespace vnbytstr

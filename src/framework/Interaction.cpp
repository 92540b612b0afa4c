#include "vnbytstr/Interaction.h"

#include "src/text/ConsoleInteraction.h"

#include <atomic>

namespace vnbytstr {

namespace {
std::atomic<Interaction*> g_installed{nullptr};
} // namespace

Interaction& Interaction::Current() noexcept {
    if (Interaction* installed = g_installed.load(std::memory_order_acquire))
        return *installed;
    static ConsoleInteraction console;
    return console;
}

Interaction* Interaction::Install(Interaction* interaction) noexcept {
    return g_installed.exchange(interaction, std::memory_order_acq_rel);
}

} // namespace vnbytstr

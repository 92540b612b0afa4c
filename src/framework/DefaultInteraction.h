// The interaction that is current until another one is installed.
#pragma once

#include "vnbytstr/Interaction.h"

namespace vnbytstr {

/// Never destroyed. The framework only asks for it: the room that has the texts of the buttons
/// defines it, with the version for programs without windows.
Interaction& DefaultInteraction() noexcept;

} // namespace vnbytstr

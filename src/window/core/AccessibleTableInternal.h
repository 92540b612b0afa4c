// Makes Qt ask the window layer for the accessible interfaces of its windows.
#pragma once

namespace vnbytstr::detail {

/// Once is enough; more does no harm.
void InstallAccessibility();

} // namespace vnbytstr::detail

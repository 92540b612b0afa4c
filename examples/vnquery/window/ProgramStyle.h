// How the desktop's style is used.
#pragma once

namespace vnquery {

/// To be called once, before the first window. The buttons of dialogs have no icons: Qt's own style
/// draws those of texts that run from right to left at the wrong end, and most desktops have none.
void UseProgramStyle();

} // namespace vnquery

// The program's help.
#pragma once

namespace vnquery {

/// Opens a help page by its number in the index, in the interface's language; what goes wrong is
/// told in a message box, or on a terminal. Whether a page was opened.
bool OpenHelpPage(unsigned topic);

} // namespace vnquery

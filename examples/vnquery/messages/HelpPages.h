// The program's help.
#pragma once

namespace vnquery {

/// Opens a help page by its number in the index, in the interface's language. Errors are shown in a
/// message box or on the terminal. Returns whether a page was opened.
bool OpenHelpPage(unsigned topic);

} // namespace vnquery

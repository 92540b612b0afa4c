// The program with a window.
#pragma once

#include "vnquery/sources/Connection.h"

#include <string>

namespace vnquery {

/// What the window begins with; all may be empty.
struct WindowStart {
    Connection connection;
    std::string sql; ///< is run at once, when there is a connection
};

/// Opens the window and runs until it is closed. Returns the exit code. Throws Failure when there
/// is no display to open it on.
int RunWindow(int argc, char** argv, const WindowStart& start);

} // namespace vnquery

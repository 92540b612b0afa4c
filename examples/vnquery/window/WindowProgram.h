// The program with a window.
#pragma once

#include "vnquery/sources/Connection.h"

#include <string>

namespace vnquery {

/// What the window starts with; all may be empty.
struct WindowStart {
    Connection connection;
    std::string sql; ///< run at once, if there is a connection
};

/// Opens the window and runs until it is closed. Returns the exit code. Throws Failure without a
/// display.
int RunWindow(int argc, char** argv, const WindowStart& start);

} // namespace vnquery

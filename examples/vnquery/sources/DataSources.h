// The ODBC data sources of this machine.
#pragma once

#include <string>
#include <vector>

namespace vnquery {

/// Names, in the driver manager's order; none when there are none, or no driver manager.
std::vector<std::string> ListDataSources();

} // namespace vnquery

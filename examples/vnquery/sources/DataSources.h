// The ODBC data sources of this machine.
#pragma once

#include <string>
#include <vector>

namespace vnquery {

/// Their names, in the driver manager's order; empty also without a driver manager.
std::vector<std::string> ListDataSources();
/// The names of the drivers that are installed.
std::vector<std::string> ListDrivers();

} // namespace vnquery

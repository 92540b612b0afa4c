// The whole export: a file written as a whole or not at all.
#pragma once

#include "Exporter.h"

#include <string>

namespace vnquery {

struct ExportSummary {
    ULONGLONG bytes = 0;
    std::string losses; ///< see Exporter::GetLosses
};

/// Writes the result to the file `name`. Throws Failure, with that name in it, and Interrupted; an
/// older file of that name is then as it was.
ExportSummary ExportToFile(const ResultSet& result, const std::string& name,
                           const ExportFormat& format, Progress& progress);

} // namespace vnquery

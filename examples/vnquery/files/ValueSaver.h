// Saves single values of a result to files.
#pragma once

#include "vnquery/files/Exporter.h"

#include <string>

namespace vnquery {

/// Writes a value to a file: a text through an Exporter when `format` has a coded character set,
/// anything else byte by byte. With `isLastUse` a value in a swap file may be moved instead of
/// copied, and is empty afterwards. `row` and `column` are for messages. Throws Failure; an older
/// file of that name then stays as it was.
void SaveValue(Value& value, std::size_t row, std::size_t column, const std::string& file,
               const ExportFormat& format, bool isLastUse);

/// Writes a value byte by byte to a file, as a whole or not at all. `cell` is its place, for
/// messages. Throws Failure and Interrupted.
void SaveValueBytes(const Value& value, const std::string& cell, const std::string& file,
                    Progress& progress);

/// Prints a warning with the losses (see Exporter::GetLosses), if any.
void ReportLosses(const std::string& file, const std::string& losses);

} // namespace vnquery

// A value from and to a file that the user chooses.
#pragma once

#include "vnquery/result/ColumnKind.h"
#include "vnquery/result/Value.h"

#include <string>

class QWidget;

namespace vnquery {

/// Reads a file, one that the user chooses unless its name is given, as a value of that column.
/// Returns its name; "" when the user cancelled, or after a failure, which was shown; the same with
/// the next.
std::string LoadValueFrom(QWidget* parent, ColumnKind kind, const std::string& column, Value& value,
                          std::string file = {});
/// Writes a value byte by byte. `cell` is its place, for messages.
std::string SaveValueTo(QWidget* parent, const Value& value, const std::string& column,
                        const std::string& cell);

} // namespace vnquery

// A value from and to a file that the user chooses.
#pragma once

#include "vnquery/result/ColumnKind.h"
#include "vnquery/result/Value.h"

#include <string>

class QWidget;

namespace vnquery {

/// Reads a file as a value of that column. False when the user cancelled, or after a failure, which
/// was shown; the same with the next.
bool LoadValueFrom(QWidget* parent, ColumnKind kind, const std::string& column, Value& value);
/// Writes a value byte by byte. `cell` is its place, for messages.
bool SaveValueTo(QWidget* parent, const Value& value, const std::string& column,
                 const std::string& cell);

} // namespace vnquery

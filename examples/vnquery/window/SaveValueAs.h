// Saves a value to a file that the user chooses.
#pragma once

#include "vnquery/result/Value.h"
#include "vnquery/window/WindowText.h"

namespace vnquery {

/// `cell` is the value's place, for messages. Returns the file's name; "" when the user cancelled
/// or after a failure, which was shown.
std::string SaveValueAs(CWnd* parent, const Value& value, const std::string& cell);

} // namespace vnquery

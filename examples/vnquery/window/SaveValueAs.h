// Saves a value to a file that the person chooses.
#pragma once

#include "vnquery/result/Value.h"
#include "vnquery/window/WindowText.h"

namespace vnquery {

/// `cell` is the value's place, for messages. Returns the file; "" when it was not saved, which has
/// been told.
std::string SaveValueAs(CWnd* parent, const Value& value, const std::string& cell);

} // namespace vnquery

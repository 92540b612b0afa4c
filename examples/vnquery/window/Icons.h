// The icons of actions and of what the tree shows.
#pragma once

#include <QIcon>

namespace vnquery {

/// The icon with that name of the desktop's theme, else the program's own
/// (:/vnquery/icons/<name>.svg).
QIcon Icon(const char* name);

} // namespace vnquery

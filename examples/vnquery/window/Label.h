// The program's texts for Qt.
#pragma once

#include "vnquery/messages/Messages.h"

#include <QString>

namespace vnquery {

/// The text with that id (IDS_VQ_...), as Text gives it. A widget takes its texts again when it gets
/// QEvent::LanguageChange: all do when the user chooses another language.
inline QString Label(UINT id) { return QString::fromStdString(Text(id)); }
inline QString Label(UINT id, std::initializer_list<std::string> insertions) {
    return QString::fromStdString(Text(id, insertions));
}

} // namespace vnquery

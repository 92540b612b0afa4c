// JSON and XML with line breaks and indentation, for reading.
#pragma once

#include "vnquery/result/Value.h"

#include <QString>

namespace vnquery {

/// Longer values are not indented.
constexpr DWORD kMaxToIndent = 4 << 20;

/// Why a value cannot be indented; empty when it can.
using IndentFault = QString;

/// Numbers, texts and the order of members stay as they are. `indented` becomes a text, or
/// stays NULL with a fault. Values that would need more than 64 MB are refused. Throws what reading
/// the value throws.
IndentFault IndentJson(const Value& value, Value& indented);
/// The same; the document type and comments outside of the root element are left out.
IndentFault IndentXml(const Value& value, Value& indented);

} // namespace vnquery

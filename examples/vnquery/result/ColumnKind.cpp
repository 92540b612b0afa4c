#include "vnquery/result/ColumnKind.h"

#include "vnquery/result/AsciiUpper.h"

#include <string>

namespace vnquery {

ColumnKind KindOfDeclaredType(std::string_view type) {
    const std::string upper = ToUpper(type);
    const auto has = [&](const char* word) { return upper.find(word) != std::string::npos; };
    if (upper.empty())
        return ColumnKind::Unknown;
    // Before the integers: "INTERVAL" and "POINT" contain "INT".
    if (has("DATE") || has("TIME") || has("INTERVAL") || has("POINT"))
        return ColumnKind::Text;
    // SQLite's own rules, in its order (https://sqlite.org/datatype3.html, section 3.1).
    if (has("INT") || has("SERIAL"))
        return ColumnKind::Integer;
    if (has("CHAR") || has("CLOB") || has("TEXT"))
        return ColumnKind::Text;
    if (has("BLOB") || has("BINARY") || has("BYTEA") || has("IMAGE"))
        return ColumnKind::Binary;
    if (has("REAL") || has("FLOA") || has("DOUB") || has("NUM") || has("DEC"))
        return ColumnKind::Decimal;
    return ColumnKind::Unknown;
}

} // namespace vnquery

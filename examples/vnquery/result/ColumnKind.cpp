#include "vnquery/result/ColumnKind.h"

#include <algorithm>
#include <string>

namespace vnquery {

ColumnKind KindOfDeclaredType(std::string_view type) {
    std::string upper(type);
    std::ranges::transform(upper, upper.begin(), [](char ch) {
        return ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
    });
    const auto has = [&](const char* word) { return upper.find(word) != std::string::npos; };
    if (upper.empty())
        return ColumnKind::Unknown;
    // Before the integers, which would find themselves in "INTERVAL" and "POINT".
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

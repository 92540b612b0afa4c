// What a column of a result holds, as far as its SQL type tells.
#pragma once

#include <string_view>

namespace vnquery {

enum class ColumnKind {
    Unknown, ///< an expression, or a column without a type
    Text,    ///< also dates and times
    Integer,
    Decimal, ///< numbers that may have a fraction
    Binary
};

/// The kind of a column that was declared with this type, as SQLite understands it: "INTEGER",
/// "varchar(20)", "double precision", "BLOB", "DECIMAL(10,2)". Dates and times are texts there.
ColumnKind KindOfDeclaredType(std::string_view type);

} // namespace vnquery

// Passes values to the parameters of an SQLite statement.
#pragma once

#include "vnquery/result/Value.h"
#include "vnquery/sources/Parameters.h"

struct sqlite3_stmt;

namespace vnquery {

/// Parameters count from 1. The text of a number is bound as that number, or as text where SQLite
/// cannot hold the number.
void BindValue(sqlite3_stmt* statement, int index, const Value& value);

/// Binds each :name of the statement that has a value (see Parameters::values).
void BindNames(sqlite3_stmt* statement, const Parameters& parameters);

} // namespace vnquery

// Where the database is, and how it is reached.
#pragma once

#include "vnquery/result/RowSource.h"

#include <memory>
#include <string>

namespace vnquery {

class TableWriter;

/// An SQLite file or an ODBC data source; nothing is opened before it is needed.
struct Connection {
    std::string file;       ///< SQLite; "" when there is a data source
    std::string dataSource; ///< ODBC connection string

    bool operator==(const Connection&) const = default;
    bool IsEmpty() const { return file.empty() && dataSource.empty(); }
    /// What people may see of it: the file, or the string without its password.
    std::string GetDisplayName() const;
};

/// Runs a query. Throws Failure and Interrupted.
std::unique_ptr<RowSource> OpenSource(const Connection& connection, const std::string& sql,
                                      SourceUse use);

/// Begins a transaction that writes to the table of the plan, which must live as long. Throws
/// Failure.
std::unique_ptr<TableWriter> OpenWriter(const Connection& connection, const EditPlan& plan);

} // namespace vnquery

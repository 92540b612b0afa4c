// Which database is used, and how it is opened.
#pragma once

#include "vnquery/result/RowSource.h"
#include "vnquery/sources/Parameters.h"

#include <memory>
#include <string>

namespace vnquery {

class TableWriter;

/// An SQLite file or an ODBC data source. Holding one opens nothing.
struct Connection {
    std::string file;       ///< SQLite; "" when there is a data source
    std::string dataSource; ///< ODBC connection string
    std::string name = {};  ///< under which it is saved; "" otherwise

    bool operator==(const Connection&) const = default;
    bool IsEmpty() const { return file.empty() && dataSource.empty(); }
    /// For display: the file, or the connection string without its password.
    std::string GetDisplayName() const;
    /// For a tab: the name under which it is saved, the file without its folder, or the database
    /// and the server. No password is in it.
    std::string GetShortName() const;
};

/// Opens the connection to find out how SQL text is read there. Throws Failure.
SqlServer FindServer(const Connection& connection);

/// Opens the connection and tells the server's name and version. Throws Failure.
std::string DescribeServer(const Connection& connection);

/// Runs a query. Throws Failure and Interrupted.
std::unique_ptr<RowSource> OpenSource(const Connection& connection, const std::string& sql,
                                      SourceUse use, const Parameters& parameters = {});

/// Begins a transaction that writes to the table of the plan; the plan must outlive it. Throws
/// Failure.
std::unique_ptr<TableWriter> OpenWriter(const Connection& connection, const EditPlan& plan);

} // namespace vnquery

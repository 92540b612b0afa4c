// The tables, views, columns, indexes and triggers of a database.
#pragma once

#include "vnquery/sources/Connection.h"

#include <span>
#include <string>
#include <vector>

namespace vnquery {

struct CatalogColumn {
    std::string name;
    std::string type; ///< as the database calls it, with its length
    std::string defaultText;
    bool isKey = false; ///< of the primary key
    bool isNullable = true;
};

struct CatalogIndex {
    std::string name;
    std::vector<std::string> columns; ///< "" for an expression
    bool isUnique = false;
};

struct CatalogTable {
    std::string
        schema; ///< "" where the database has none (SQLite); a database on MariaDB and MySQL
    std::string name;
    bool isView = false;
    bool needsSchema = false; ///< the server does not find it by its name alone
    std::vector<CatalogColumn> columns = {};
    std::vector<CatalogIndex> indexes = {};
    std::vector<std::string> triggers = {}; ///< their names; on SQLite only
};

/// What a database has, without what its system needs for itself.
struct Catalog {
    SqlServer server = SqlServer::Other;
    std::vector<CatalogTable> tables; ///< by schema and name
};

// These open the connection for their time only, so that no transaction stays open. They throw
// Failure and Interrupted, and are for a BackgroundTask.

/// The tables and views without columns and indexes.
Catalog ReadCatalog(const Connection& connection);
/// Adds the columns of all tables. One whose columns cannot be read, such as a view of a table that
/// is gone, stays without.
void ReadAllColumns(const Connection& connection, Catalog& catalog);
/// Reads the table's columns, indexes and triggers.
void ReadTable(const Connection& connection, CatalogTable& table);
/// The statements that make the table or view: the database's own text where it keeps one (SQLite,
/// MariaDB and MySQL, views of PostgreSQL), else one made of the columns and the primary key, which
/// lacks what these do not tell (foreign keys, checks).
std::string ReadDdl(const Connection& connection, const CatalogTable& table);

/// The name as it has to stand in a statement: in quotes when it needs them.
std::string SqlName(std::string_view name, SqlServer server);
/// The table's name for a statement, with its schema if needed.
std::string SqlName(const CatalogTable& table, SqlServer server);

} // namespace vnquery

// The tables of a database server.
#pragma once

#include "vnquery/sources/Catalog.h"
#include "vnquery/sources/OdbcConnection.h"

#include <functional>

namespace vnquery {

/// See Catalog.h. PostgreSQL, MariaDB and MySQL are asked in SQL, which tells types and keys of all
/// tables at once; other servers through ODBC's own functions.
class OdbcCatalog {
public:
    explicit OdbcCatalog(const std::string& connection);

    Catalog Read() const;
    void ReadColumns(std::span<CatalogTable> tables) const;
    void ReadTable(CatalogTable& table) const;
    std::string ReadDdl(const CatalogTable& table) const;

private:
    using Row = std::vector<std::string>;
    using Call = std::function<SQLRETURN(SQLHANDLE statement)>;

    /// The rows that the call gives, with those of their columns (in rising order, from 1).
    std::vector<Row> Rows(const Call& call, std::initializer_list<SQLUSMALLINT> columns) const;
    std::vector<Row> Query(const std::string& sql,
                           std::initializer_list<SQLUSMALLINT> columns) const;
    bool IsKnown() const {
        return m_server == SqlServer::PostgreSql || m_server == SqlServer::MySql;
    }
    /// Calls one of ODBC's functions about the table.
    template <class Function>
    std::vector<Row> AboutTable(const CatalogTable& table, Function function,
                                std::initializer_list<SQLUSMALLINT> columns) const;
    void ReadOtherColumns(CatalogTable& table) const;
    std::string ComposeDdl(const CatalogTable& table) const;

    OdbcConnection m_connection;
    SqlServer m_server;
};

} // namespace vnquery

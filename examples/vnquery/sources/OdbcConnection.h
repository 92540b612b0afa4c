// A connection to a database server, and what ODBC's handles need.
#pragma once

#include "vnquery/sources/OdbcBlock.h"
#include "vnquery/sources/QueryGuard.h"

#include <memory>
#include <string>

namespace vnquery {

/// An ODBC handle, freed by the destructor. Throws Failure when ODBC returns no handle.
class OdbcHandle {
public:
    OdbcHandle(SQLSMALLINT type, SQLHANDLE parent);
    ~OdbcHandle() { SQLFreeHandle(m_type, m_handle); }
    OdbcHandle(const OdbcHandle&) = delete;
    OdbcHandle& operator=(const OdbcHandle&) = delete;
    SQLHANDLE Get() const { return m_handle; }

private:
    SQLSMALLINT m_type;
    SQLHANDLE m_handle = SQL_NULL_HANDLE;
};

/// A connection. The destructor undoes what was not committed and closes it.
class OdbcConnection {
public:
    enum class Access { Read, Write };

    /// Everything runs in a transaction and is committed only by EndTransaction. With Read the
    /// server itself refuses changes if it can (PostgreSQL, MariaDB, MySQL, Oracle); otherwise the
    /// transaction is only undone. Neither covers what a function of the server does outside of
    /// its transactions (files, other servers). Throws Failure, also for Write on a driver without
    /// transactions.
    OdbcConnection(const std::string& connection, Access access);
    ~OdbcConnection();
    OdbcConnection(const OdbcConnection&) = delete;
    OdbcConnection& operator=(const OdbcConnection&) = delete;

    std::unique_ptr<OdbcHandle> NewStatement() const;
    /// How the server reads SQL text.
    SqlServer GetServer() const;
    /// Blocks for PostgreSQL's driver. What other drivers say of themselves cannot be relied on:
    /// MariaDB's claims all that blocks need, cuts values that are read again and leaves out rows.
    OdbcFetching GetFetching() const;
    /// The server's quote character for names; "" for none.
    std::string GetNameQuote() const;
    /// SQL_COMMIT or SQL_ROLLBACK. Throws Failure.
    void EndTransaction(SQLSMALLINT how);

private:
    void Connect(const std::string& connection, Access access);
    void MakeReadOnly();
    /// PostgreSQL's driver would hold a whole result in memory. It is asked to fetch as many rows
    /// as a block has, unless the connection string says how it shall fetch (UseDeclareFetch).
    void FetchInPortions(const std::string& connection);
    bool HasPostgreSqlDriver() const;
    std::string GetInfo(SQLUSMALLINT what) const;

    OdbcHandle m_environment;
    OdbcHandle m_handle;
};

/// The SQLSTATE of the handle's first diagnostic record; "" without one.
std::string OdbcState(SQLSMALLINT type, SQLHANDLE handle);

/// Throws Failure with `what` (was tried) and the driver's message, or Interrupted.
[[noreturn]] void OdbcFail(const std::string& what, SQLSMALLINT type, SQLHANDLE handle);

} // namespace vnquery

// A connection to a database server, and what ODBC's handles need.
#pragma once

#include "vnquery/sources/Odbc.h"
#include "vnquery/sources/QueryGuard.h"

#include <memory>
#include <string>

namespace vnquery {

/// An ODBC handle, freed at its end. Throws Failure when ODBC gives none.
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

/// A connection that is closed at its end; what was not committed is then undone.
class OdbcConnection {
public:
    enum class Access { Read, Write };

    /// Everything runs in a transaction; nothing is committed by itself. With Read that is one in
    /// which the server itself refuses changes, if it has such (PostgreSQL, MariaDB and MySQL,
    /// Oracle), else one that is only undone. What a function of the server does outside of its
    /// transactions (files, other servers) is beyond both. Throws Failure; so does Write on a
    /// driver without transactions.
    OdbcConnection(const std::string& connection, Access access);
    ~OdbcConnection();
    OdbcConnection(const OdbcConnection&) = delete;
    OdbcConnection& operator=(const OdbcConnection&) = delete;

    std::unique_ptr<OdbcHandle> NewStatement() const;
    /// How the server reads SQL text.
    SqlServer GetServer() const;
    /// What the server wants around names; "" for nothing.
    std::string GetNameQuote() const;
    /// SQL_COMMIT or SQL_ROLLBACK. Throws Failure.
    void EndTransaction(SQLSMALLINT how);

private:
    void Connect(const std::string& connection, Access access);
    void MakeReadOnly();

    OdbcHandle m_environment;
    OdbcHandle m_handle;
};

/// The SQLSTATE of the handle's first message; "" without one.
std::string OdbcState(SQLSMALLINT type, SQLHANDLE handle);

/// Throws Failure with what was tried and the driver's own words, or Interrupted.
[[noreturn]] void OdbcFail(const std::string& what, SQLSMALLINT type, SQLHANDLE handle);

} // namespace vnquery

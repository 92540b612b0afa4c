// A connection to a database server, and what ODBC's handles need.
#pragma once

#include "Odbc.h"

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

    /// Write begins a transaction; nothing is committed by itself. Throws Failure.
    OdbcConnection(const std::string& connection, Access access);
    ~OdbcConnection();
    OdbcConnection(const OdbcConnection&) = delete;
    OdbcConnection& operator=(const OdbcConnection&) = delete;

    std::unique_ptr<OdbcHandle> NewStatement() const;
    /// What the server wants around names; "" for nothing.
    std::string GetNameQuote() const;
    /// SQL_COMMIT or SQL_ROLLBACK. Throws Failure.
    void EndTransaction(SQLSMALLINT how);

private:
    OdbcHandle m_environment;
    OdbcHandle m_handle;
    bool m_isWriting;
};

/// Throws Failure with what was tried and the driver's own words, or Interrupted.
[[noreturn]] void OdbcFail(const std::string& what, SQLSMALLINT type, SQLHANDLE handle);

} // namespace vnquery

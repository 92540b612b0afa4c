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
    enum class Access { Read, Write, Session };

    /// Everything runs in a transaction and is committed only by EndTransaction. With Read the
    /// server itself refuses changes if it can (PostgreSQL, MariaDB, MySQL, Oracle); otherwise the
    /// transaction is only undone. Neither covers what a function of the server does outside of
    /// its transactions (files, other servers). Write is serializable; Session, which is not,
    /// leaves that to its writers (see OdbcWriter). Throws Failure, also for Write and Session on a
    /// driver without transactions.
    OdbcConnection(const std::string& connection, Access access);
    ~OdbcConnection();
    OdbcConnection(const OdbcConnection&) = delete;
    OdbcConnection& operator=(const OdbcConnection&) = delete;

    std::unique_ptr<OdbcHandle> NewStatement() const;
    /// How the server reads SQL text.
    SqlServer GetServer() const;
    /// The server's name and version.
    std::string GetSystem() const { return GetInfo(SQL_DBMS_NAME) + ' ' + GetInfo(SQL_DBMS_VER); }
    /// How many rows a block may have; 0: they have to be read row by row. Blocks are only for
    /// PostgreSQL's driver. What others say of themselves cannot be relied on: MariaDB's claims all
    /// that blocks need, cuts values that are read again and leaves out rows.
    std::size_t GetBlockRows() const;
    /// Whether the driver gives a text's UTF-8, unchanged, when bytes are asked for. It is tried
    /// out. Columns of other types than texts may give something else.
    bool HasUtf8Bytes() const { return m_hasUtf8Bytes; }
    /// The server's quote character for names; "" for none.
    std::string GetNameQuote() const;
    /// SQL_COMMIT or SQL_ROLLBACK. Throws Failure.
    void EndTransaction(SQLSMALLINT how) const;
    /// Whether PostgreSQL's driver may fetch the next results in portions, where it does. It gives
    /// up the whole transaction when a portion fails, or is cancelled.
    void AllowPortions(bool isAllowed) const;
    /// Runs a statement without a result; false when it fails.
    bool Run(const std::string& sql) const;

private:
    void Connect(const std::string& connection, Access access);
    void BeginReading(bool isInPortions) const;
    void MakeReadOnly() const;
    bool FindOutWhetherUtf8() const;
    /// PostgreSQL's driver would hold a whole result in memory. It is asked to fetch as many rows
    /// as a block has, unless the connection string or the data source says how it shall fetch
    /// (UseDeclareFetch); then a block has at most as many rows as they say (Fetch). Returns
    /// whether it was asked.
    bool FetchInPortions(const std::string& connection);
    bool HasPostgreSqlDriver() const;
    std::string GetInfo(SQLUSMALLINT what) const;

    OdbcHandle m_environment;
    OdbcHandle m_handle;
    bool m_hasPortions = false;
    bool m_hasUtf8Bytes = false;
    std::size_t m_blockRows = OdbcBlock::kMaxRows;
};

/// The SQLSTATE of the handle's first diagnostic record; "" without one.
std::string OdbcState(SQLSMALLINT type, SQLHANDLE handle);

/// Throws Failure with `what` (was tried) and the driver's message, or Interrupted.
[[noreturn]] void OdbcFail(const std::string& what, SQLSMALLINT type, SQLHANDLE handle);

} // namespace vnquery

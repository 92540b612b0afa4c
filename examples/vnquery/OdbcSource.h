// Rows from a database server, through ODBC.
#pragma once

#include "OdbcText.h"
#include "RowSource.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace vnquery {

/// Runs one query on the server that an ODBC connection string names. Values come in pieces, texts
/// as UTF-16. What the driver has in memory of the result is the driver's choice: for PostgreSQL,
/// "UseDeclareFetch=1" in the connection string makes it fetch rows in portions.
class OdbcSource : public RowSource {
public:
    OdbcSource(const std::string& connection, const std::string& sql);
    ~OdbcSource() override;

    const std::vector<std::string>& GetColumns() const override { return m_names; }
    bool Next() override;
    void Read(std::size_t column, ValueSink& sink) override;

private:
    /// An ODBC handle, freed at its end.
    class Handle {
    public:
        Handle(SQLSMALLINT type, SQLHANDLE parent);
        ~Handle() { SQLFreeHandle(m_type, m_handle); }
        Handle(const Handle&) = delete;
        Handle& operator=(const Handle&) = delete;
        SQLHANDLE Get() const { return m_handle; }
        SQLSMALLINT Type() const { return m_type; }

    private:
        SQLSMALLINT m_type;
        SQLHANDLE m_handle = SQL_NULL_HANDLE;
    };
    class Connection;

    void DescribeColumns();
    /// What the watcher does: ODBC waits for the server without looking for signals.
    void CancelOnSignal(const std::stop_token& stop);
    void Check(SQLRETURN result, const std::string& what) const;
    /// Reads the next piece of a value into the buffer. Tells the bytes that came and whether there
    /// are more; false when the value is NULL.
    struct Piece {
        std::size_t bytes = 0;
        bool isLast = false;
        bool isNull = false;
        SQLLEN remaining =
            SQL_NO_TOTAL; ///< bytes still to come with this piece, when the driver knows
    };
    Piece ReadPiece(std::size_t column, SQLSMALLINT type, std::size_t terminator);
    void ReadBinary(std::size_t column, ValueSink& sink);
    void ReadText(std::size_t column, Value::Type type, ValueSink& sink);

    std::unique_ptr<Handle> m_environment;
    std::unique_ptr<Connection> m_connection;
    std::unique_ptr<Handle> m_statement;
    std::vector<std::string> m_names;
    std::vector<Value::Type> m_types;
    std::vector<BYTE> m_buffer;
    std::jthread m_watcher; ///< the last member: it stops before the statement goes
};

} // namespace vnquery

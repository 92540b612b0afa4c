// Writes cells back to a table of a database server, through ODBC.
#pragma once

#include "vnquery/result/TableWriter.h"
#include "vnquery/sources/OdbcSession.h"

#include <span>
#include <string>
#include <vector>

namespace vnquery {

/// Works in a serializable transaction: when another user changes a value between Read and Commit,
/// the server refuses one of the two. In a session on PostgreSQL, MySQL and MariaDB Read locks the
/// row instead, so that the other user waits.
class OdbcWriter : public TableWriter {
public:
    /// In a transaction of its own.
    OdbcWriter(const std::string& connection, const EditPlan& plan);
    /// In the transaction of a session.
    OdbcWriter(OdbcSession& session, Session::LeasePointer lease, const EditPlan& plan);
    ~OdbcWriter() override;

    std::optional<std::vector<Value>>
    ReadRow(const RowKey& key, std::span<const std::size_t> columns, Progress& progress) override;
    void Update(const RowKey& key, std::size_t column, const NewValue& value,
                Progress& progress) override;
    /// The key of a row is told by PostgreSQL, and on MySQL and MariaDB that of AUTO_INCREMENT;
    /// elsewhere it is known when all of its columns are given.
    std::optional<RowKey> Insert(const RowValues& values, Progress& progress) override;
    void Delete(const RowKey& key, Progress& progress) override;
    void Commit() override;

private:
    /// A value bound to a parameter of a statement, with what ODBC reads when that runs.
    struct Parameter {
        const Value* value = nullptr;
        std::vector<SQLWCHAR> wide;
        SQLLEN indicator = 0;
    };
    std::string Quote(const std::string& name) const;
    std::string Condition() const;
    std::optional<RowKey> FetchKey(SQLHANDLE statement, Progress& progress) const;
    std::optional<RowKey> AskForKey(const RowValues& values, Progress& progress) const;
    void Bind(SQLHANDLE statement, std::span<Parameter> parameters,
              std::span<const std::size_t> columns) const;
    void Execute(SQLHANDLE statement, const std::string& sql, const std::string& what,
                 Progress& progress) const;

    OdbcWriter(std::shared_ptr<OdbcConnection> connection, Session::LeasePointer lease,
               const EditPlan& plan);

    const Session::LeasePointer m_lease; ///< first, so that it ends last
    OdbcSession* m_session = nullptr;
    const std::shared_ptr<OdbcConnection> m_connection;
    const EditPlan& m_plan;
    std::string m_quote; ///< the quote character for names; "" for none
    std::string m_table; ///< quoted, with the schema
    std::string m_lock;  ///< what locks the rows of a SELECT
    bool m_isCommitted = false;
};

} // namespace vnquery

// Rows from a database server, through ODBC.
#pragma once

#include "vnquery/result/RowSource.h"
#include "vnquery/sources/OdbcBlock.h"
#include "vnquery/sources/OdbcConnection.h"
#include "vnquery/sources/Session.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace vnquery {

/// Runs one query on the server that an ODBC connection string names. Only queries are run, see
/// FindRefusal and OdbcConnection; within a session any statement. Rows come in blocks, long values
/// in pieces (see OdbcBlock). How much of the result the driver keeps in memory is up to the
/// driver; see OdbcConnection::FetchInPortions.
class OdbcSource : public RowSource {
public:
    OdbcSource(const std::string& connection, const std::string& sql,
               SourceUse use = SourceUse::ReadOnly, const Parameters& parameters = {});
    /// In a session, which has looked at the statement.
    OdbcSource(std::shared_ptr<OdbcConnection> connection, Session::LeasePointer lease,
               const std::string& sql, SourceUse use, const Parameters& parameters);
    ~OdbcSource() override;

    const std::vector<std::string>& GetColumns() const override { return m_names; }
    const std::vector<ColumnKind>& GetKinds() const override { return m_kinds; }
    const EditPlan& GetEditPlan() const override { return m_editPlan; }
    std::optional<long long> GetChangedRows() const override { return m_changedRows; }
    bool Next() override;
    void Read(std::size_t column, ValueSink& sink) override;

private:
    void Run(const SqlText& text);
    void Prepare(const std::string& sql);
    void Bind(const std::vector<std::optional<std::string>>& values);
    void CountRows(const std::string& sql);
    void DescribeColumns();
    bool IsCharacters(std::size_t column) const;
    void PlanEditing(const std::string& sql);
    std::string GetAttribute(std::size_t column, SQLUSMALLINT attribute) const;
    std::vector<std::string> FindPrimaryKey(const std::string& catalog) const;
    /// Runs on m_watcher, since ODBC does not notice signals while it waits for the server.
    void CancelWhenAsked(const std::stop_token& stop, const std::stop_token& asked);
    /// Throws when the call failed; `what` is the id of the text that says what was tried.
    void Check(SQLRETURN result, UINT what) const;

    /// A value bound to a question mark.
    struct Parameter {
        std::vector<SQLWCHAR> wide;
        SQLLEN indicator = SQL_NTS;
    };

    const Session::LeasePointer m_lease; ///< first, so that it ends last; null: nothing may change
    const std::shared_ptr<const OdbcConnection> m_connection;
    std::vector<Parameter> m_parameters;
    std::unique_ptr<OdbcHandle> m_statement;
    std::unique_ptr<OdbcBlock> m_block;
    std::vector<std::string> m_names;
    std::vector<ColumnKind> m_kinds;
    EditPlan m_editPlan;
    std::optional<long long> m_changedRows;
    std::jthread m_watcher; ///< last, so that it stops before the statement is freed
};

} // namespace vnquery

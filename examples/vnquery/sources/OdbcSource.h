// Rows from a database server, through ODBC.
#pragma once

#include "vnquery/result/RowSource.h"
#include "vnquery/sources/OdbcBlock.h"
#include "vnquery/sources/OdbcConnection.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace vnquery {

/// Runs one query on the server that an ODBC connection string names. Only queries are run, see
/// FindRefusal and OdbcConnection. Rows come in blocks, long values in pieces (see OdbcBlock). How
/// much of the result the driver keeps in memory is up to the driver; see
/// OdbcConnection::FetchInPortions.
class OdbcSource : public RowSource {
public:
    OdbcSource(const std::string& connection, const std::string& sql,
               SourceUse use = SourceUse::ReadOnly);
    ~OdbcSource() override;

    const std::vector<std::string>& GetColumns() const override { return m_names; }
    const std::vector<ColumnKind>& GetKinds() const override { return m_kinds; }
    const EditPlan& GetEditPlan() const override { return m_editPlan; }
    bool Next() override;
    void Read(std::size_t column, ValueSink& sink) override;

private:
    void RefuseChanges(const std::string& sql) const;
    void Prepare(const std::string& sql);
    void DescribeColumns();
    bool IsCharacters(std::size_t column) const;
    void PlanEditing(const std::string& sql);
    std::string GetAttribute(std::size_t column, SQLUSMALLINT attribute) const;
    std::vector<std::string> FindPrimaryKey(const std::string& catalog) const;
    /// Runs on m_watcher, since ODBC does not notice signals while it waits for the server.
    void CancelWhenAsked(const std::stop_token& stop, const std::stop_token& asked);
    /// Throws when the call failed; `what` is the id of the text that says what was tried.
    void Check(SQLRETURN result, UINT what) const;

    std::unique_ptr<OdbcConnection> m_connection;
    std::unique_ptr<OdbcHandle> m_statement;
    std::unique_ptr<OdbcBlock> m_block;
    std::vector<std::string> m_names;
    std::vector<ColumnKind> m_kinds;
    EditPlan m_editPlan;
    std::jthread m_watcher; ///< last, so that it stops before the statement is freed
};

} // namespace vnquery

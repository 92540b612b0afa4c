// Rows from a database server, through ODBC.
#pragma once

#include "vnquery/result/RowSource.h"
#include "vnquery/sources/OdbcConnection.h"
#include "vnquery/sources/OdbcReader.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace vnquery {

/// Runs one query on the server that an ODBC connection string names. Nothing but a query is ever
/// run, see FindRefusal and OdbcConnection. Values come in pieces, texts as UTF-16. What the driver
/// has in memory of the result is the driver's choice: for PostgreSQL, "UseDeclareFetch=1" in the
/// connection string makes it fetch rows in portions.
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
    void Refuse(const std::string& sql) const;
    void Prepare(const std::string& sql);
    void DescribeColumns();
    void PlanEditing(const std::string& sql);
    std::string GetAttribute(std::size_t column, SQLUSMALLINT attribute) const;
    std::vector<std::string> FindPrimaryKey(const std::string& catalog) const;
    /// What the watcher does: ODBC waits for the server without looking for signals.
    void CancelWhenAsked(const std::stop_token& stop, const std::stop_token& asked);
    /// `what`, a text's id, was tried.
    void Check(SQLRETURN result, UINT what) const;

    std::unique_ptr<OdbcConnection> m_connection;
    std::unique_ptr<OdbcHandle> m_statement;
    OdbcReader m_reader;
    std::vector<std::string> m_names;
    std::vector<Value::Type> m_types;
    std::vector<ColumnKind> m_kinds;
    EditPlan m_editPlan;
    std::jthread m_watcher; ///< the last member: it stops before the statement goes
};

} // namespace vnquery

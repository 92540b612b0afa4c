// Writes cells back to a table of a database server, through ODBC.
#pragma once

#include "vnquery/result/TableWriter.h"
#include "vnquery/sources/OdbcConnection.h"

#include <span>
#include <string>
#include <vector>

namespace vnquery {

/// Works in a serializable transaction: a change of somebody else between Read and Commit makes the
/// server refuse one of the two.
class OdbcWriter : public TableWriter {
public:
    OdbcWriter(const std::string& connection, const EditPlan& plan);

    std::optional<Value> Read(const RowKey& key, std::size_t column, Progress& progress) override;
    void Update(const RowKey& key, std::size_t column, const NewValue& value,
                Progress& progress) override;
    void Commit() override;

private:
    /// A value bound to a place in a statement; what ODBC reads later stays here.
    struct Parameter {
        const Value* value = nullptr;
        std::vector<SQLWCHAR> wide;
        SQLLEN indicator = 0;
    };
    std::string Quote(const std::string& name) const;
    std::string Condition() const;
    void Bind(SQLHANDLE statement, std::span<Parameter> parameters,
              std::span<const std::size_t> columns) const;
    void Execute(SQLHANDLE statement, const std::string& sql, const std::string& what,
                 Progress& progress) const;

    OdbcConnection m_connection;
    const EditPlan& m_plan;
    std::string m_quote; ///< what stands around names; "" for nothing
    std::string m_table; ///< quoted, with the schema
};

} // namespace vnquery

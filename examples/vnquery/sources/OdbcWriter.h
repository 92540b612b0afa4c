// Writes cells back to a table of a database server, through ODBC.
#pragma once

#include "vnquery/result/TableWriter.h"
#include "vnquery/sources/OdbcConnection.h"

#include <span>
#include <string>
#include <vector>

namespace vnquery {

/// Works in a serializable transaction: when another user changes a value between Read and Commit,
/// the server refuses one of the two.
class OdbcWriter : public TableWriter {
public:
    OdbcWriter(const std::string& connection, const EditPlan& plan);

    std::optional<Value> Read(const RowKey& key, std::size_t column, Progress& progress) override;
    void Update(const RowKey& key, std::size_t column, const NewValue& value,
                Progress& progress) override;
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
    void Bind(SQLHANDLE statement, std::span<Parameter> parameters,
              std::span<const std::size_t> columns) const;
    void Execute(SQLHANDLE statement, const std::string& sql, const std::string& what,
                 Progress& progress) const;

    OdbcConnection m_connection;
    const EditPlan& m_plan;
    std::string m_quote; ///< the quote character for names; "" for none
    std::string m_table; ///< quoted, with the schema
};

} // namespace vnquery

// Writes cells back to an SQLite database file.
#pragma once

#include "vnquery/result/TableWriter.h"
#include "vnquery/sources/SqliteDatabase.h"

namespace vnquery {

/// Holds the database's write lock during its life, so that nobody else changes a row between Read
/// and Update. Foreign keys are enforced. Long bytes are written in pieces.
class SqliteWriter : public TableWriter {
public:
    SqliteWriter(const std::string& file, const EditPlan& plan);
    ~SqliteWriter() override;

    std::optional<Value> Read(const RowKey& key, std::size_t column, Progress& progress) override;
    void Update(const RowKey& key, std::size_t column, const NewValue& value,
                Progress& progress) override;
    void Commit() override;

private:
    std::string Condition() const;
    void BindKey(sqlite3_stmt* statement, const RowKey& key, int first) const;
    void UpdateOnce(const std::string& expression, const RowKey& key, std::size_t column,
                    const Value* value);
    void WritePieces(const RowKey& key, std::size_t column, const Value& value,
                     Progress& progress) const;

    SqliteDatabase m_database;
    const EditPlan& m_plan;
    std::string m_table; ///< quoted, with the schema
    bool m_isOpen = false;
};

} // namespace vnquery

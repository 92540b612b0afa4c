// Writes cells back to an SQLite database file.
#pragma once

#include "vnquery/result/TableWriter.h"
#include "vnquery/sources/SqliteSession.h"

namespace vnquery {

/// Holds the database's write lock during its life, so that nobody else changes a row between Read
/// and Update. Long bytes are written in pieces.
class SqliteWriter : public TableWriter {
public:
    /// In a transaction of its own; foreign keys are enforced.
    SqliteWriter(const std::string& file, const EditPlan& plan);
    /// In the transaction of a session, which is open.
    SqliteWriter(SqliteSession& session, Session::LeasePointer lease, const EditPlan& plan);
    ~SqliteWriter() override;

    std::optional<std::vector<Value>>
    ReadRow(const RowKey& key, std::span<const std::size_t> columns, Progress& progress) override;
    void Update(const RowKey& key, std::size_t column, const NewValue& value,
                Progress& progress) override;
    std::optional<RowKey> Insert(const RowValues& values, Progress& progress) override;
    void Delete(const RowKey& key, Progress& progress) override;
    void Commit() override;

private:
    bool IsInPieces(const Value& value) const;
    std::string Condition() const;
    void BindKey(sqlite3_stmt* statement, const RowKey& key, int first) const;
    void UpdateOnce(const std::string& expression, const RowKey& key, std::size_t column,
                    const Value* value);
    void WritePieces(const RowKey& key, std::size_t column, const Value& value,
                     Progress& progress) const;

    SqliteWriter(std::shared_ptr<SqliteDatabase> database, Session::LeasePointer lease,
                 const EditPlan& plan);

    const Session::LeasePointer m_lease; ///< first, so that it ends last
    SqliteSession* m_session = nullptr;
    const std::shared_ptr<SqliteDatabase> m_database;
    const EditPlan& m_plan;
    std::string m_table; ///< quoted, with the schema
    const bool m_canOpenBlobs;
    bool m_isOpen = false;
};

} // namespace vnquery

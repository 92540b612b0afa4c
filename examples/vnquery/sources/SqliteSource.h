// Rows from an SQLite database file.
#pragma once

#include "vnquery/result/RowSource.h"
#include "vnquery/sources/Session.h"
#include "vnquery/sources/SqliteDatabase.h"
#include "vnquery/sources/SqliteTableQuery.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vnquery {

/// Runs one query on a database file that is opened for reading only, or any statement within a
/// session. No file is created.
///
/// Where each row of the result is one of a single table (see ParseOneTableQuery), long texts and
/// bytes are read piece by piece from the table itself, so that even SQLite never has one of them
/// as a whole in memory (see SqliteTableQuery). Otherwise SQLite gives each value in one piece.
class SqliteSource : public RowSource {
public:
    SqliteSource(const std::string& file, const std::string& sql,
                 SourceUse use = SourceUse::ReadOnly, const Parameters& parameters = {});
    /// In a session; `beforeChange` is called before a statement runs that changes something.
    SqliteSource(std::shared_ptr<SqliteDatabase> database, Session::LeasePointer lease,
                 const std::function<void()>& beforeChange, const std::string& sql, SourceUse use,
                 const Parameters& parameters);
    ~SqliteSource() override;

    const std::vector<std::string>& GetColumns() const override { return m_names; }
    const std::vector<ColumnKind>& GetKinds() const override { return m_kinds; }
    const EditPlan& GetEditPlan() const override { return m_editPlan; }
    std::optional<long long> GetChangedRows() const override;
    std::optional<long long> GetRowId() const override;
    bool Next() override;
    void Read(std::size_t column, ValueSink& sink) override;

private:
    void Prepare(const std::string& sql, const std::function<void()>& beforeChange);
    void PlanOneTable(const std::string& sql, SourceUse use, const Parameters& parameters);

    const Session::LeasePointer m_lease; ///< first, so that it ends last
    const std::shared_ptr<const SqliteDatabase> m_database;
    SqliteDatabase::Statement m_statement;
    std::unique_ptr<SqliteTableQuery> m_tableQuery; ///< null: m_statement gives the rows
    std::vector<std::string> m_names;
    std::vector<ColumnKind> m_kinds;
    EditPlan m_editPlan;
    bool m_isDone = false;
    bool m_countsRows = false;
    long long m_changesBefore = 0; ///< SQLite's count of all changes
};

} // namespace vnquery

// Rows from an SQLite database file.
#pragma once

#include "vnquery/result/RowSource.h"
#include "vnquery/sources/SqliteDatabase.h"
#include "vnquery/sources/SqliteTableQuery.h"

#include <memory>
#include <string>
#include <vector>

namespace vnquery {

/// Runs one query on a database file that is opened for reading only. No file is created.
///
/// Where each row of the result is one of a single table (see ParseOneTableQuery), long texts and
/// bytes are read piece by piece from the table itself, so that even SQLite never has one of them
/// as a whole in memory (see SqliteTableQuery). Otherwise SQLite gives each value in one piece.
class SqliteSource : public RowSource {
public:
    SqliteSource(const std::string& file, const std::string& sql,
                 SourceUse use = SourceUse::ReadOnly);
    ~SqliteSource() override;

    const std::vector<std::string>& GetColumns() const override { return m_names; }
    const std::vector<ColumnKind>& GetKinds() const override { return m_kinds; }
    const EditPlan& GetEditPlan() const override { return m_editPlan; }
    std::optional<long long> GetRowId() const override;
    bool Next() override;
    void Read(std::size_t column, ValueSink& sink) override;

private:
    void PlanOneTable(const std::string& sql, SourceUse use);

    SqliteDatabase m_database;
    SqliteDatabase::Statement m_statement;
    std::unique_ptr<SqliteTableQuery> m_tableQuery; ///< null: m_statement gives the rows
    std::vector<std::string> m_names;
    std::vector<ColumnKind> m_kinds;
    EditPlan m_editPlan;
};

} // namespace vnquery

// Rows from an SQLite database file.
#pragma once

#include "vnquery/result/RowSource.h"
#include "vnquery/sources/OneTableQuery.h"
#include "vnquery/sources/SqliteDatabase.h"

#include <memory>
#include <string>
#include <vector>

namespace vnquery {

/// Runs one query on a database file that is opened for reading only. No file is created.
///
/// Where each row of the result is one of a single table (see ParseOneTableQuery), texts and bytes
/// are read piece by piece from the table itself, so that even SQLite never has a whole value in
/// memory. Otherwise SQLite gives each value in one piece.
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
    using Statement = SqliteDatabase::Statement;

    /// Where a column of the result is found.
    struct ColumnPlan {
        int index = 0; ///< in m_statement, or in m_details
        /// m_details has the value's type at `index` and, if the value is short, the value after
        /// it.
        bool isInPieces = false;
        /// In the table.
        std::string name;
        SqliteDatabase::Blob blob;
        /// Reads a value that cannot be read in pieces.
        Statement whole;
    };

    /// Where the rows are those of one table: replaces m_statement by one that leaves long values
    /// in the table and gives each row's number, as far as that is needed.
    void PlanOneTable(const std::string& sql, SourceUse use);
    bool FindTable(const OneTableQuery& query);
    bool RunWithRowIds(const OneTableQuery& query);
    void PrepareDetails();
    void PlanEditing();
    void PlanKeyColumns();
    long long CurrentRow() const;
    bool HasCurrentRow() const;
    bool IsPlainTable(const char* schema, const char* table);
    std::string FindRowIdName(const char* schema, const char* table);
    bool IsInPieces(sqlite3_stmt* statement, int column) const;
    bool SeekBlob(ColumnPlan& plan, long long row);
    void ReadInPieces(ColumnPlan& plan, ValueSink& sink);
    void ReadFromTable(ColumnPlan& plan, Value::Type type, ValueSink& sink);

    SqliteDatabase m_database;
    Statement m_statement;
    std::vector<std::string> m_names;
    std::vector<ColumnKind> m_kinds;
    EditPlan m_editPlan;
    std::vector<ColumnPlan> m_plans;

    // For a query on one table. With m_hasRowIds the last column of m_statement is the row's
    // number.
    std::string m_schema;
    std::string m_table;
    std::string m_rowId; ///< name of the row's number
    Statement m_details; ///< types and short values of one row
    bool m_hasRowIds = false;
    bool m_hasDetails = false; ///< m_details is at the current row
};

} // namespace vnquery

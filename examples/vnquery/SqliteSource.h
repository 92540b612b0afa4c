// Rows from an SQLite database file.
#pragma once

#include "RowSource.h"

#include <memory>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;
struct sqlite3_blob;

namespace vnquery {

/// Runs one query on a database file that is opened for reading only and never made.
///
/// Where each row of the result is one of a single table (see TakeApart), texts and bytes are read
/// piece by piece from the table itself, so that not even SQLite has them in memory as a whole.
/// Else SQLite gives each value in one piece.
class SqliteSource : public RowSource {
public:
    SqliteSource(const std::string& file, const std::string& sql);
    ~SqliteSource() override;

    const std::vector<std::string>& GetColumns() const override { return m_names; }
    bool Next() override;
    void Read(std::size_t column, ValueSink& sink) override;

private:
    template <auto Close>
    struct Closer {
        template <class Handle>
        void operator()(Handle* handle) const {
            Close(handle);
        }
    };
    static void CloseDatabase(sqlite3* database);
    static void CloseStatement(sqlite3_stmt* statement);
    static void CloseBlob(sqlite3_blob* blob);
    using Statement = std::unique_ptr<sqlite3_stmt, Closer<CloseStatement>>;

    /// Where a column of the result is found.
    struct ColumnPlan {
        int index = 0; ///< in m_statement, or in m_details
        bool isInPieces =
            false;        ///< m_details has its type there, and behind it the value if it is short
        std::string name; ///< in the table
        std::unique_ptr<sqlite3_blob, Closer<CloseBlob>> blob;
        Statement whole; ///< reads the value of a row that cannot be read in pieces
    };

    void Open(const std::string& file);
    Statement Prepare(const std::string& sql, const char** rest = nullptr);
    /// Puts a statement that leaves long values in their table in the place of m_statement, if it
    /// can.
    void PlanPieces(const std::string& sql);
    void PrepareDetails();
    long long CurrentRow() const;
    bool IsPlainTable(const char* schema, const char* table);
    std::string FindRowIdName(const char* schema, const char* table);
    bool IsInPieces(sqlite3_stmt* statement, int column) const;
    bool SeekBlob(ColumnPlan& plan, long long row);
    void ReadBlob(ColumnPlan& plan, ValueSink& sink);
    void ReadInPieces(ColumnPlan& plan, ValueSink& sink);
    void ReadFromTable(ColumnPlan& plan, ValueSink& sink);
    void ReadWhole(sqlite3_stmt* statement, int column, ValueSink& sink);
    [[noreturn]] void Fail(const std::string& what);

    std::string m_file;
    std::unique_ptr<sqlite3, Closer<CloseDatabase>> m_database;
    Statement m_statement;
    std::vector<std::string> m_names;
    std::vector<ColumnPlan> m_plans;
    bool m_isTextUtf8 = false;

    // For a query of one table. Its row's number is the last column of m_statement.
    std::string m_schema;
    std::string m_table;
    std::string m_rowId;       ///< name of the row's number
    Statement m_details;       ///< gives types, numbers and NULL of one row
    bool m_hasDetails = false; ///< m_details stands on the current row
};

} // namespace vnquery

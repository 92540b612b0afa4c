// A table that a query reads: its names, and what can be written back to it.
#pragma once

#include "vnquery/result/EditPlan.h"
#include "vnquery/sources/OneTableQuery.h"
#include "vnquery/sources/SqliteDatabase.h"

#include <map>
#include <optional>
#include <string>

namespace vnquery {

/// A table of a database file; neither a view nor a virtual table.
class SqliteTable {
public:
    /// The table whose rows a query gives; nothing when it gives others. `statement` is the query,
    /// prepared; the database must outlive the table.
    static std::optional<SqliteTable> Find(const SqliteDatabase& database, sqlite3_stmt* statement,
                                           const OneTableQuery& query);

    const std::string& GetSchema() const { return m_schema; }
    const std::string& GetName() const { return m_name; }
    /// Schema and name, quoted.
    std::string GetQuotedName() const { return QuoteName(m_schema) + "." + QuoteName(m_name); }
    /// Whether sqlite3_blob_open finds the table's columns. It counts virtual columns, which a row
    /// does not have, and so may open another column's value.
    static bool CanOpenBlobs(const SqliteDatabase& database, const std::string& schema,
                             const std::string& table);
    /// A name of the row's number that no column hides; "" when there is none, or when the rows
    /// have no numbers.
    const std::string& GetRowIdName() const { return m_rowId; }

    /// What can be written back of the columns of `statement`, with row numbers as the key.
    EditPlan PlanEditing(sqlite3_stmt* statement) const;
    /// Makes the columns of the primary key the plan's key, if all of them are selected.
    void UseKeyColumns(EditPlan& plan) const;

private:
    struct Column {
        std::string defaultSql;
        bool isNullable;
        bool isStored;    ///< not generated
        bool isKey;       ///< part of the primary key
        std::string type; ///< in upper case
    };

    SqliteTable(const SqliteDatabase& database, const char* schema, const char* name);

    /// SQL with the schema as ?1 and the table as ?2.
    SqliteDatabase::Statement Prepare(const char* sql) const;
    bool IsPlain() const;
    std::string FindRowIdName() const;
    std::map<std::string, Column> ReadColumns() const;

    const SqliteDatabase* m_database;
    std::string m_schema;
    std::string m_name;
    std::string m_rowId;
};

} // namespace vnquery

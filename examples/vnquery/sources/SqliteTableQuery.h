// The rows of a query of one SQLite table: quickly while values are short, long ones in pieces.
#pragma once

#include "vnquery/sources/OneTableQuery.h"
#include "vnquery/sources/Parameters.h"
#include "vnquery/sources/SqliteTableRow.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vnquery {

/// Where each row of the result is one of a table, the same query can be asked in two ways:
/// - whole: all columns and the row's number, while SQLite is told to refuse what is longer than
///   SqliteLengthLimit allows. A step that meets a longer value fails before the value is loaded.
/// - in pieces: the row's number and the columns that hold no long values; the others are read from
///   the table by SqliteTableRow.
/// It begins with the first way. After a refusal it goes on in the second one, and comes back to
/// the first where the rows come in the order of their numbers, so that it can go on after the last
/// one. In any other order the second way begins anew and leaves out the rows already given; that
/// is done only where SQLite plans both ways alike and nothing in the query differs from run to
/// run, and it fails when the numbers of these rows are not the same as before. All happens in one
/// transaction, so no other process can change the rows in between.
///
/// All functions throw Failure and Interrupted.
class SqliteTableQuery {
public:
    /// Null when SQLite cannot ask in this way, for instance for lack of columns: then `plain`, the
    /// prepared query, has to be used. The database must outlive the object.
    static std::unique_ptr<SqliteTableQuery> Make(const SqliteDatabase& database,
                                                  const SqliteTable& table,
                                                  const OneTableQuery& query, sqlite3_stmt* plain,
                                                  const Parameters& parameters);
    ~SqliteTableQuery();

    /// Whether there are columns that are read in pieces where they are long.
    bool HasLongColumns() const { return m_row != nullptr; }
    bool Next();
    void Read(std::size_t column, ValueSink& sink);
    /// Nothing for the row that max() and similar functions give for no rows: it is not in the
    /// table.
    std::optional<long long> GetRowNumber() const;

private:
    using Statement = SqliteDatabase::Statement;

    enum class Way { Whole, InPieces };

    struct Column {
        bool isInPieces = false;
        int index = 0; ///< in m_row if isInPieces, else in the statements of Way::InPieces
    };

    /// The statements of one way.
    struct Statements {
        std::string sql;
        Statement fromStart;
        Statement fromNumber; ///< begins with the row number that is its parameter
    };

    SqliteTableQuery(const SqliteDatabase& database, const SqliteTable& table,
                     const Parameters& parameters)
        : m_database(database), m_table(table), m_parameters(parameters) {}
    Statement TryPrepare(const std::string& sql) const;
    bool Prepare(const OneTableQuery& query, sqlite3_stmt* plain);
    void ChooseWay(const std::string& numbered);
    bool HasNumberOrder(const std::string& sql) const;
    bool CanGoOn();
    void GoOn(Way way);
    void GoOnInPieces();
    void LeaveOutRowsGiven();
    int Step();
    void CountRow();
    void ReadFromTable(long long number, int index, ValueSink& sink);
    void Close();
    void CheckInvariants() const;
    [[noreturn]] void FailQuery() const;

    const SqliteDatabase& m_database;
    const SqliteTable m_table;
    const Parameters m_parameters;
    std::vector<Column> m_columns;
    std::unique_ptr<SqliteTableRow> m_row; ///< null when no column is in pieces
    bool m_isRowFound = false;             ///< m_row is at the current row
    Statements m_ways[2];
    sqlite3_stmt* m_current = nullptr;
    Way m_way = Way::InPieces;
    bool m_isInTransaction = false;
    bool m_isLimited = false; ///< Way::Whole refuses long values

    // The rows given so far.
    unsigned long long m_rows = 0;
    unsigned long long m_hash = 0; ///< of their numbers
    long long m_last = 0;          ///< number of the last one
    bool m_isAscending = true;

    bool m_isNumberOrder = false; ///< the rows come in the order of their numbers, up or down
    std::optional<bool> m_canGoOn;
    int m_stay = 0;      ///< rows to read in pieces after a refusal
    int m_rowsInWay = 0; ///< since the last change of way
};

} // namespace vnquery

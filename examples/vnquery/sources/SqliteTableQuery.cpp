// Invariants:
// 1. m_current is null or one of the statements of m_way.
// 2. m_rows rows have been given; m_hash and m_last are of these and of no others.
// 3. m_isLimited only if there is a way in pieces to go on with, and then a transaction is open
//    until the last row: m_isInTransaction, or a session's.
#include "vnquery/sources/SqliteTableQuery.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/SqliteBind.h"
#include "vnquery/tasks/Failure.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <string_view>
#include <utility>

#include <sqlite3.h>

namespace vnquery {

namespace {

constexpr char kSubquery[] = "vnquery_rows";
constexpr char kFromParameter[] = ":vnquery_from";
/// Rows that are read in pieces before the whole way is tried again. Doubled each time it refuses
/// again at once, so that a table of long values is not asked twice for each of its rows.
constexpr int kMinStay = 16;
constexpr int kMaxStay = 1024;

/// Whether it is a column of the table whose declared type allows texts and bytes.
bool IsInPieces(sqlite3_stmt* statement, int column) {
    const char* declared = sqlite3_column_decltype(statement, column);
    if (!sqlite3_column_origin_name(statement, column))
        return false;
    const std::string type = ToUpper(declared ? declared : "");
    constexpr const char* kNumbers[] = {"INT", "REAL", "FLOA", "DOUB"};
    return std::ranges::none_of(
        kNumbers, [&](const char* word) { return type.find(word) != std::string::npos; });
}

/// Notes the functions of the statements prepared during its life.
class FunctionWatch {
public:
    explicit FunctionWatch(sqlite3* database) : m_database(database) {
        sqlite3_set_authorizer(database, Note, this);
    }
    ~FunctionWatch() { sqlite3_set_authorizer(m_database, nullptr, nullptr); }
    FunctionWatch(const FunctionWatch&) = delete;
    FunctionWatch& operator=(const FunctionWatch&) = delete;

    /// Whether all of them are known to give the same result in every run.
    bool IsRepeatable() const { return m_isRepeatable; }

private:
    static int Note(void* self, int action, const char*, const char* name, const char*,
                    const char*) {
        constexpr std::string_view kRepeatable[] = {
            "abs",       "char",   "coalesce", "format",  "glob",     "hex",   "ifnull",  "iif",
            "instr",     "length", "like",     "likely",  "lower",    "ltrim", "max",     "min",
            "nullif",    "printf", "quote",    "replace", "round",    "rtrim", "sign",    "substr",
            "substring", "trim",   "typeof",   "unicode", "unlikely", "upper", "zeroblob"};
        if (action == SQLITE_FUNCTION &&
            std::ranges::find(kRepeatable, std::string_view(name ? name : "")) ==
                std::end(kRepeatable))
            static_cast<FunctionWatch*>(self)->m_isRepeatable = false;
        return SQLITE_OK;
    }

    sqlite3* m_database;
    bool m_isRepeatable = true;
};

/// An expression that mentions the columns and loads none of them. With it SQLite takes the same
/// path to the rows as if they were selected; without it, it might walk through another index. (A
/// function would not do: SQLite sorts the whole subquery before it calls functions.)
std::string Mention(const std::vector<std::string>& columns) {
    std::string sql = "CASE 1";
    for (const std::string& column : columns)
        sql += " WHEN 0 THEN " + column;
    return sql + " END";
}

SqliteDatabase::Statement TryPrepare(const SqliteDatabase& database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database.Get(), sql.c_str(), -1, &statement, nullptr);
    return SqliteDatabase::Statement(statement);
}

/// How SQLite would run the statement, a line per step.
std::vector<std::string> PlanOf(const SqliteDatabase& database, const std::string& sql) {
    constexpr int kDetail = 3;
    std::vector<std::string> plan;
    const auto explained = TryPrepare(database, "EXPLAIN QUERY PLAN " + sql);
    while (explained && sqlite3_step(explained.get()) == SQLITE_ROW)
        plan.emplace_back(SqliteColumnText(explained.get(), kDetail));
    return plan;
}

/// Whether the query and a statement that has it as a subquery walk the same path. SQLite may merge
/// the two or run both: the order of the rows is the same.
bool HasSamePlan(const SqliteDatabase& database, const std::string& query,
                 const std::string& aroundIt) {
    std::vector<std::string> plan = PlanOf(database, aroundIt);
    std::erase_if(plan, [](const std::string& line) {
        return line == std::string("CO-ROUTINE ") + kSubquery ||
               line == std::string("SCAN ") + kSubquery;
    });
    return plan == PlanOf(database, query);
}

} // namespace

// --- the two ways --------------------------------------------------------------------------------

std::unique_ptr<SqliteTableQuery> SqliteTableQuery::Make(const SqliteDatabase& database,
                                                         const SqliteTable& table,
                                                         const OneTableQuery& query,
                                                         sqlite3_stmt* plain,
                                                         const Parameters& parameters) {
    std::unique_ptr<SqliteTableQuery> made(new SqliteTableQuery(database, table, parameters));
    if (!made->Prepare(query, plain))
        return nullptr;
    made->CheckInvariants();
    return made;
}

SqliteDatabase::Statement SqliteTableQuery::TryPrepare(const std::string& sql) const {
    Statement statement = vnquery::TryPrepare(m_database, sql);
    BindNames(statement.get(), m_parameters);
    return statement;
}

/// Makes the query a subquery that also gives each row's number, and asks it for the columns of
/// each way. SQLite merges the two, so it neither loads nor sorts the others.
bool SqliteTableQuery::Prepare(const OneTableQuery& query, sqlite3_stmt* plain) {
    std::string names;
    std::string others;
    std::vector<std::string> left; // names in the subquery of the columns in pieces
    std::vector<std::string> inPieces;
    int otherCount = 0;
    for (int i = 0; i < sqlite3_column_count(plain); ++i) {
        const std::string name = "c" + std::to_string(i) + ", ";
        names += name;
        Column& column = m_columns.emplace_back();
        column.isInPieces = IsInPieces(plain, i);
        if (column.isInPieces) {
            left.push_back("c" + std::to_string(i));
            column.index = static_cast<int>(inPieces.size());
            inPieces.emplace_back(sqlite3_column_origin_name(plain, i));
        } else {
            column.index = otherCount++;
            others += name;
        }
    }
    const std::string numbered =
        query.select + ", " + m_table.GetRowIdName() + " " + query.from + "\n";
    const std::string subquery =
        "WITH " + std::string(kSubquery) + "(" + names + "k) AS (" + numbered + ") SELECT ";
    const std::string from = "k FROM " + std::string(kSubquery);
    Statements& whole = m_ways[static_cast<int>(Way::Whole)];
    Statements& pieces = m_ways[static_cast<int>(Way::InPieces)];
    whole.sql = subquery + names + from;
    pieces.sql = subquery + others + (left.empty() ? "" : Mention(left) + ", ") + from;
    pieces.fromStart = TryPrepare(pieces.sql);
    if (!pieces.fromStart)
        return false; // the query stays unchanged
    if (!inPieces.empty())
        m_row = std::make_unique<SqliteTableRow>(m_database, m_table, std::move(inPieces));
    ChooseWay(numbered);
    return true;
}

/// `numbered` is the query with the row's number as its last column. Without values in pieces both
/// ways are the same, and nothing is refused.
void SqliteTableQuery::ChooseWay(const std::string& numbered) {
    Statements& whole = m_ways[static_cast<int>(Way::Whole)];
    Statements& pieces = m_ways[static_cast<int>(Way::InPieces)];
    m_current = pieces.fromStart.get();
    m_stay = kMinStay;
    if (!m_row)
        return;
    const FunctionWatch watch(m_database.Get());
    whole.fromStart = TryPrepare(numbered);
    if (!whole.fromStart || !watch.IsRepeatable() || !HasSamePlan(m_database, numbered, pieces.sql))
        return;
    if (sqlite3_get_autocommit(m_database.Get())) { // no session's transaction
        m_database.Run("BEGIN", Text(IDS_VQ_CANNOT_RUN_ON, {m_database.GetFile()}));
        m_isInTransaction = true;
    }
    m_isLimited = true;
    m_way = Way::Whole;
    m_current = whole.fromStart.get();
    m_isNumberOrder = HasNumberOrder(numbered);
}

SqliteTableQuery::~SqliteTableQuery() { Close(); }

/// Gives the database free for others.
void SqliteTableQuery::Close() {
    m_current = nullptr;
    m_row.reset();
    for (Statements& statements : m_ways)
        statements = {};
    if (m_isInTransaction)
        sqlite3_exec(m_database.Get(), "COMMIT", nullptr, nullptr, nullptr);
    m_isInTransaction = false;
    m_isLimited = false;
    m_way = Way::InPieces;
}

void SqliteTableQuery::CheckInvariants() const {
    assert(!m_current || m_current == m_ways[static_cast<int>(m_way)].fromStart.get() ||
           m_current == m_ways[static_cast<int>(m_way)].fromNumber.get());
    assert(!m_isLimited || (m_row && m_ways[static_cast<int>(Way::InPieces)].fromStart));
    assert(m_way == Way::InPieces || m_isLimited);
}

// --- going on after a refusal --------------------------------------------------------------------

/// Whether SQLite walks through the table itself, up or down, and does nothing else.
bool SqliteTableQuery::HasNumberOrder(const std::string& sql) const {
    constexpr std::string_view kUsing = " USING ";
    const std::vector<std::string> plan = PlanOf(m_database, sql);
    if (plan.size() != 1)
        return false;
    const std::size_t index = plan[0].rfind(kUsing);
    if (index == std::string::npos)
        return plan[0].starts_with("SCAN ");
    return plan[0].starts_with("SEARCH ") &&
           plan[0].substr(index + kUsing.size()).starts_with("INTEGER PRIMARY KEY (rowid");
}

/// Whether statements can begin after the last row given. One row does not tell the direction.
bool SqliteTableQuery::CanGoOn() {
    if (!m_isNumberOrder || !m_isAscending || m_rows < 2 ||
        m_last == std::numeric_limits<long long>::max())
        return false;
    if (!m_canGoOn) {
        m_canGoOn = true;
        for (Statements& way : m_ways) {
            const std::string sql = way.sql + " WHERE k >= " + kFromParameter;
            m_canGoOn = *m_canGoOn && HasNumberOrder(sql);
            way.fromNumber = TryPrepare(sql);
            m_canGoOn = *m_canGoOn && way.fromNumber;
        }
    }
    return *m_canGoOn;
}

void SqliteTableQuery::GoOn(Way way) {
    sqlite3_reset(m_current);
    m_way = way;
    m_current = m_ways[static_cast<int>(way)].fromNumber.get();
    sqlite3_reset(m_current);
    sqlite3_bind_int64(m_current, sqlite3_bind_parameter_index(m_current, kFromParameter),
                       m_last + 1);
    m_rowsInWay = 0;
}

void SqliteTableQuery::GoOnInPieces() {
    m_stay = m_rowsInWay < m_stay ? std::min(m_stay * 2, kMaxStay) : kMinStay;
    m_rowsInWay = 0;
    if (CanGoOn())
        return GoOn(Way::InPieces);
    sqlite3_reset(m_current);
    m_way = Way::InPieces;
    m_current = m_ways[static_cast<int>(m_way)].fromStart.get();
    LeaveOutRowsGiven();
}

void SqliteTableQuery::LeaveOutRowsGiven() {
    const unsigned long long rows = std::exchange(m_rows, 0);
    const unsigned long long hash = std::exchange(m_hash, 0);
    while (m_rows < rows) {
        if (Step() != SQLITE_ROW)
            FailQuery();
        CountRow();
    }
    if (m_hash != hash)
        throw Failure(kQueryFailed, Text(IDS_VQ_QUERY_FAILED, {m_database.GetFile()}) + ": " +
                                        Text(IDS_VQ_CANNOT_READ_TABLE_ROW, {m_table.GetName()}) +
                                        ".");
}

// --- rows ----------------------------------------------------------------------------------------

void SqliteTableQuery::FailQuery() const {
    m_database.Fail(Text(IDS_VQ_QUERY_FAILED, {m_database.GetFile()}));
}

int SqliteTableQuery::Step() {
    if (m_way == Way::InPieces)
        return sqlite3_step(m_current);
    const SqliteLengthLimit limit(m_database);
    return sqlite3_step(m_current);
}

void SqliteTableQuery::CountRow() {
    const std::optional<long long> number = GetRowNumber();
    m_isAscending = m_isAscending && number && (m_rows == 0 || *number > m_last);
    m_last = number.value_or(0);
    // FNV-1a over whole numbers.
    m_hash = (m_hash ^ static_cast<unsigned long long>(m_last)) * 0x100000001b3;
    ++m_rows;
}

bool SqliteTableQuery::Next() {
    if (!m_current)
        return false;
    if (m_way == Way::InPieces && m_isLimited && m_rowsInWay >= m_stay && CanGoOn())
        GoOn(Way::Whole);
    int result = Step();
    if (result == SQLITE_TOOBIG && m_way == Way::Whole) {
        GoOnInPieces();
        CheckInvariants();
        result = Step();
    }
    if (result == SQLITE_DONE) {
        Close();
        return false;
    }
    if (result != SQLITE_ROW)
        FailQuery();
    CountRow();
    ++m_rowsInWay;
    m_isRowFound = false;
    return true;
}

std::optional<long long> SqliteTableQuery::GetRowNumber() const {
    const int column = sqlite3_column_count(m_current) - 1;
    return sqlite3_column_type(m_current, column) == SQLITE_NULL
               ? std::nullopt
               : std::optional(sqlite3_column_int64(m_current, column));
}

void SqliteTableQuery::Read(std::size_t column, ValueSink& sink) {
    const Column& plan = m_columns[column];
    if (m_way == Way::Whole)
        m_database.ReadWhole(m_current, static_cast<int>(column), sink);
    else if (!plan.isInPieces)
        m_database.ReadWhole(m_current, plan.index, sink);
    else if (const std::optional<long long> number = GetRowNumber())
        ReadFromTable(*number, plan.index, sink);
    else
        sink.Null();
}

void SqliteTableQuery::ReadFromTable(long long number, int index, ValueSink& sink) {
    if (!m_isRowFound)
        m_row->GoTo(number);
    m_isRowFound = true;
    m_row->Read(static_cast<std::size_t>(index), sink);
}

} // namespace vnquery

#include "SqliteSource.h"

#include "Failure.h"
#include "Process.h"
#include "SqliteQuery.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <filesystem>

#include <sqlite3.h>

namespace vnquery {

namespace {

constexpr int kInstructionsPerLook = 10000; ///< between two looks for a signal

int StopOnSignal(void*) { return InterruptingSignal() != 0; }

std::string_view ColumnText(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text ? std::string_view(
                      text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)))
                : std::string_view();
}

/// The shortest text that reads back as the same number, as SQLite would write it.
std::string FormatReal(double number) {
    char text[40];
    const auto [end, error] = std::to_chars(text, text + sizeof text, number);
    std::string formatted(text, end);
    if (formatted.find_first_not_of("-0123456789") == std::string::npos)
        formatted += ".0";
    return formatted;
}

bool EqualsNoCase(const char* a, const char* b) { return sqlite3_stricmp(a, b) == 0; }

} // namespace

void SqliteSource::CloseDatabase(sqlite3* database) { sqlite3_close(database); }
void SqliteSource::CloseStatement(sqlite3_stmt* statement) { sqlite3_finalize(statement); }
void SqliteSource::CloseBlob(sqlite3_blob* blob) { sqlite3_blob_close(blob); }

SqliteSource::SqliteSource(const std::string& file, const std::string& sql) : m_file(file) {
    Open(file);
    const char* rest = nullptr;
    m_statement = Prepare(sql, &rest);
    if (!m_statement)
        throw Failure(kQueryFailed, "the text of --sql holds no query. Give one, such as --sql "
                                    "\"select * from sqlite_schema\".");
    if (Statement second = Prepare(rest))
        throw Failure(kQueryFailed,
                      "the text of --sql holds more than one statement. Give one query.");
    const int count = sqlite3_column_count(m_statement.get());
    if (count == 0)
        throw Failure(kQueryFailed,
                      "the statement gives no result. vnquery runs queries and changes "
                      "nothing; give a SELECT.");
    for (int i = 0; i < count; ++i) {
        m_names.emplace_back(sqlite3_column_name(m_statement.get(), i));
        m_plans.emplace_back().index = i;
    }
    PlanPieces(sql);
}

SqliteSource::~SqliteSource() = default;

void SqliteSource::Fail(const std::string& what) {
    if (sqlite3_errcode(m_database.get()) == SQLITE_INTERRUPT)
        CheckInterrupted();
    throw Failure(kQueryFailed, what + ": " + sqlite3_errmsg(m_database.get()) + ".");
}

void SqliteSource::Open(const std::string& file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        throw Failure(kQueryFailed, "cannot open the database " + file +
                                        ": there is no such file. Check the name given to --db.");
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
    m_database.reset(database);
    if (result != SQLITE_OK)
        Fail("cannot open the database " + file);
    sqlite3_busy_timeout(database, 5000);
    sqlite3_progress_handler(database, kInstructionsPerLook, StopOnSignal, nullptr);
    const Statement encoding = Prepare("PRAGMA encoding");
    if (sqlite3_step(encoding.get()) != SQLITE_ROW)
        Fail("cannot read the database " + file);
    m_isTextUtf8 = ColumnText(encoding.get(), 0) == "UTF-8";
}

SqliteSource::Statement SqliteSource::Prepare(const std::string& sql, const char** rest) {
    sqlite3_stmt* statement = nullptr;
    const char* tail = nullptr;
    const int result = sqlite3_prepare_v2(m_database.get(), sql.c_str(), -1, &statement, &tail);
    if (rest)
        *rest = sql.c_str() + (tail ? tail - sql.c_str() : 0);
    if (result == SQLITE_NOTADB)
        throw Failure(kQueryFailed, m_file + " is no SQLite database, or it is encrypted.");
    if (result != SQLITE_OK)
        Fail("cannot run the query on " + m_file);
    return Statement(statement);
}

// --- reading in pieces ---------------------------------------------------------------------------

/// Not a view, not a virtual table, and its rows have numbers.
bool SqliteSource::IsPlainTable(const char* schema, const char* table) {
    const Statement list =
        Prepare("SELECT 1 FROM pragma_table_list(?2) WHERE schema = ?1 COLLATE NOCASE "
                "AND type = 'table' AND wr = 0");
    sqlite3_bind_text(list.get(), 1, schema, -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(list.get(), 2, table, -1, SQLITE_TRANSIENT);
    return sqlite3_step(list.get()) == SQLITE_ROW;
}

/// The row number's name that no column of the table takes away; "" when there is none.
std::string SqliteSource::FindRowIdName(const char* schema, const char* table) {
    const Statement columns = Prepare("SELECT 1 FROM pragma_table_xinfo(?2, ?1) "
                                      "WHERE name = ?3 COLLATE NOCASE");
    for (const char* name : {"rowid", "_rowid_", "oid"}) {
        sqlite3_reset(columns.get());
        sqlite3_bind_text(columns.get(), 1, schema, -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(columns.get(), 2, table, -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(columns.get(), 3, name, -1, SQLITE_TRANSIENT);
        if (sqlite3_step(columns.get()) == SQLITE_DONE)
            return name;
    }
    return {};
}

/// A column of the table whose declaration does not speak against texts and bytes.
bool SqliteSource::IsInPieces(sqlite3_stmt* statement, int column) const {
    const char* declared = sqlite3_column_decltype(statement, column);
    if (!sqlite3_column_origin_name(statement, column))
        return false;
    std::string type = declared ? declared : "";
    std::ranges::transform(type, type.begin(), [](char ch) {
        return ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
    });
    constexpr const char* kNumbers[] = {"INT", "REAL", "FLOA", "DOUB"};
    return std::ranges::none_of(
        kNumbers, [&](const char* word) { return type.find(word) != std::string::npos; });
}

void SqliteSource::PlanPieces(const std::string& sql) {
    sqlite3_stmt* plain = m_statement.get();
    const std::optional<OneTableQuery> query = TakeApart(sql);
    const int count = sqlite3_column_count(plain);
    int first = 0;
    while (first < count && !IsInPieces(plain, first))
        ++first;
    if (!query || first == count)
        return;
    const char* table = sqlite3_column_table_name(plain, first);
    const char* schema = sqlite3_column_database_name(plain, first);
    if (!EqualsNoCase(table, query->table.c_str()) || !IsPlainTable(schema, table))
        return;
    m_rowId = FindRowIdName(schema, table);
    if (m_rowId.empty())
        return;

    // The query becomes a subquery with a number for each row, of which only that and what is no
    // long value is asked for. SQLite merges the two, and so neither loads nor sorts what is not
    // asked for.
    std::string names;
    std::string columns;
    std::vector<ColumnPlan> plans;
    int index = 0;
    int detailIndex = 0;
    for (int i = 0; i < count; ++i) {
        const std::string name = "c" + std::to_string(i) + ", ";
        ColumnPlan& plan = plans.emplace_back();
        names += name;
        plan.isInPieces = IsInPieces(plain, i);
        if (plan.isInPieces) {
            plan.index = detailIndex;
            plan.name = sqlite3_column_origin_name(plain, i);
            detailIndex += 2;
        } else {
            plan.index = index++;
            columns += name;
        }
    }
    const std::string inPieces = "WITH q(" + names + "k) AS (" + query->select + ", " + m_rowId +
                                 " " + query->from + "\n) SELECT " + columns + "k FROM q";
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(m_database.get(), inPieces.c_str(), -1, &statement, nullptr) !=
        SQLITE_OK)
        return; // the query stays as it was given
    m_schema = schema;
    m_table = table;
    m_statement.reset(statement);
    m_plans = std::move(plans);
    PrepareDetails();
}

void SqliteSource::PrepareDetails() {
    const std::string longTypes = m_isTextUtf8 ? "('blob', 'text')" : "('blob')";
    std::string columns;
    for (const ColumnPlan& plan : m_plans) {
        if (!plan.isInPieces)
            continue;
        const std::string name = QuoteName(plan.name);
        columns.append(columns.empty() ? "typeof(" : ", typeof(").append(name);
        columns.append("), CASE WHEN typeof(").append(name).append(") IN ").append(longTypes);
        columns.append(" THEN NULL ELSE ").append(name).append(" END");
    }
    m_details = Prepare("SELECT " + columns + " FROM " + QuoteName(m_schema) + "." +
                        QuoteName(m_table) + " WHERE " + m_rowId + " = ?");
}

long long SqliteSource::CurrentRow() const {
    return sqlite3_column_int64(m_statement.get(), sqlite3_column_count(m_statement.get()) - 1);
}

/// Opens the value of a row; false when it cannot be read in pieces, as one that an ALTER TABLE
/// gave to rows that were there before.
bool SqliteSource::SeekBlob(ColumnPlan& plan, long long row) {
    int result = SQLITE_ERROR;
    if (plan.blob) {
        result = sqlite3_blob_reopen(plan.blob.get(), row);
    } else {
        sqlite3_blob* blob = nullptr;
        result = sqlite3_blob_open(m_database.get(), m_schema.c_str(), m_table.c_str(),
                                   plan.name.c_str(), row, 0, &blob);
        plan.blob.reset(blob);
    }
    if (result == SQLITE_OK)
        return true;
    plan.blob.reset();
    if (result != SQLITE_ERROR)
        Fail("cannot read a value of the column " + plan.name);
    return false;
}

void SqliteSource::ReadBlob(ColumnPlan& plan, ValueSink& sink) {
    const int length = sqlite3_blob_bytes(plan.blob.get());
    BYTE piece[kPieceSize];
    for (int done = 0; done < length;) {
        const int count = std::min(length - done, static_cast<int>(kPieceSize));
        if (sqlite3_blob_read(plan.blob.get(), piece, count, done) != SQLITE_OK)
            Fail("cannot read a value of the column " + plan.name);
        sink.Append(piece, static_cast<std::size_t>(count));
        done += count;
    }
    sink.End(static_cast<ULONGLONG>(length));
}

void SqliteSource::ReadInPieces(ColumnPlan& plan, ValueSink& sink) {
    const int rowColumn = sqlite3_column_count(m_statement.get()) - 1;
    if (sqlite3_column_type(m_statement.get(), rowColumn) == SQLITE_NULL)
        return; // max() and its like over no rows
    if (!m_hasDetails) {
        sqlite3_reset(m_details.get());
        sqlite3_bind_int64(m_details.get(), 1, CurrentRow());
        if (sqlite3_step(m_details.get()) != SQLITE_ROW)
            Fail("cannot read a row of the table " + m_table);
        m_hasDetails = true;
    }
    const std::string_view type = ColumnText(m_details.get(), plan.index);
    const bool isText = type == "text";
    if (type == "blob" || (isText && m_isTextUtf8)) {
        sink.Begin(isText ? Value::Type::Text : Value::Type::Binary);
        ReadFromTable(plan, sink);
    } else {
        ReadWhole(m_details.get(), plan.index + 1, sink);
    }
}

void SqliteSource::ReadFromTable(ColumnPlan& plan, ValueSink& sink) {
    if (SeekBlob(plan, CurrentRow())) {
        ReadBlob(plan, sink);
        return;
    }
    if (!plan.whole)
        plan.whole = Prepare("SELECT " + QuoteName(plan.name) + " FROM " + QuoteName(m_schema) +
                             "." + QuoteName(m_table) + " WHERE " + m_rowId + " = ?");
    sqlite3_bind_int64(plan.whole.get(), 1, CurrentRow());
    if (sqlite3_step(plan.whole.get()) != SQLITE_ROW)
        Fail("cannot read a value of the column " + plan.name);
    ReadWhole(plan.whole.get(), 0, sink);
    sqlite3_reset(plan.whole.get());
}

// --- rows ----------------------------------------------------------------------------------------

bool SqliteSource::Next() {
    CheckInterrupted();
    m_hasDetails = false;
    const int result = sqlite3_step(m_statement.get());
    if (result == SQLITE_NOTADB)
        throw Failure(kQueryFailed, m_file + " is no SQLite database, or it is encrypted.");
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        Fail("the query on " + m_file + " failed");
    return result == SQLITE_ROW;
}

void SqliteSource::Read(std::size_t column, ValueSink& sink) {
    ColumnPlan& plan = m_plans[column];
    if (plan.isInPieces)
        ReadInPieces(plan, sink);
    else
        ReadWhole(m_statement.get(), plan.index, sink);
}

void SqliteSource::ReadWhole(sqlite3_stmt* statement, int column, ValueSink& sink) {
    const int type = sqlite3_column_type(statement, column);
    if (type == SQLITE_NULL)
        return;
    if (type == SQLITE_INTEGER || type == SQLITE_FLOAT) {
        const std::string number = type == SQLITE_INTEGER
                                       ? std::to_string(sqlite3_column_int64(statement, column))
                                       : FormatReal(sqlite3_column_double(statement, column));
        sink.Begin(Value::Type::Number);
        sink.Append(number.data(), number.size());
        sink.End(number.size());
        return;
    }
    sink.Begin(type == SQLITE_TEXT ? Value::Type::Text : Value::Type::Binary);
    // In this order: asking for a text converts it, and only then its length is known.
    const void* bytes = type == SQLITE_TEXT
                            ? static_cast<const void*>(sqlite3_column_text(statement, column))
                            : sqlite3_column_blob(statement, column);
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    if (!bytes && sqlite3_errcode(m_database.get()) == SQLITE_NOMEM)
        throw Failure(kQueryFailed,
                      "SQLite has no memory for a value in one piece. Select the column "
                      "from its table alone, without joins: then it comes in pieces.");
    if (bytes)
        sink.Append(bytes, length);
    sink.End(length);
}

} // namespace vnquery

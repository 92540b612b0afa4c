#include "vnquery/sources/SqliteDatabase.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include <sqlite3.h>

namespace vnquery {

namespace {

constexpr int kInstructionsPerLook = 10000; ///< between two checks whether to stop
constexpr int kWaitForLock = 5000;          ///< milliseconds

int StopWhenAsked(void*) { return IsInterrupted(); }

/// The shortest text that reads back as the same number, with a decimal point as SQLite writes it.
class RealText {
public:
    explicit RealText(double number) {
        constexpr std::size_t kSuffix = 2;
        m_end = std::to_chars(m_text, m_text + sizeof m_text - kSuffix, number).ptr;
        if (Get().find_first_not_of("-0123456789") == std::string_view::npos)
            m_end = std::copy_n(".0", kSuffix, m_end);
    }
    std::string_view Get() const { return {m_text, m_end}; }

private:
    char m_text[40];
    char* m_end;
};

} // namespace

void SqliteDatabase::CloseDatabase(sqlite3* database) { sqlite3_close(database); }
void SqliteDatabase::CloseStatement(sqlite3_stmt* statement) { sqlite3_finalize(statement); }
void SqliteDatabase::CloseBlob(sqlite3_blob* blob) { sqlite3_blob_close(blob); }

SqliteLengthLimit::SqliteLengthLimit(const SqliteDatabase& database)
    : m_database(database.Get()), m_before(sqlite3_limit(m_database, SQLITE_LIMIT_LENGTH, kMost)) {}

SqliteLengthLimit::~SqliteLengthLimit() {
    sqlite3_limit(m_database, SQLITE_LIMIT_LENGTH, m_before);
}

std::string_view SqliteColumnText(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text ? std::string_view(
                      text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)))
                : std::string_view();
}

SqliteDatabase::SqliteDatabase(const std::string& file, Access access) : m_file(file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        throw Failure(kQueryFailed, Text(IDS_VQ_NO_DATABASE_FILE, {file}));
    if (std::filesystem::is_directory(file, error))
        throw Failure(kQueryFailed, Text(IDS_VQ_IS_FOLDER, {file}));
    sqlite3* database = nullptr;
    // One thread at a time uses the object, so SQLite needs no locks for each value.
    const int mode = SQLITE_OPEN_NOMUTEX |
                     (access == Access::Read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
    const int result = sqlite3_open_v2(file.c_str(), &database, mode, nullptr);
    m_database.reset(database);
    if (result != SQLITE_OK)
        Fail(Text(IDS_VQ_CANNOT_OPEN, {file}));
    sqlite3_busy_timeout(database, kWaitForLock);
    sqlite3_progress_handler(database, kInstructionsPerLook, StopWhenAsked, nullptr);
    const Statement encoding = Prepare("PRAGMA encoding");
    if (sqlite3_step(encoding.get()) != SQLITE_ROW)
        Fail(Text(IDS_VQ_CANNOT_READ_DATABASE, {file}));
    m_isTextUtf8 = SqliteColumnText(encoding.get(), 0) == "UTF-8";
}

void SqliteDatabase::Fail(const std::string& what) const {
    if (sqlite3_errcode(m_database.get()) == SQLITE_NOTADB)
        throw Failure(kQueryFailed, Text(IDS_VQ_NOT_A_DATABASE, {m_file}));
    if (sqlite3_errcode(m_database.get()) == SQLITE_INTERRUPT)
        CheckInterrupted();
    const int place = sqlite3_error_offset(m_database.get());
    throw Failure(kQueryFailed, what + ": " + sqlite3_errmsg(m_database.get()) + ".",
                  place < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(place)));
}

SqliteDatabase::Statement SqliteDatabase::Prepare(const std::string& sql, const char** rest) const {
    sqlite3_stmt* statement = nullptr;
    const char* tail = nullptr;
    const int result = sqlite3_prepare_v2(m_database.get(), sql.c_str(), -1, &statement, &tail);
    if (rest)
        *rest = sql.c_str() + (tail ? tail - sql.c_str() : 0);
    if (result != SQLITE_OK)
        Fail(Text(IDS_VQ_CANNOT_RUN_ON, {m_file}));
    return Statement(statement);
}

int SqliteDatabase::StepOnce(sqlite3_stmt* statement) const {
    const int result = sqlite3_step(statement);
    return result == SQLITE_ROW ? 1 : result == SQLITE_DONE ? 0 : -1;
}

void SqliteDatabase::Run(const std::string& sql, const std::string& what) const {
    const Statement statement = Prepare(sql);
    while (Step(statement.get(), what))
        continue;
}

void SqliteDatabase::ReadWhole(sqlite3_stmt* statement, int column, ValueSink& sink) const {
    const int type = sqlite3_column_type(statement, column);
    switch (type) {
    case SQLITE_NULL:
        return sink.Null();
    case SQLITE_INTEGER:
        return sink.Integer(sqlite3_column_int64(statement, column));
    case SQLITE_FLOAT:
        return sink.Whole(Value::Type::Number,
                          RealText(sqlite3_column_double(statement, column)).Get());
    default:
        break;
    }
    // In this order: the call for the text converts it, and its length is known only afterwards.
    const void* bytes = type == SQLITE_TEXT
                            ? static_cast<const void*>(sqlite3_column_text(statement, column))
                            : sqlite3_column_blob(statement, column);
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    if (!bytes && sqlite3_errcode(m_database.get()) == SQLITE_NOMEM)
        throw Failure(kQueryFailed, Text(IDS_VQ_VALUE_TOO_LONG));
    const auto valueType = type == SQLITE_TEXT ? Value::Type::Text : Value::Type::Binary;
    const std::string_view value(static_cast<const char*>(bytes), bytes ? length : 0);
    if (length <= kPieceSize)
        return sink.Whole(valueType, value);
    if (sink.Begin(valueType, length))
        sink.Append(value.data(), value.size());
    sink.End();
}

void SqliteDatabase::ReadPieces(sqlite3_blob* blob, Value::Type type, const std::string& column,
                                ValueSink& sink) const {
    const int length = sqlite3_blob_bytes(blob);
    const bool isAsked = sink.Begin(type, static_cast<ULONGLONG>(length));
    BYTE piece[kPieceSize];
    for (int done = 0; isAsked && done < length;) {
        const int count = std::min(length - done, static_cast<int>(kPieceSize));
        if (sqlite3_blob_read(blob, piece, count, done) != SQLITE_OK)
            Fail(Text(IDS_VQ_CANNOT_READ_VALUE, {column}));
        sink.Append(piece, static_cast<std::size_t>(count));
        done += count;
    }
    sink.End();
}

} // namespace vnquery

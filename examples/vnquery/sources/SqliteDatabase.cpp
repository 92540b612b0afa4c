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
std::string FormatReal(double number) {
    char text[40];
    const auto [end, error] = std::to_chars(text, text + sizeof text, number);
    std::string formatted(text, end);
    if (formatted.find_first_not_of("-0123456789") == std::string::npos)
        formatted += ".0";
    return formatted;
}

} // namespace

void SqliteDatabase::CloseDatabase(sqlite3* database) { sqlite3_close(database); }
void SqliteDatabase::CloseStatement(sqlite3_stmt* statement) { sqlite3_finalize(statement); }
void SqliteDatabase::CloseBlob(sqlite3_blob* blob) { sqlite3_blob_close(blob); }

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
    sqlite3* database = nullptr;
    const int mode = access == Access::Read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
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
    if (sqlite3_errcode(m_database.get()) == SQLITE_INTERRUPT)
        CheckInterrupted();
    throw Failure(kQueryFailed, what + ": " + sqlite3_errmsg(m_database.get()) + ".");
}

SqliteDatabase::Statement SqliteDatabase::Prepare(const std::string& sql, const char** rest) const {
    sqlite3_stmt* statement = nullptr;
    const char* tail = nullptr;
    const int result = sqlite3_prepare_v2(m_database.get(), sql.c_str(), -1, &statement, &tail);
    if (rest)
        *rest = sql.c_str() + (tail ? tail - sql.c_str() : 0);
    if (result == SQLITE_NOTADB)
        throw Failure(kQueryFailed, Text(IDS_VQ_NOT_A_DATABASE, {m_file}));
    if (result != SQLITE_OK)
        Fail(Text(IDS_VQ_CANNOT_RUN_ON, {m_file}));
    return Statement(statement);
}

bool SqliteDatabase::Step(sqlite3_stmt* statement, const std::string& what) const {
    const int result = sqlite3_step(statement);
    if (result == SQLITE_NOTADB)
        throw Failure(kQueryFailed, Text(IDS_VQ_NOT_A_DATABASE, {m_file}));
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        Fail(what);
    return result == SQLITE_ROW;
}

void SqliteDatabase::Run(const std::string& sql, const std::string& what) const {
    const Statement statement = Prepare(sql);
    while (Step(statement.get(), what))
        continue;
}

void SqliteDatabase::ReadWhole(sqlite3_stmt* statement, int column, ValueSink& sink) const {
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
    // In this order: the call for the text converts it, and its length is known only afterwards.
    const void* bytes = type == SQLITE_TEXT
                            ? static_cast<const void*>(sqlite3_column_text(statement, column))
                            : sqlite3_column_blob(statement, column);
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    if (!bytes && sqlite3_errcode(m_database.get()) == SQLITE_NOMEM)
        throw Failure(kQueryFailed, Text(IDS_VQ_VALUE_TOO_LONG));
    if (bytes)
        sink.Append(bytes, length);
    sink.End(length);
}

void SqliteDatabase::ReadPieces(sqlite3_blob* blob, const std::string& column,
                                ValueSink& sink) const {
    const int length = sqlite3_blob_bytes(blob);
    BYTE piece[kPieceSize];
    for (int done = 0; done < length;) {
        const int count = std::min(length - done, static_cast<int>(kPieceSize));
        if (sqlite3_blob_read(blob, piece, count, done) != SQLITE_OK)
            Fail(Text(IDS_VQ_CANNOT_READ_VALUE, {column}));
        sink.Append(piece, static_cast<std::size_t>(count));
        done += count;
    }
    sink.End(static_cast<ULONGLONG>(length));
}

} // namespace vnquery

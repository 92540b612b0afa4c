// An open SQLite database file.
#pragma once

#include "vnquery/result/RowSource.h"

#include <concepts>
#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_stmt;
struct sqlite3_blob;

namespace vnquery {

/// An existing database file; none is created. Statements stop when their thread is asked to (see
/// CheckInterrupted). One thread at a time may use
/// it. All functions throw Failure and Interrupted.
class SqliteDatabase {
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

public:
    enum class Access { Read, Write };
    using Statement = std::unique_ptr<sqlite3_stmt, Closer<CloseStatement>>;
    using Blob = std::unique_ptr<sqlite3_blob, Closer<CloseBlob>>;

    SqliteDatabase(const std::string& file, Access access);

    sqlite3* Get() const { return m_database.get(); }
    const std::string& GetFile() const { return m_file; }
    bool IsTextUtf8() const { return m_isTextUtf8; }
    /// `rest` receives the beginning of the next statement.
    Statement Prepare(const std::string& sql, const char** rest = nullptr) const;
    /// Goes to the next row; false after the last one. `what` (was tried) is for messages.
    bool Step(sqlite3_stmt* statement, const std::string& what) const {
        return Step(statement, [&] { return what; });
    }
    /// The same with a function that makes the text, for statements of many rows.
    template <std::invocable Describe>
    bool Step(sqlite3_stmt* statement, Describe&& describe) const {
        const int result = StepOnce(statement);
        if (result < 0)
            Fail(describe());
        return result > 0;
    }
    void Run(const std::string& sql, const std::string& what) const;
    [[noreturn]] void Fail(const std::string& what) const;

    /// Reads a value of the current row in one piece.
    void ReadWhole(sqlite3_stmt* statement, int column, ValueSink& sink) const;
    /// Reads a text or bytes in pieces.
    void ReadPieces(sqlite3_blob* blob, Value::Type type, const std::string& column,
                    ValueSink& sink) const;

private:
    /// 1: a row, 0: there are no more, -1: it failed.
    int StepOnce(sqlite3_stmt* statement) const;

    std::string m_file;
    std::unique_ptr<sqlite3, Closer<CloseDatabase>> m_database;
    bool m_isTextUtf8 = false;
};

/// During its life statements refuse values of more than kMost bytes, with SQLITE_TOOBIG. Rows and
/// values are refused before they are loaded.
class SqliteLengthLimit {
public:
    explicit SqliteLengthLimit(const SqliteDatabase& database);
    ~SqliteLengthLimit();
    SqliteLengthLimit(const SqliteLengthLimit&) = delete;
    SqliteLengthLimit& operator=(const SqliteLengthLimit&) = delete;

    static constexpr int kMost = 1048576;

private:
    sqlite3* m_database;
    int m_before;
};

/// A text of the current row.
std::string_view SqliteColumnText(sqlite3_stmt* statement, int column);

} // namespace vnquery

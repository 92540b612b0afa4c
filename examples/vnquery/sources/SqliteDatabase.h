// An open SQLite database file.
#pragma once

#include "vnquery/result/RowSource.h"

#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_stmt;
struct sqlite3_blob;

namespace vnquery {

/// An existing database file; none is created. Statements stop when their thread is asked to (see
/// CheckInterrupted). All functions throw Failure and Interrupted.
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
    bool Step(sqlite3_stmt* statement, const std::string& what) const;
    void Run(const std::string& sql, const std::string& what) const;
    [[noreturn]] void Fail(const std::string& what) const;

    /// Reads a value of the current row in one piece.
    void ReadWhole(sqlite3_stmt* statement, int column, ValueSink& sink) const;
    /// Reads a text or bytes in pieces.
    void ReadPieces(sqlite3_blob* blob, Value::Type type, const std::string& column,
                    ValueSink& sink) const;

private:
    std::string m_file;
    std::unique_ptr<sqlite3, Closer<CloseDatabase>> m_database;
    bool m_isTextUtf8 = false;
};

/// A text of the current row.
std::string_view SqliteColumnText(sqlite3_stmt* statement, int column);

} // namespace vnquery

#include "vnquery/sources/SqliteSession.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/sources/SqliteSource.h"
#include "vnquery/sources/SqliteWriter.h"
#include "vnquery/tasks/Failure.h"

#include <sqlite3.h>

namespace vnquery {

SqliteSession::SqliteSession(const Connection& connection)
    : Session(connection, SqlServer::Sqlite),
      m_database(std::make_shared<SqliteDatabase>(connection.file, SqliteDatabase::Access::Write)) {
    if (sqlite3_db_readonly(m_database->Get(), "main") == 1)
        throw Failure(kQueryFailed, Text(IDS_VQ_S_READ_ONLY, {connection.file}));
    m_database->Run("PRAGMA foreign_keys = ON", Text(IDS_VQ_CANNOT_PREPARE_TRANSACTION));
}

SqliteSession::~SqliteSession() = default; // closing the database undoes an open transaction

bool SqliteSession::IsOpen() const { return !sqlite3_get_autocommit(m_database->Get()); }

/// Takes the write lock at once: a later statement could not wait for it without losing what it has
/// read.
void SqliteSession::Begin() {
    if (!IsOpen())
        m_database->Run("BEGIN IMMEDIATE", Text(IDS_VQ_CANNOT_BEGIN, {m_database->GetFile()}));
}

std::unique_ptr<RowSource> SqliteSession::DoRun(LeasePointer lease, const std::string& sql,
                                                SourceUse use, const Parameters& parameters) {
    bool isChange = false;
    auto source = std::make_unique<SqliteSource>(
        m_database, std::move(lease),
        [&] {
            Begin();
            isChange = true;
        },
        sql, use, parameters);
    const SqlText text(sql, SqlServer::Sqlite, parameters, false);
    m_isKept = isChange && !CountsRows(text.Get(), SqlServer::Sqlite);
    return source;
}

std::unique_ptr<TableWriter> SqliteSession::DoOpenWriter(LeasePointer lease, const EditPlan& plan) {
    Begin();
    return std::make_unique<SqliteWriter>(*this, std::move(lease), plan);
}

void SqliteSession::ForgetChanges() {
    m_changesBefore = sqlite3_total_changes64(m_database->Get());
}

void SqliteSession::DoCommit() {
    if (IsOpen())
        m_database->Run("COMMIT", Text(IDS_VQ_CANNOT_COMMIT));
    m_hasChanges = false;
}

void SqliteSession::DoRollBack() {
    if (IsOpen())
        m_database->Run("ROLLBACK", Text(IDS_VQ_CANNOT_END_TRANSACTION));
}

/// A transaction that began with this use and has changed nothing would only hold the lock.
void SqliteSession::EndUse() noexcept {
    const long long changes = sqlite3_total_changes64(m_database->Get());
    if (IsOpen() && !m_hasChanges && !m_isKept && changes == m_changesBefore)
        sqlite3_exec(m_database->Get(), "ROLLBACK", nullptr, nullptr, nullptr);
    if (IsOpen())
        m_hasChanges = true;
    else
        SetUndone();
    m_isKept = false;
    m_changesBefore = changes;
}

} // namespace vnquery

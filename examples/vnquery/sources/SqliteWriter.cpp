#include "vnquery/sources/SqliteWriter.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/sources/OneTableQuery.h"
#include "vnquery/sources/SqliteBind.h"
#include "vnquery/sources/SqliteTable.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Progress.h"

#include <sqlite3.h>

namespace vnquery {

namespace {

constexpr DWORD kMaxBound = 1048576; ///< longer bytes are written in pieces where possible

} // namespace

SqliteWriter::SqliteWriter(std::shared_ptr<SqliteDatabase> database, Session::LeasePointer lease,
                           const EditPlan& plan)
    : m_lease(std::move(lease)), m_database(std::move(database)), m_plan(plan),
      m_table(QuoteName(plan.schema) + "." + QuoteName(plan.table)),
      m_canOpenBlobs(SqliteTable::CanOpenBlobs(*m_database, plan.schema, plan.table)) {}

SqliteWriter::SqliteWriter(const std::string& file, const EditPlan& plan)
    : SqliteWriter(std::make_shared<SqliteDatabase>(file, SqliteDatabase::Access::Write), nullptr,
                   plan) {
    m_database->Run("PRAGMA foreign_keys = ON", Text(IDS_VQ_CANNOT_PREPARE_TRANSACTION));
    m_database->Run("BEGIN IMMEDIATE", Text(IDS_VQ_CANNOT_BEGIN, {file}));
    m_isOpen = true;
}

SqliteWriter::SqliteWriter(SqliteSession& session, Session::LeasePointer lease,
                           const EditPlan& plan)
    : SqliteWriter(session.GetDatabase(), std::move(lease), plan) {
    m_session = &session;
    m_database->Run("SAVEPOINT vnquery_writer", Text(IDS_VQ_CANNOT_PREPARE_TRANSACTION));
    m_isOpen = true;
}

SqliteWriter::~SqliteWriter() {
    // Errors do not matter: closing the database undoes an open transaction, too.
    if (m_isOpen)
        sqlite3_exec(m_database->Get(),
                     m_session ? "ROLLBACK TO vnquery_writer; RELEASE vnquery_writer" : "ROLLBACK",
                     nullptr, nullptr, nullptr);
    if (m_isOpen && m_session)
        m_session->ForgetChanges();
}

bool SqliteWriter::IsInPieces(const Value& value) const {
    return value.GetType() == Value::Type::Binary && value.GetLength() > kMaxBound &&
           !m_plan.rowIdName.empty() && m_canOpenBlobs;
}

std::string SqliteWriter::Condition() const {
    if (!m_plan.rowIdName.empty())
        return " WHERE " + m_plan.rowIdName + " = ?";
    std::string condition;
    for (const std::size_t column : m_plan.keyColumns)
        condition.append(condition.empty() ? " WHERE " : " AND ")
            .append(QuoteName(m_plan.columns[column].name))
            .append(" = ?");
    return condition;
}

void SqliteWriter::BindKey(sqlite3_stmt* statement, const RowKey& key, int first) const {
    if (!m_plan.rowIdName.empty()) {
        if (key.rowId)
            sqlite3_bind_int64(statement, first, *key.rowId);
        return;
    }
    for (const Value& value : key.values)
        BindValue(statement, first++, value);
}

std::optional<std::vector<Value>>
SqliteWriter::ReadRow(const RowKey& key, std::span<const std::size_t> columns, Progress& progress) {
    std::string names;
    for (const std::size_t column : columns)
        names.append(names.empty() ? "" : ", ").append(QuoteName(m_plan.columns[column].name));
    const auto select = m_database->Prepare("SELECT " + names + " FROM " + m_table + Condition());
    BindKey(select.get(), key, 1);
    if (!m_database->Step(select.get(), Text(IDS_VQ_CANNOT_READ_VALUE, {names})))
        return {};
    std::vector<Value> values(columns.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        ValueKeeper sink(values[i], progress);
        m_database->ReadWhole(select.get(), static_cast<int>(i), sink);
    }
    return values;
}

void SqliteWriter::UpdateOnce(const std::string& expression, const RowKey& key, std::size_t column,
                              const Value* value) {
    const std::string& name = m_plan.columns[column].name;
    const auto update = m_database->Prepare("UPDATE " + m_table + " SET " + QuoteName(name) +
                                            " = " + expression + Condition());
    if (value)
        BindValue(update.get(), 1, *value);
    BindKey(update.get(), key, value ? 2 : 1);
    m_database->Step(update.get(), Text(IDS_VQ_CANNOT_CHANGE, {name}));
    if (sqlite3_changes(m_database->Get()) != 1)
        throw Failure(kQueryFailed,
                      Text(IDS_VQ_CANNOT_CHANGE, {name}) + ": " + Text(IDS_VQ_ROW_GONE));
}

void SqliteWriter::Update(const RowKey& key, std::size_t column, const NewValue& value,
                          Progress& progress) {
    const Value& bytes = value.value;
    if (value.isDefault) {
        const std::string& sql = m_plan.columns[column].defaultSql;
        UpdateOnce("(" + (sql.empty() ? "NULL" : sql) + ")", key, column, nullptr);
    } else if (IsInPieces(bytes) && key.rowId) {
        UpdateOnce("zeroblob(" + std::to_string(bytes.GetLength()) + ")", key, column, nullptr);
        WritePieces(key, column, bytes, progress);
    } else {
        UpdateOnce("?", key, column, &bytes);
    }
}

void SqliteWriter::WritePieces(const RowKey& key, std::size_t column, const Value& value,
                               Progress& progress) const {
    const std::string& name = m_plan.columns[column].name;
    sqlite3_blob* opened = nullptr;
    const int result =
        sqlite3_blob_open(m_database->Get(), m_plan.schema.c_str(), m_plan.table.c_str(),
                          name.c_str(), *key.rowId, 1, &opened);
    const SqliteDatabase::Blob blob(opened);
    if (result != SQLITE_OK)
        m_database->Fail(Text(IDS_VQ_CANNOT_CHANGE, {name}));
    int done = 0;
    value.ForEachPiece([&](std::span<const BYTE> piece) {
        const int count = static_cast<int>(piece.size());
        if (sqlite3_blob_write(blob.get(), piece.data(), count, done) != SQLITE_OK)
            m_database->Fail(Text(IDS_VQ_CANNOT_CHANGE, {name}));
        done += count;
        progress.AddBytes(piece.size());
    });
}

std::optional<RowKey> SqliteWriter::Insert(const RowValues& values, Progress& progress) {
    const std::string what = Text(IDS_VQ_S_CANNOT_INSERT, {m_plan.table});
    std::string names;
    std::string marks;
    for (const auto& [column, value] : values) {
        if (value.isDefault)
            continue;
        names.append(names.empty() ? "" : ", ").append(QuoteName(m_plan.columns[column].name));
        marks.append(marks.empty() ? "" : ", ");
        marks += IsInPieces(value.value)
                     ? "zeroblob(" + std::to_string(value.value.GetLength()) + ")"
                     : "?";
    }
    const auto insert = m_database->Prepare(
        "INSERT INTO " + m_table +
        (names.empty() ? " DEFAULT VALUES" : " (" + names + ") VALUES (" + marks + ")"));
    int index = 1;
    for (const auto& [column, value] : values)
        if (!value.isDefault && !IsInPieces(value.value))
            BindValue(insert.get(), index++, value.value);
    m_database->Step(insert.get(), what);
    RowKey key;
    if (!m_plan.rowIdName.empty()) {
        key.rowId = sqlite3_last_insert_rowid(m_database->Get());
        for (const auto& [column, value] : values)
            if (IsInPieces(value.value))
                WritePieces(key, column, value.value, progress);
        return key;
    }
    return GivenKey(m_plan, values);
}

void SqliteWriter::Delete(const RowKey& key, Progress&) {
    const std::string what = Text(IDS_VQ_S_CANNOT_DELETE, {m_plan.table});
    const auto statement = m_database->Prepare("DELETE FROM " + m_table + Condition());
    BindKey(statement.get(), key, 1);
    m_database->Step(statement.get(), what);
    if (sqlite3_changes(m_database->Get()) != 1)
        throw Failure(kQueryFailed, what + ": " + Text(IDS_VQ_ROW_GONE));
}

void SqliteWriter::Commit() {
    m_database->Run(m_session ? "RELEASE vnquery_writer" : "COMMIT", Text(IDS_VQ_CANNOT_COMMIT));
    m_isOpen = false;
    if (m_session)
        m_session->KeepChanges();
}

} // namespace vnquery

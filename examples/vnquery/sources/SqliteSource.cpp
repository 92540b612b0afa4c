#include "vnquery/sources/SqliteSource.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/sources/OneTableQuery.h"
#include "vnquery/sources/QueryGuard.h"
#include "vnquery/sources/SqliteBind.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <sqlite3.h>

namespace vnquery {

namespace {

std::string FirstWord(const std::string& sql) {
    const std::string words = NormaliseSql(sql);
    return words.substr(0, words.find(' '));
}

} // namespace

SqliteSource::SqliteSource(const std::string& file, const std::string& sql, SourceUse use,
                           const Parameters& parameters)
    : SqliteSource(std::make_shared<SqliteDatabase>(file, SqliteDatabase::Access::Read), nullptr,
                   nullptr, sql, use, parameters) {}

SqliteSource::SqliteSource(std::shared_ptr<SqliteDatabase> database, Session::LeasePointer lease,
                           const std::function<void()>& beforeChange, const std::string& sql,
                           SourceUse use, const Parameters& parameters)
    : m_lease(std::move(lease)), m_database(std::move(database)),
      m_changesBefore(sqlite3_total_changes64(m_database->Get())) {
    const SqlText text(sql, SqlServer::Sqlite, parameters, false);
    text.Locate([&] { Prepare(text.Get(), beforeChange); });
    BindNames(m_statement.get(), parameters);
    if (!m_names.empty())
        PlanOneTable(text.Get(), use, parameters);
    else if (Next()) // all of a statement without a result
        throw Failure(kQueryFailed, Text(IDS_VQ_NO_RESULT));
}

void SqliteSource::Prepare(const std::string& sql, const std::function<void()>& beforeChange) {
    const char* rest = nullptr;
    m_statement = m_database->Prepare(sql, &rest);
    if (!m_statement)
        throw Failure(kQueryFailed, Text(IDS_VQ_NO_QUERY));
    if (const auto second = m_database->Prepare(rest))
        throw Failure(kQueryFailed, Text(IDS_VQ_MORE_STATEMENTS));
    const int count = sqlite3_column_count(m_statement.get());
    if (count == 0 && !beforeChange)
        throw Failure(kQueryFailed, Text(IDS_VQ_NO_RESULT));
    const std::string word = FirstWord(sql);
    const bool isReading = sqlite3_stmt_readonly(m_statement.get()) != 0 ||
                           (beforeChange && sqlite3_stmt_isexplain(m_statement.get()) != 0);
    if (!isReading) {
        // The database is open for reading only. This refuses changes before anything runs, also to
        // other files that a statement could name.
        if (!beforeChange)
            throw Failure(kQueryFailed, Text(IDS_VQ_NOT_A_QUERY, {word}));
        m_countsRows = CountsRows(sql, SqlServer::Sqlite);
    }
    // A savepoint outside of a transaction would be one itself, which RELEASE commits.
    if (beforeChange && !CommitsByItself(sql, SqlServer::Sqlite) &&
        (!isReading || word == "SAVEPOINT"))
        beforeChange();
    for (int i = 0; i < count; ++i) {
        m_names.emplace_back(sqlite3_column_name(m_statement.get(), i));
        const char* type = sqlite3_column_decltype(m_statement.get(), i);
        m_kinds.push_back(KindOfDeclaredType(type ? type : ""));
    }
}

SqliteSource::~SqliteSource() = default;

void SqliteSource::PlanOneTable(const std::string& sql, SourceUse use,
                                const Parameters& parameters) {
    const std::optional<OneTableQuery> query = ParseOneTableQuery(sql);
    if (!query)
        return;
    const auto table = SqliteTable::Find(*m_database, m_statement.get(), *query);
    if (!table)
        return;
    if (use == SourceUse::Editing)
        m_editPlan = table->PlanEditing(m_statement.get());
    if (!table->GetRowIdName().empty())
        m_tableQuery =
            SqliteTableQuery::Make(*m_database, *table, *query, m_statement.get(), parameters);
    if (use == SourceUse::Editing && !m_tableQuery)
        table->UseKeyColumns(m_editPlan);
    // Nobody needs the numbers.
    if (use == SourceUse::ReadOnly && m_tableQuery && !m_tableQuery->HasLongColumns())
        m_tableQuery.reset();
}

std::optional<long long> SqliteSource::GetChangedRows() const {
    if (!m_countsRows)
        return {};
    // SQLite's count stays when a statement changes nothing.
    const bool isSame = sqlite3_total_changes64(m_database->Get()) == m_changesBefore;
    return isSame ? 0 : sqlite3_changes64(m_database->Get());
}

std::optional<long long> SqliteSource::GetRowId() const {
    return m_tableQuery ? m_tableQuery->GetRowNumber() : std::nullopt;
}

bool SqliteSource::Next() {
    CheckInterrupted();
    if (m_tableQuery)
        return m_tableQuery->Next();
    // Another step after the last one would run the statement again.
    m_isDone = m_isDone || !m_database->Step(m_statement.get(), [this] {
        return Text(IDS_VQ_QUERY_FAILED, {m_database->GetFile()});
    });
    return !m_isDone;
}

void SqliteSource::Read(std::size_t column, ValueSink& sink) {
    if (m_tableQuery)
        m_tableQuery->Read(column, sink);
    else
        m_database->ReadWhole(m_statement.get(), static_cast<int>(column), sink);
}

} // namespace vnquery

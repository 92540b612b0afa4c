#include "vnquery/sources/SqliteSource.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/sources/OneTableQuery.h"
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

SqliteSource::SqliteSource(const std::string& file, const std::string& sql, SourceUse use)
    : m_database(file, SqliteDatabase::Access::Read) {
    const char* rest = nullptr;
    m_statement = m_database.Prepare(sql, &rest);
    if (!m_statement)
        throw Failure(kQueryFailed, Text(IDS_VQ_NO_QUERY));
    if (const auto second = m_database.Prepare(rest))
        throw Failure(kQueryFailed, Text(IDS_VQ_MORE_STATEMENTS));
    const int count = sqlite3_column_count(m_statement.get());
    if (count == 0)
        throw Failure(kQueryFailed, Text(IDS_VQ_NO_RESULT));
    // The database is open for reading only. This refuses changes before anything runs, also to
    // other files that a statement could name.
    if (!sqlite3_stmt_readonly(m_statement.get()))
        throw Failure(kQueryFailed, Text(IDS_VQ_NOT_A_QUERY, {FirstWord(sql)}));
    for (int i = 0; i < count; ++i) {
        m_names.emplace_back(sqlite3_column_name(m_statement.get(), i));
        const char* type = sqlite3_column_decltype(m_statement.get(), i);
        m_kinds.push_back(KindOfDeclaredType(type ? type : ""));
    }
    PlanOneTable(sql, use);
}

SqliteSource::~SqliteSource() = default;

void SqliteSource::PlanOneTable(const std::string& sql, SourceUse use) {
    const std::optional<OneTableQuery> query = ParseOneTableQuery(sql);
    if (!query)
        return;
    const auto table = SqliteTable::Find(m_database, m_statement.get(), *query);
    if (!table)
        return;
    if (use == SourceUse::Editing)
        m_editPlan = table->PlanEditing(m_statement.get());
    if (!table->GetRowIdName().empty())
        m_tableQuery = SqliteTableQuery::Make(m_database, *table, *query, m_statement.get());
    if (use == SourceUse::Editing && !m_tableQuery)
        table->UseKeyColumns(m_editPlan);
    // Nobody needs the numbers.
    if (use == SourceUse::ReadOnly && m_tableQuery && !m_tableQuery->HasLongColumns())
        m_tableQuery.reset();
}

std::optional<long long> SqliteSource::GetRowId() const {
    return m_tableQuery ? m_tableQuery->GetRowNumber() : std::nullopt;
}

bool SqliteSource::Next() {
    CheckInterrupted();
    if (m_tableQuery)
        return m_tableQuery->Next();
    return m_database.Step(m_statement.get(),
                           [this] { return Text(IDS_VQ_QUERY_FAILED, {m_database.GetFile()}); });
}

void SqliteSource::Read(std::size_t column, ValueSink& sink) {
    if (m_tableQuery)
        m_tableQuery->Read(column, sink);
    else
        m_database.ReadWhole(m_statement.get(), static_cast<int>(column), sink);
}

} // namespace vnquery

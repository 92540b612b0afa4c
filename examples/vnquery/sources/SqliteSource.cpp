#include "vnquery/sources/SqliteSource.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/OneTableQuery.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <filesystem>

#include <sqlite3.h>

namespace vnquery {

namespace {

bool EqualsNoCase(const char* a, const char* b) { return sqlite3_stricmp(a, b) == 0; }

/// For SQL with the schema as ?1 and the table as ?2.
void BindTable(sqlite3_stmt* statement, const char* schema, const char* table) {
    sqlite3_bind_text(statement, 1, schema, -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(statement, 2, table, -1, SQLITE_TRANSIENT);
}

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
    if (Statement second = m_database.Prepare(rest))
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
        m_plans.emplace_back().index = i;
    }
    PlanOneTable(sql, use);
}

SqliteSource::~SqliteSource() = default;

// --- queries of one table ------------------------------------------------------------------------

/// Whether it is neither a view nor a virtual table.
bool SqliteSource::IsPlainTable(const char* schema, const char* table) {
    const Statement list =
        m_database.Prepare("SELECT 1 FROM pragma_table_list(?2) WHERE schema = ?1 COLLATE NOCASE "
                           "AND type = 'table'");
    BindTable(list.get(), schema, table);
    return sqlite3_step(list.get()) == SQLITE_ROW;
}

/// A name of the row's number that no column of the table hides; "" when there is none, or when the
/// table's rows have no numbers.
std::string SqliteSource::FindRowIdName(const char* schema, const char* table) {
    const Statement numbered = m_database.Prepare("SELECT 1 FROM pragma_table_list(?2) "
                                                  "WHERE schema = ?1 COLLATE NOCASE AND wr = 0");
    BindTable(numbered.get(), schema, table);
    if (sqlite3_step(numbered.get()) != SQLITE_ROW)
        return {};
    const Statement columns = m_database.Prepare("SELECT 1 FROM pragma_table_xinfo(?2, ?1) "
                                                 "WHERE name = ?3 COLLATE NOCASE");
    for (const char* name : {"rowid", "_rowid_", "oid"}) {
        sqlite3_reset(columns.get());
        BindTable(columns.get(), schema, table);
        sqlite3_bind_text(columns.get(), 3, name, -1, SQLITE_TRANSIENT);
        if (sqlite3_step(columns.get()) == SQLITE_DONE)
            return name;
    }
    return {};
}

/// Whether it is a column of the table whose declared type allows texts and bytes.
bool SqliteSource::IsInPieces(sqlite3_stmt* statement, int column) const {
    const char* declared = sqlite3_column_decltype(statement, column);
    if (!sqlite3_column_origin_name(statement, column))
        return false;
    const std::string type = ToUpper(declared ? declared : "");
    constexpr const char* kNumbers[] = {"INT", "REAL", "FLOA", "DOUB"};
    return std::ranges::none_of(
        kNumbers, [&](const char* word) { return type.find(word) != std::string::npos; });
}

bool SqliteSource::FindTable(const OneTableQuery& query) {
    sqlite3_stmt* plain = m_statement.get();
    const int count = sqlite3_column_count(plain);
    int first = 0;
    while (first < count && !sqlite3_column_table_name(plain, first))
        ++first;
    if (first == count)
        return false;
    const char* table = sqlite3_column_table_name(plain, first);
    const char* schema = sqlite3_column_database_name(plain, first);
    if (!EqualsNoCase(table, query.table.c_str()) || !IsPlainTable(schema, table))
        return false;
    m_schema = schema;
    m_table = table;
    return true;
}

void SqliteSource::PlanOneTable(const std::string& sql, SourceUse use) {
    const bool isEditing = use == SourceUse::Editing;
    bool hasLongColumns = false;
    for (int i = 0; i < sqlite3_column_count(m_statement.get()); ++i)
        hasLongColumns |= IsInPieces(m_statement.get(), i);
    if (!isEditing && !hasLongColumns)
        return;
    const std::optional<OneTableQuery> query = ParseOneTableQuery(sql);
    if (!query || !FindTable(*query))
        return;
    m_rowId = FindRowIdName(m_schema.c_str(), m_table.c_str());
    if (isEditing)
        PlanEditing();
    m_hasRowIds = !m_rowId.empty() && RunWithRowIds(*query);
    if (isEditing && !m_hasRowIds)
        PlanKeyColumns();
}

/// Makes the query a subquery that also gives each row's number, and asks only for that and for the
/// columns without long values. SQLite merges the two, so it neither loads nor sorts the others.
bool SqliteSource::RunWithRowIds(const OneTableQuery& query) {
    std::string names;
    std::string columns;
    std::vector<ColumnPlan> plans;
    int index = 0;
    int detailIndex = 0;
    for (int i = 0; i < sqlite3_column_count(m_statement.get()); ++i) {
        const std::string name = "c" + std::to_string(i) + ", ";
        ColumnPlan& plan = plans.emplace_back();
        names += name;
        plan.isInPieces = IsInPieces(m_statement.get(), i);
        if (plan.isInPieces) {
            plan.index = detailIndex;
            plan.name = sqlite3_column_origin_name(m_statement.get(), i);
            detailIndex += 2;
        } else {
            plan.index = index++;
            columns += name;
        }
    }
    const std::string withRowIds = "WITH q(" + names + "k) AS (" + query.select + ", " + m_rowId +
                                   " " + query.from + "\n) SELECT " + columns + "k FROM q";
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(m_database.Get(), withRowIds.c_str(), -1, &statement, nullptr) !=
        SQLITE_OK)
        return false; // the query stays unchanged
    m_statement.reset(statement);
    m_plans = std::move(plans);
    if (detailIndex > 0)
        PrepareDetails();
    return true;
}

void SqliteSource::PrepareDetails() {
    const std::string longTypes = m_database.IsTextUtf8() ? "('blob', 'text')" : "('blob')";
    std::string columns;
    for (const ColumnPlan& plan : m_plans) {
        if (!plan.isInPieces)
            continue;
        const std::string name = QuoteName(plan.name);
        columns.append(columns.empty() ? "typeof(" : ", typeof(").append(name);
        columns.append("), CASE WHEN typeof(").append(name).append(") IN ").append(longTypes);
        columns.append(" THEN NULL ELSE ").append(name).append(" END");
    }
    m_details = m_database.Prepare("SELECT " + columns + " FROM " + QuoteName(m_schema) + "." +
                                   QuoteName(m_table) + " WHERE " + m_rowId + " = ?");
}

// --- what can be written back --------------------------------------------------------------------

void SqliteSource::PlanEditing() {
    m_editPlan.readOnly = ReadOnlyReason::None;
    m_editPlan.schema = m_schema;
    m_editPlan.table = m_table;
    m_editPlan.rowIdName = m_rowId;
    const Statement column =
        m_database.Prepare("SELECT dflt_value, \"notnull\", hidden, pk, upper(type) "
                           "FROM pragma_table_xinfo(?2, ?1) WHERE name = ?3 COLLATE NOCASE");
    const Statement keys =
        m_database.Prepare("SELECT count(*) FROM pragma_table_xinfo(?2, ?1) WHERE pk > 0");
    BindTable(column.get(), m_schema.c_str(), m_table.c_str());
    BindTable(keys.get(), m_schema.c_str(), m_table.c_str());
    const bool isOneKey =
        sqlite3_step(keys.get()) == SQLITE_ROW && sqlite3_column_int(keys.get(), 0) == 1;
    for (int i = 0; i < sqlite3_column_count(m_statement.get()); ++i) {
        EditColumn& plan = m_editPlan.columns.emplace_back();
        const char* origin = sqlite3_column_origin_name(m_statement.get(), i);
        plan.readOnly = ReadOnlyReason::Computed;
        if (!origin)
            continue;
        plan.name = origin;
        sqlite3_reset(column.get());
        sqlite3_bind_text(column.get(), 3, origin, -1, SQLITE_TRANSIENT);
        const bool isStored =
            sqlite3_step(column.get()) == SQLITE_ROW && sqlite3_column_int(column.get(), 2) == 0;
        if (!isStored) { // generated, or the row's number
            plan.readOnly = EqualsNoCase(origin, m_rowId.c_str()) ? ReadOnlyReason::Key
                                                                  : ReadOnlyReason::Computed;
            continue;
        }
        plan.defaultSql = SqliteColumnText(column.get(), 0);
        plan.isNullable = sqlite3_column_int(column.get(), 1) == 0;
        const bool isRowId = isOneKey && sqlite3_column_int(column.get(), 3) > 0 &&
                             SqliteColumnText(column.get(), 4) == "INTEGER";
        plan.readOnly = isRowId ? ReadOnlyReason::Key : ReadOnlyReason::None;
    }
}

/// Without row numbers the columns of the primary key identify a row, if all of them are selected.
void SqliteSource::PlanKeyColumns() {
    m_editPlan.rowIdName.clear();
    m_editPlan.readOnly = ReadOnlyReason::NoKey;
    const Statement keys =
        m_database.Prepare("SELECT name FROM pragma_table_xinfo(?2, ?1) WHERE pk > 0");
    BindTable(keys.get(), m_schema.c_str(), m_table.c_str());
    std::vector<std::string> names;
    while (sqlite3_step(keys.get()) == SQLITE_ROW)
        names.emplace_back(SqliteColumnText(keys.get(), 0));
    m_editPlan.SetKey(names, [](const std::string& a, const std::string& b) {
        return EqualsNoCase(a.c_str(), b.c_str());
    });
}

std::optional<long long> SqliteSource::GetRowId() const {
    return m_hasRowIds && HasCurrentRow() ? CurrentRow() : std::optional<long long>();
}

// --- values in pieces ----------------------------------------------------------------------------

/// False for the row that max() and similar functions give for no rows: it is not in the table.
bool SqliteSource::HasCurrentRow() const {
    const int column = sqlite3_column_count(m_statement.get()) - 1;
    return sqlite3_column_type(m_statement.get(), column) != SQLITE_NULL;
}

long long SqliteSource::CurrentRow() const {
    return sqlite3_column_int64(m_statement.get(), sqlite3_column_count(m_statement.get()) - 1);
}

/// Opens the value of a row; false when it cannot be read in pieces, such as a default that ALTER
/// TABLE gave to existing rows.
bool SqliteSource::SeekBlob(ColumnPlan& plan, long long row) {
    int result = SQLITE_ERROR;
    if (plan.blob) {
        result = sqlite3_blob_reopen(plan.blob.get(), row);
    } else {
        sqlite3_blob* blob = nullptr;
        result = sqlite3_blob_open(m_database.Get(), m_schema.c_str(), m_table.c_str(),
                                   plan.name.c_str(), row, 0, &blob);
        plan.blob.reset(blob);
    }
    if (result == SQLITE_OK)
        return true;
    plan.blob.reset();
    if (result != SQLITE_ERROR)
        m_database.Fail(Text(IDS_VQ_CANNOT_READ_VALUE, {plan.name}));
    return false;
}

void SqliteSource::ReadInPieces(ColumnPlan& plan, ValueSink& sink) {
    if (!HasCurrentRow())
        return sink.Null();
    if (!m_hasDetails) {
        sqlite3_reset(m_details.get());
        sqlite3_bind_int64(m_details.get(), 1, CurrentRow());
        if (sqlite3_step(m_details.get()) != SQLITE_ROW)
            m_database.Fail(Text(IDS_VQ_CANNOT_READ_TABLE_ROW, {m_table}));
        m_hasDetails = true;
    }
    const std::string_view type = SqliteColumnText(m_details.get(), plan.index);
    const bool isText = type == "text";
    if (type == "blob" || (isText && m_database.IsTextUtf8())) {
        ReadFromTable(plan, isText ? Value::Type::Text : Value::Type::Binary, sink);
    } else {
        m_database.ReadWhole(m_details.get(), plan.index + 1, sink);
    }
}

void SqliteSource::ReadFromTable(ColumnPlan& plan, Value::Type type, ValueSink& sink) {
    if (SeekBlob(plan, CurrentRow())) {
        m_database.ReadPieces(plan.blob.get(), type, plan.name, sink);
        return;
    }
    if (!plan.whole)
        plan.whole =
            m_database.Prepare("SELECT " + QuoteName(plan.name) + " FROM " + QuoteName(m_schema) +
                               "." + QuoteName(m_table) + " WHERE " + m_rowId + " = ?");
    sqlite3_bind_int64(plan.whole.get(), 1, CurrentRow());
    if (sqlite3_step(plan.whole.get()) != SQLITE_ROW)
        m_database.Fail(Text(IDS_VQ_CANNOT_READ_VALUE, {plan.name}));
    m_database.ReadWhole(plan.whole.get(), 0, sink);
    sqlite3_reset(plan.whole.get());
}

// --- rows ----------------------------------------------------------------------------------------

bool SqliteSource::Next() {
    CheckInterrupted();
    m_hasDetails = false;
    return m_database.Step(m_statement.get(), Text(IDS_VQ_QUERY_FAILED, {m_database.GetFile()}));
}

void SqliteSource::Read(std::size_t column, ValueSink& sink) {
    ColumnPlan& plan = m_plans[column];
    if (plan.isInPieces)
        ReadInPieces(plan, sink);
    else
        m_database.ReadWhole(m_statement.get(), plan.index, sink);
}

} // namespace vnquery

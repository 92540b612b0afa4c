#include "vnquery/sources/OdbcSource.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/sources/ErrorPlace.h"
#include "vnquery/sources/OdbcText.h"
#include "vnquery/sources/OneTableQuery.h"
#include "vnquery/sources/QueryGuard.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace vnquery {

namespace {

constexpr auto kLookInterval = std::chrono::milliseconds(50);

ColumnKind KindOf(SQLSMALLINT sqlType) {
    switch (sqlType) {
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT:
    case SQL_BIT:
        return ColumnKind::Integer;
    default:
        break;
    }
    switch (OdbcReader::TypeOf(sqlType)) {
    case Value::Type::Binary:
        return ColumnKind::Binary;
    case Value::Type::Number:
        return ColumnKind::Decimal;
    default:
        return ColumnKind::Text;
    }
}

} // namespace

OdbcSource::OdbcSource(const std::string& connection, const std::string& sql, SourceUse use,
                       const Parameters& parameters)
    : OdbcSource(std::make_shared<OdbcConnection>(connection, OdbcConnection::Access::Read),
                 nullptr, sql, use, parameters) {}

OdbcSource::OdbcSource(std::shared_ptr<OdbcConnection> connection, Session::LeasePointer lease,
                       const std::string& sql, SourceUse use, const Parameters& parameters)
    : m_lease(std::move(lease)), m_connection(std::move(connection)),
      m_statement(m_connection->NewStatement()) {
    const SqlText text(sql, m_connection->GetServer(), parameters, true);
    if (!m_lease)
        ThrowRefusal(FindRefusal(text.Get(), m_connection->GetServer()));
    m_watcher = std::jthread([this, asked = CurrentStop()](const std::stop_token& stop) {
        CancelWhenAsked(stop, asked);
    });
    text.Locate([&] { Run(text); });
    if (use == SourceUse::Editing && !m_names.empty())
        PlanEditing(text.Get());
}

void OdbcSource::Run(const SqlText& text) {
    try {
        Prepare(text.Get());
        Bind(text.GetValues());
        const SQLRETURN result = SQLExecute(m_statement->Get());
        if (result != SQL_NO_DATA)
            Check(result, m_lease ? IDS_VQ_S_CANNOT_RUN : IDS_VQ_CANNOT_RUN);
    } catch (const Failure& failure) {
        throw Failure(failure.Code(), failure.what(), FindErrorPlace(failure.what(), text.Get()));
    }
    CountRows(text.Get());
    DescribeColumns();
}

OdbcSource::~OdbcSource() = default;

/// Asks the driver before the query runs whether it has columns.
void OdbcSource::Prepare(const std::string& sql) {
    std::vector<SQLWCHAR> text = ToWide(sql);
    Check(SQLPrepareW(m_statement->Get(), text.data(), SQL_NTS), IDS_VQ_CANNOT_RUN);
    SQLSMALLINT count = 0;
    if (!SQL_SUCCEEDED(SQLNumResultCols(m_statement->Get(), &count))) {
        const std::string state = OdbcState(SQL_HANDLE_STMT, m_statement->Get());
        if (state != "HY010" && state != "HYC00" &&
            state != "IM001") // not a driver that cannot tell
            Check(SQL_ERROR, IDS_VQ_CANNOT_RUN);
    } else if (count == 0 && !m_lease) {
        throw Failure(kQueryFailed, Text(IDS_VQ_NO_RESULT));
    }
}

/// As the types that the server says the question marks have.
void OdbcSource::Bind(const std::vector<std::optional<std::string>>& values) {
    m_parameters.resize(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto number = static_cast<SQLUSMALLINT>(i + 1);
        SQLSMALLINT type = SQL_WVARCHAR;
        SQLULEN size = 0;
        SQLSMALLINT digits = 0;
        SQLSMALLINT nullable = 0;
        if (!SQL_SUCCEEDED(
                SQLDescribeParam(m_statement->Get(), number, &type, &size, &digits, &nullable)))
            type = SQL_WVARCHAR;
        Parameter& parameter = m_parameters[i];
        parameter.wide = ToWide(values[i].value_or(""));
        if (!values[i])
            parameter.indicator = SQL_NULL_DATA;
        Check(SQLBindParameter(m_statement->Get(), number, SQL_PARAM_INPUT, SQL_C_WCHAR, type,
                               std::max<SQLULEN>(size, parameter.wide.size()), digits,
                               parameter.wide.data(), 0, &parameter.indicator),
              IDS_VQ_S_CANNOT_RUN);
    }
}

void OdbcSource::CountRows(const std::string& sql) {
    const SqlServer server = m_connection->GetServer();
    SQLLEN rows = -1;
    if (m_lease && CountsRows(sql, server) && FindRefusal(sql, server) &&
        SQL_SUCCEEDED(SQLRowCount(m_statement->Get(), &rows)) && rows >= 0)
        m_changedRows = rows;
}

void OdbcSource::CancelWhenAsked(const std::stop_token& stop, const std::stop_token& asked) {
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any stopped;
    while (!stopped.wait_for(lock, stop, kLookInterval, [] { return false; }) &&
           !stop.stop_requested()) {
        if (InterruptingSignal() != 0 || asked.stop_requested())
            SQLCancel(m_statement->Get());
    }
}

void OdbcSource::Check(SQLRETURN result, UINT what) const {
    if (!SQL_SUCCEEDED(result))
        OdbcFail(Text(what), SQL_HANDLE_STMT, m_statement->Get());
}

void OdbcSource::DescribeColumns() {
    SQLSMALLINT count = 0;
    Check(SQLNumResultCols(m_statement->Get(), &count), IDS_VQ_CANNOT_READ_COLUMNS);
    if (count <= 0 && !m_lease)
        throw Failure(kQueryFailed, Text(IDS_VQ_NO_RESULT));
    if (count <= 0)
        return;
    std::vector<OdbcColumn> columns;
    for (SQLUSMALLINT column = 1; column <= count; ++column) {
        SQLWCHAR name[512] = {};
        SQLSMALLINT length = 0;
        SQLSMALLINT type = 0;
        SQLULEN size = 0;
        SQLSMALLINT digits = 0;
        SQLSMALLINT nullable = SQL_NULLABLE_UNKNOWN;
        Check(SQLDescribeColW(m_statement->Get(), column, name, std::size(name), &length, &type,
                              &size, &digits, &nullable),
              IDS_VQ_CANNOT_READ_COLUMNS);
        m_names.push_back(FromBuffer(name, length));
        SQLLEN isUnsigned = SQL_FALSE;
        SQLColAttributeW(m_statement->Get(), column, SQL_DESC_UNSIGNED, nullptr, 0, nullptr,
                         &isUnsigned);
        columns.push_back({m_names.back(), type, size, isUnsigned == SQL_TRUE,
                           m_connection->HasUtf8Bytes() && IsCharacters(column - 1u)});
        m_kinds.push_back(KindOf(type));
        EditColumn& edit = m_editPlan.columns.emplace_back();
        edit.sqlType = type;
        edit.sqlSize = size;
        edit.sqlDigits = digits;
        edit.isNullable = nullable != SQL_NO_NULLS;
        SQLLEN isFilled = SQL_FALSE;
        SQLColAttributeW(m_statement->Get(), column, SQL_DESC_AUTO_UNIQUE_VALUE, nullptr, 0,
                         nullptr, &isFilled);
        edit.isFilled = isFilled == SQL_TRUE;
    }
    m_block = std::make_unique<OdbcBlock>(m_statement->Get(), std::move(columns),
                                          m_connection->GetBlockRows());
}

/// Whether PostgreSQL's driver passes the column on as the server gives it.
bool OdbcSource::IsCharacters(std::size_t column) const {
    const std::string type = GetAttribute(column, SQL_DESC_TYPE_NAME);
    return type == "text" || type == "varchar" || type == "bpchar";
}

// --- what can be written back --------------------------------------------------------------------

std::string OdbcSource::GetAttribute(std::size_t column, SQLUSMALLINT attribute) const {
    SQLWCHAR text[512] = {};
    SQLSMALLINT bytes = 0;
    if (!SQL_SUCCEEDED(SQLColAttributeW(m_statement->Get(), static_cast<SQLUSMALLINT>(column + 1),
                                        attribute, text, sizeof text, &bytes, nullptr)))
        return {};
    return FromBuffer(text, bytes / static_cast<SQLLEN>(sizeof(SQLWCHAR)));
}

/// Names of the primary key's columns in the plan's table; empty when the driver does not tell.
std::vector<std::string> OdbcSource::FindPrimaryKey(const std::string& catalog) const {
    const std::unique_ptr<OdbcHandle> keys = m_connection->NewStatement();
    std::vector<SQLWCHAR> names[] = {ToWide(catalog), ToWide(m_editPlan.schema),
                                     ToWide(m_editPlan.table)};
    const auto text = [](std::vector<SQLWCHAR>& name) {
        return name.size() > 1 ? name.data() : nullptr;
    };
    std::vector<std::string> columns;
    if (!SQL_SUCCEEDED(SQLPrimaryKeysW(keys->Get(), text(names[0]), SQL_NTS, text(names[1]),
                                       SQL_NTS, text(names[2]), SQL_NTS)))
        return columns;
    constexpr SQLUSMALLINT kColumnName = 4;
    while (SQL_SUCCEEDED(SQLFetch(keys->Get()))) {
        SQLWCHAR name[512] = {};
        SQLLEN bytes = 0;
        if (SQL_SUCCEEDED(
                SQLGetData(keys->Get(), kColumnName, SQL_C_WCHAR, name, sizeof name, &bytes)) &&
            bytes > 0)
            columns.push_back(FromBuffer(name, bytes / static_cast<SQLLEN>(sizeof(SQLWCHAR))));
    }
    return columns;
}

void OdbcSource::PlanEditing(const std::string& sql) {
    // The driver reports a table joined with itself as one table.
    if (!ParseOneTableQuery(sql))
        return;
    std::string catalog;
    for (std::size_t i = 0; i < m_names.size(); ++i) {
        EditColumn& column = m_editPlan.columns[i];
        const std::string table = GetAttribute(i, SQL_DESC_BASE_TABLE_NAME);
        column.name = table.empty() ? "" : GetAttribute(i, SQL_DESC_BASE_COLUMN_NAME);
        column.defaultSql = "DEFAULT";
        column.readOnly = column.name.empty() ? ReadOnlyReason::Computed : ReadOnlyReason::None;
        if (column.name.empty())
            continue;
        if (m_editPlan.table.empty()) {
            m_editPlan.table = table;
            m_editPlan.schema = GetAttribute(i, SQL_DESC_SCHEMA_NAME);
            catalog = GetAttribute(i, SQL_DESC_CATALOG_NAME);
        } else if (table != m_editPlan.table) {
            return; // a join
        }
    }
    if (m_editPlan.table.empty())
        return;
    m_editPlan.readOnly = ReadOnlyReason::NoKey;
    m_editPlan.SetKey(FindPrimaryKey(catalog), std::equal_to<>());
}

// --- rows ----------------------------------------------------------------------------------------

bool OdbcSource::Next() {
    CheckInterrupted();
    return m_block && m_block->Next();
}

void OdbcSource::Read(std::size_t column, ValueSink& sink) { m_block->Read(column, sink); }

} // namespace vnquery

#include "vnquery/sources/OdbcWriter.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/sources/OdbcReader.h"
#include "vnquery/sources/OdbcText.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Progress.h"

#include <algorithm>

namespace vnquery {

namespace {

bool IsBinaryType(int sqlType) {
    return sqlType == SQL_BINARY || sqlType == SQL_VARBINARY || sqlType == SQL_LONGVARBINARY;
}

/// Throws when the statement that `what` tells about found its row no longer.
void CheckOneRow(SQLHANDLE statement, const std::string& what) {
    SQLLEN rows = 0;
    if (SQL_SUCCEEDED(SQLRowCount(statement, &rows)) && rows != 1)
        throw Failure(kQueryFailed, what + ": " + Text(IDS_VQ_ROW_GONE));
}

} // namespace

OdbcWriter::OdbcWriter(std::shared_ptr<OdbcConnection> connection, Session::LeasePointer lease,
                       const EditPlan& plan)
    : m_lease(std::move(lease)), m_connection(std::move(connection)), m_plan(plan),
      m_quote(m_connection->GetNameQuote()) {
    m_table = (plan.schema.empty() ? "" : Quote(plan.schema) + ".") + Quote(plan.table);
}

OdbcWriter::OdbcWriter(const std::string& connection, const EditPlan& plan)
    : OdbcWriter(std::make_shared<OdbcConnection>(connection, OdbcConnection::Access::Write),
                 nullptr, plan) {}

OdbcWriter::OdbcWriter(OdbcSession& session, Session::LeasePointer lease, const EditPlan& plan)
    : OdbcWriter(session.GetOpen(), std::move(lease), plan) {
    m_session = &session;
    m_lock = session.GetServer() == SqlServer::Other ? "" : " FOR UPDATE";
}

OdbcWriter::~OdbcWriter() {
    if (m_session && !m_isCommitted)
        m_session->UndoUse();
}

std::string OdbcWriter::Quote(const std::string& name) const {
    if (m_quote.empty())
        return name;
    std::string quoted = m_quote;
    for (const char ch : name)
        quoted.append(ch == m_quote[0] ? 2 : 1, ch);
    return quoted + m_quote;
}

std::string OdbcWriter::Condition() const {
    std::string condition;
    for (const std::size_t column : m_plan.keyColumns)
        condition.append(condition.empty() ? " WHERE " : " AND ")
            .append(Quote(m_plan.columns[column].name))
            .append(" = ?");
    return condition;
}

/// Binds the values of these columns of the plan. Bytes are passed when the statement runs.
void OdbcWriter::Bind(SQLHANDLE statement, std::span<Parameter> parameters,
                      std::span<const std::size_t> columns) const {
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        Parameter& parameter = parameters[i];
        const EditColumn& column = m_plan.columns[columns[i]];
        const Value& value = *parameter.value;
        const bool isBinary = value.GetType() == Value::Type::Binary;
        SQLPOINTER data = &parameter; // SQLParamData returns it
        if (value.IsNull()) {
            parameter.indicator = SQL_NULL_DATA;
        } else if (isBinary) {
            parameter.indicator = SQL_LEN_DATA_AT_EXEC(static_cast<SQLLEN>(value.GetLength()));
        } else {
            parameter.wide = ToWide(value.GetBytes());
            parameter.indicator = SQL_NTS;
            data = parameter.wide.data();
        }
        const bool asBinary = isBinary || (value.IsNull() && IsBinaryType(column.sqlType));
        const std::size_t length = isBinary ? value.GetLength() : parameter.wide.size();
        if (!SQL_SUCCEEDED(SQLBindParameter(
                statement, static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT,
                asBinary ? SQL_C_BINARY : SQL_C_WCHAR, static_cast<SQLSMALLINT>(column.sqlType),
                std::max<SQLULEN>({column.sqlSize, length, 1}),
                static_cast<SQLSMALLINT>(column.sqlDigits), data, 0, &parameter.indicator)))
            OdbcFail(Text(IDS_VQ_CANNOT_PASS, {column.name}), SQL_HANDLE_STMT, statement);
    }
}

void OdbcWriter::Execute(SQLHANDLE statement, const std::string& sql, const std::string& what,
                         Progress& progress) const {
    std::vector<SQLWCHAR> text = ToWide(sql);
    SQLRETURN result = SQLExecDirectW(statement, text.data(), SQL_NTS);
    while (result == SQL_NEED_DATA) {
        SQLPOINTER which = nullptr;
        result = SQLParamData(statement, &which);
        if (result != SQL_NEED_DATA)
            break;
        static_cast<const Parameter*>(which)->value->ForEachPiece([&](std::span<const BYTE> piece) {
            if (!SQL_SUCCEEDED(SQLPutData(statement, const_cast<BYTE*>(piece.data()),
                                          static_cast<SQLLEN>(piece.size()))))
                OdbcFail(what, SQL_HANDLE_STMT, statement);
            progress.AddBytes(piece.size());
        });
    }
    if (!SQL_SUCCEEDED(result) && result != SQL_NO_DATA)
        OdbcFail(what, SQL_HANDLE_STMT, statement);
}

std::optional<std::vector<Value>>
OdbcWriter::ReadRow(const RowKey& key, std::span<const std::size_t> columns, Progress& progress) {
    std::string names;
    for (const std::size_t column : columns)
        names.append(names.empty() ? "" : ", ").append(Quote(m_plan.columns[column].name));
    const std::string what = Text(IDS_VQ_CANNOT_READ_VALUE, {names});
    const std::unique_ptr<OdbcHandle> select = m_connection->NewStatement();
    std::vector<Parameter> parameters;
    for (const Value& value : key.values)
        parameters.push_back({&value, {}, 0});
    Bind(select->Get(), parameters, m_plan.keyColumns);
    Execute(select->Get(), "SELECT " + names + " FROM " + m_table + Condition() + m_lock, what,
            progress);
    const SQLRETURN result = SQLFetch(select->Get());
    if (result == SQL_NO_DATA)
        return {};
    if (!SQL_SUCCEEDED(result))
        OdbcFail(what, SQL_HANDLE_STMT, select->Get());
    std::vector<Value> values(columns.size());
    OdbcReader reader(select->Get());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const EditColumn& plan = m_plan.columns[columns[i]];
        ValueKeeper sink(values[i], progress);
        reader.Read(i, plan.name, OdbcReader::TypeOf(plan.sqlType), sink);
    }
    return values;
}

void OdbcWriter::Update(const RowKey& key, std::size_t column, const NewValue& value,
                        Progress& progress) {
    const EditColumn& plan = m_plan.columns[column];
    const std::unique_ptr<OdbcHandle> update = m_connection->NewStatement();
    std::vector<Parameter> parameters;
    std::vector<std::size_t> columns;
    if (!value.isDefault) {
        parameters.push_back({&value.value, {}, 0});
        columns.push_back(column);
    }
    for (const Value& part : key.values)
        parameters.push_back({&part, {}, 0});
    columns.insert(columns.end(), m_plan.keyColumns.begin(), m_plan.keyColumns.end());
    Bind(update->Get(), parameters, columns);
    Execute(update->Get(),
            "UPDATE " + m_table + " SET " + Quote(plan.name) + " = " +
                (value.isDefault ? plan.defaultSql : "?") + Condition(),
            Text(IDS_VQ_CANNOT_CHANGE, {plan.name}), progress);
    CheckOneRow(update->Get(), Text(IDS_VQ_CANNOT_CHANGE, {plan.name}));
}

/// The values of the key's columns, which a statement gives.
std::optional<RowKey> OdbcWriter::FetchKey(SQLHANDLE statement, Progress& progress) const {
    if (!SQL_SUCCEEDED(SQLFetch(statement)))
        return {};
    RowKey key;
    OdbcReader reader(statement);
    for (std::size_t i = 0; i < m_plan.keyColumns.size(); ++i) {
        const EditColumn& plan = m_plan.columns[m_plan.keyColumns[i]];
        ValueKeeper sink(key.values.emplace_back(), progress);
        reader.Read(i, plan.name, OdbcReader::TypeOf(plan.sqlType), sink);
    }
    return key;
}

/// The key of the row that was inserted last.
std::optional<RowKey> OdbcWriter::AskForKey(const RowValues& values, Progress& progress) const {
    if (m_connection->GetServer() != SqlServer::MySql || m_plan.keyColumns.size() != 1)
        return GivenKey(m_plan, values);
    if (std::optional<RowKey> given = GivenKey(m_plan, values))
        return given;
    const std::unique_ptr<OdbcHandle> select = m_connection->NewStatement();
    Execute(select->Get(), "SELECT LAST_INSERT_ID()", Text(IDS_VQ_S_CANNOT_INSERT, {m_plan.table}),
            progress);
    return FetchKey(select->Get(), progress);
}

std::optional<RowKey> OdbcWriter::Insert(const RowValues& values, Progress& progress) {
    const SqlServer server = m_connection->GetServer();
    std::string names;
    std::string marks;
    std::vector<Parameter> parameters;
    std::vector<std::size_t> columns;
    for (const auto& [column, value] : values) {
        if (value.isDefault)
            continue;
        names.append(names.empty() ? "" : ", ").append(Quote(m_plan.columns[column].name));
        marks.append(marks.empty() ? "?" : ", ?");
        parameters.push_back({&value.value, {}, 0});
        columns.push_back(column);
    }
    std::string sql = "INSERT INTO " + m_table;
    if (names.empty() && server != SqlServer::MySql)
        sql += " DEFAULT VALUES";
    else
        sql += " (" + names + ") VALUES (" + marks + ")";
    const bool isTold = server == SqlServer::PostgreSql && !m_plan.keyColumns.empty();
    for (std::size_t i = 0; isTold && i < m_plan.keyColumns.size(); ++i)
        sql += (i == 0 ? " RETURNING " : ", ") + Quote(m_plan.columns[m_plan.keyColumns[i]].name);
    const std::unique_ptr<OdbcHandle> insert = m_connection->NewStatement();
    Bind(insert->Get(), parameters, columns);
    Execute(insert->Get(), sql, Text(IDS_VQ_S_CANNOT_INSERT, {m_plan.table}), progress);
    return isTold ? FetchKey(insert->Get(), progress) : AskForKey(values, progress);
}

void OdbcWriter::Delete(const RowKey& key, Progress& progress) {
    const std::string what = Text(IDS_VQ_S_CANNOT_DELETE, {m_plan.table});
    const std::unique_ptr<OdbcHandle> statement = m_connection->NewStatement();
    std::vector<Parameter> parameters;
    for (const Value& part : key.values)
        parameters.push_back({&part, {}, 0});
    Bind(statement->Get(), parameters, m_plan.keyColumns);
    Execute(statement->Get(), "DELETE FROM " + m_table + Condition(), what, progress);
    CheckOneRow(statement->Get(), what);
}

void OdbcWriter::Commit() {
    if (m_session)
        m_session->KeepChanges();
    else
        m_connection->EndTransaction(SQL_COMMIT);
    m_isCommitted = true;
}

} // namespace vnquery

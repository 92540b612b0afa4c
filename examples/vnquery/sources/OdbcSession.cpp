// Invariants:
// 1. Between two uses a transaction is open exactly if m_hasChanges.
// 2. m_hasSavepoint only if there were changes before the present use: its beginning is marked.
#include "vnquery/sources/OdbcSession.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/sources/OdbcSource.h"
#include "vnquery/sources/OdbcWriter.h"
#include "vnquery/sources/QueryGuard.h"
#include "vnquery/tasks/Failure.h"

#include <utility>

namespace vnquery {

OdbcSession::OdbcSession(const Connection& connection)
    : OdbcSession(connection, std::make_shared<OdbcConnection>(connection.dataSource,
                                                               OdbcConnection::Access::Session)) {}

OdbcSession::OdbcSession(const Connection& connection, std::shared_ptr<OdbcConnection> open)
    : Session(connection, open->GetServer()), m_open(std::move(open)) {}

OdbcSession::~OdbcSession() = default; // the connection's destructor rolls back

/// On PostgreSQL whether the transaction has changed anything; nothing when it has failed. (The
/// server gives a transaction its number with the first change.)
std::optional<bool> OdbcSession::AskForChanges() const noexcept {
    try {
        const std::unique_ptr<OdbcHandle> statement = m_open->NewStatement();
        std::vector<SQLWCHAR> sql = ToWide("SELECT txid_current_if_assigned() IS NOT NULL");
        SQLCHAR is[8] = {};
        SQLLEN length = 0;
        if (!SQL_SUCCEEDED(SQLExecDirectW(statement->Get(), sql.data(), SQL_NTS)) ||
            !SQL_SUCCEEDED(SQLFetch(statement->Get())) ||
            !SQL_SUCCEEDED(SQLGetData(statement->Get(), 1, SQL_C_CHAR, is, sizeof is, &length)))
            return {};
        return is[0] == '1' || is[0] == 't';
    } catch (...) {
        return {};
    }
}

void OdbcSession::BeginUse() {
    m_isChanged = false;
    m_open->AllowPortions(!m_hasChanges);
    m_hasSavepoint = m_hasChanges && m_open->Run("SAVEPOINT vnquery_use");
}

void OdbcSession::EndAll() noexcept {
    try {
        m_open->EndTransaction(SQL_ROLLBACK);
    } catch (...) { // a lost connection
    }
    SetUndone();
}

/// What runs is final, and so is all before it. Most servers have committed it themselves.
void OdbcSession::CommitAll() noexcept {
    m_hasChanges = m_isChanged = m_hasSavepoint = false;
    try {
        m_open->EndTransaction(SQL_COMMIT);
    } catch (...) { // a lost connection
    }
}

void OdbcSession::UndoUse() noexcept {
    m_isChanged = m_isFinal = false;
    if (!m_hasChanges || (m_hasSavepoint && !m_open->Run("ROLLBACK TO SAVEPOINT vnquery_use")))
        EndAll();
}

std::unique_ptr<RowSource> OdbcSession::DoRun(LeasePointer lease, const std::string& sql,
                                              SourceUse use, const Parameters& parameters) {
    BeginUse();
    const SqlText text(sql, GetServer(), parameters, true);
    const bool isFinal = CommitsByItself(text.Get(), GetServer());
    try {
        auto source = std::make_unique<OdbcSource>(m_open, lease, sql, use, parameters);
        m_isChanged = FindRefusal(text.Get(), GetServer()).has_value();
        m_isFinal = isFinal;
        if (isFinal && source->GetColumns().empty())
            DoCommit();
        return source;
    } catch (...) {
        if (isFinal && GetServer() == SqlServer::MySql)
            CommitAll(); // which the server does before such a statement
        else
            UndoUse();
        throw;
    }
}

std::unique_ptr<TableWriter> OdbcSession::DoOpenWriter(LeasePointer lease, const EditPlan& plan) {
    BeginUse();
    if (m_hasChanges && !m_hasSavepoint)
        throw Failure(kQueryFailed, Text(IDS_VQ_CANNOT_PREPARE_TRANSACTION));
    return std::make_unique<OdbcWriter>(*this, std::move(lease), plan);
}

void OdbcSession::DoCommit() {
    m_isChanged = m_hasSavepoint = false;
    m_open->EndTransaction(SQL_COMMIT);
    m_hasChanges = false;
}

void OdbcSession::DoRollBack() {
    m_isChanged = m_hasSavepoint = false;
    SetUndone();
    m_open->EndTransaction(SQL_ROLLBACK);
}

void OdbcSession::EndUse() noexcept {
    if (std::exchange(m_isFinal, false))
        return CommitAll();
    bool isChanged = m_hasChanges || m_isChanged;
    if (GetServer() == SqlServer::PostgreSql) {
        // Also what a function changed; and rows may have failed to arrive.
        std::optional<bool> answer = AskForChanges();
        if (!answer && m_hasSavepoint && m_open->Run("ROLLBACK TO SAVEPOINT vnquery_use"))
            answer = AskForChanges();
        isChanged = answer.value_or(false);
    }
    if (!isChanged)
        EndAll();
    else if (m_hasSavepoint)
        m_open->Run("RELEASE SAVEPOINT vnquery_use");
    m_hasChanges = isChanged;
    m_isChanged = m_hasSavepoint = false;
}

} // namespace vnquery

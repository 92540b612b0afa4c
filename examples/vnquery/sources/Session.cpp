#include "vnquery/sources/Session.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/sources/OdbcSession.h"
#include "vnquery/sources/SqliteSession.h"
#include "vnquery/tasks/Interruption.h"

#include <chrono>

namespace vnquery {

Session::Lease::Lease(Session& session)
    : m_session(session.shared_from_this()), m_lock(session.m_mutex, std::defer_lock) {
    constexpr auto kLookInterval = std::chrono::milliseconds(50);
    while (!m_lock.try_lock_for(kLookInterval))
        CheckInterrupted();
}

Session::Lease::~Lease() { m_session->EndUse(); }

/// Calls `action` with a lease; adds to a Failure that the whole transaction is undone.
template <class Action>
auto Session::Use(Action&& action) {
    unsigned undone = 0;
    try {
        const auto lease = std::make_shared<Lease>(*this);
        undone = m_undoneCount;
        return action(lease);
    } catch (const Failure& failure) {
        if (m_undoneCount == undone)
            throw;
        throw Failure(failure.Code(), failure.what() + (" " + Text(IDS_VQ_S_ALL_UNDONE)),
                      failure.GetPlace());
    }
}

std::unique_ptr<RowSource> Session::Run(const std::string& sql, SourceUse use,
                                        const Parameters& parameters) {
    const SqlText text(sql, m_server, parameters, true);
    ThrowRefusal(FindSessionRefusal(text.Get(), m_server));
    return Use([&](const LeasePointer& lease) { return DoRun(lease, sql, use, parameters); });
}

std::unique_ptr<TableWriter> Session::OpenWriter(const EditPlan& plan) {
    return Use([&](const LeasePointer& lease) { return DoOpenWriter(lease, plan); });
}

void Session::Commit() {
    Use([&](const LeasePointer&) { DoCommit(); });
}

void Session::RollBack() {
    Use([&](const LeasePointer&) { DoRollBack(); });
}

void ThrowRefusal(const std::optional<QueryRefusal>& refusal) {
    if (!refusal)
        return;
    switch (refusal->reason) {
    case QueryRefusal::Reason::Empty:
        throw Failure(kQueryFailed, Text(IDS_VQ_NO_QUERY));
    case QueryRefusal::Reason::Several:
        throw Failure(kQueryFailed, Text(IDS_VQ_MORE_STATEMENTS));
    case QueryRefusal::Reason::NotAQuery:
        throw Failure(kQueryFailed, Text(IDS_VQ_NOT_A_QUERY, {refusal->word}));
    case QueryRefusal::Reason::EndsTransaction:
        throw Failure(kQueryFailed, Text(IDS_VQ_S_ENDS_TRANSACTION, {refusal->word}));
    }
}

std::shared_ptr<Session> OpenSession(const Connection& connection) {
    if (connection.file.empty())
        return std::make_shared<OdbcSession>(connection);
    return std::make_shared<SqliteSession>(connection);
}

} // namespace vnquery

// A connection that stays open, on which changes are allowed.
#pragma once

#include "vnquery/result/TableWriter.h"
#include "vnquery/sources/Connection.h"
#include "vnquery/sources/Parameters.h"
#include "vnquery/sources/QueryGuard.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace vnquery {

/// Runs any statement. The first one that changes something begins a transaction, which stays open
/// until Commit or RollBack; the destructor rolls back. Results show what is not committed yet. A
/// query before any change leaves no transaction open and blocks nobody.
///
/// - A statement that would itself end the transaction is refused (FindSessionRefusal). What the
///   server takes out of every transaction is run all the same: ask CommitsByItself before.
/// - A statement that fails is undone, those before it stay. Where the database undoes all of the
///   transaction (a full disk, a deadlock, SQLite's ON CONFLICT ROLLBACK, a lost connection,
///   stopping a statement of SQLite that changes something) the message says so and HasChanges is
///   false.
/// - SQLite: foreign keys are enforced unless PRAGMA foreign_keys switches that off before the
///   first change. The transaction holds the write lock; others can read.
/// - PostgreSQL's driver keeps a whole result in memory while something is not committed.
/// - ODBC: on servers other than PostgreSQL what a function called by a query has changed is undone
///   unless a statement that changes something ran before.
///
/// One thread at a time uses it: Run and OpenWriter wait until the source or writer that another
/// one holds is gone. All functions but HasChanges throw Failure and Interrupted.
class Session : public std::enable_shared_from_this<Session> {
public:
    virtual ~Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const Connection& GetConnection() const { return m_connection; }
    SqlServer GetServer() const { return m_server; }

    /// Runs one statement; one without a result has no columns in the source. The source keeps the
    /// session, and must be gone before anything else can be run.
    std::unique_ptr<RowSource> Run(const std::string& sql, SourceUse use,
                                   const Parameters& parameters = {});
    /// Writes cells within the transaction. Its Commit keeps what it wrote, uncommitted, with the
    /// session's other changes; without it only the writer's own changes are undone. Locks the rows
    /// that it reads, as other writers do.
    std::unique_ptr<TableWriter> OpenWriter(const EditPlan& plan);
    /// After a Failure of Commit HasChanges tells whether it can be tried again, as it can while
    /// another program holds a lock.
    void Commit();
    void RollBack();
    /// Whether something is not committed. May be called while another thread uses the session.
    bool HasChanges() const { return m_hasChanges; }
    /// How many transactions with changes have been undone, by RollBack or by the database: what
    /// was read in them may not be there. May be called as HasChanges.
    unsigned GetUndoneCount() const { return m_undoneCount; }

    /// The use of the session by a source or a writer.
    class Lease {
    public:
        explicit Lease(Session& session);
        ~Lease();
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;

    private:
        std::shared_ptr<Session> m_session;
        std::unique_lock<std::timed_mutex> m_lock;
    };
    using LeasePointer = std::shared_ptr<Lease>;

protected:
    Session(Connection connection, SqlServer server)
        : m_connection(std::move(connection)), m_server(server) {}

    // All of these are called by the thread that holds the lease.
    virtual std::unique_ptr<RowSource> DoRun(LeasePointer lease, const std::string& sql,
                                             SourceUse use, const Parameters& parameters) = 0;
    virtual std::unique_ptr<TableWriter> DoOpenWriter(LeasePointer lease, const EditPlan& plan) = 0;
    virtual void DoCommit() = 0;
    virtual void DoRollBack() = 0;
    /// Sets m_hasChanges to what the database says, and counts what it has undone. Throws nothing.
    virtual void EndUse() noexcept = 0;
    /// The database has no open transaction any more, and has not committed it.
    void SetUndone() noexcept {
        if (m_hasChanges.exchange(false))
            ++m_undoneCount;
    }

    std::atomic<bool> m_hasChanges = false;

private:
    template <class Action>
    auto Use(Action&& action);

    Connection m_connection;
    SqlServer m_server;
    std::atomic<unsigned> m_undoneCount = 0;
    std::timed_mutex m_mutex;
};

/// Throws Failure, with the reason in it, where there is one.
void ThrowRefusal(const std::optional<QueryRefusal>& refusal);

/// Connects. Throws Failure, also when the database can only be read.
std::shared_ptr<Session> OpenSession(const Connection& connection);

} // namespace vnquery

// Changes to an SQLite database file.
#pragma once

#include "vnquery/sources/Session.h"
#include "vnquery/sources/SqliteDatabase.h"

namespace vnquery {

class SqliteSession : public Session {
public:
    explicit SqliteSession(const Connection& connection);
    ~SqliteSession() override;

    /// Begins the transaction unless it is open.
    void Begin();
    /// For a writer: what it has done since its lease began stays, or has been undone.
    void KeepChanges() { m_isKept = true; }
    void ForgetChanges();
    const std::shared_ptr<SqliteDatabase>& GetDatabase() const { return m_database; }

protected:
    std::unique_ptr<RowSource> DoRun(LeasePointer lease, const std::string& sql, SourceUse use,
                                     const Parameters& parameters) override;
    std::unique_ptr<TableWriter> DoOpenWriter(LeasePointer lease, const EditPlan& plan) override;
    void DoCommit() override;
    void DoRollBack() override;
    void EndUse() noexcept override;

private:
    bool IsOpen() const;

    std::shared_ptr<SqliteDatabase> m_database;
    // Of the present use:
    bool m_isKept = false; ///< it has changed something, whatever the count of changed rows says
    long long m_changesBefore = 0;
};

} // namespace vnquery

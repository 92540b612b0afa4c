// Changes to a database server, through ODBC.
#pragma once

#include "vnquery/sources/OdbcConnection.h"
#include "vnquery/sources/Session.h"

namespace vnquery {

class OdbcSession : public Session {
public:
    explicit OdbcSession(const Connection& connection);
    ~OdbcSession() override;

    /// For a writer: what it has done since its lease began stays, or is undone.
    void KeepChanges() { m_isChanged = true; }
    void UndoUse() noexcept;
    const std::shared_ptr<OdbcConnection>& GetOpen() const { return m_open; }

protected:
    std::unique_ptr<RowSource> DoRun(LeasePointer lease, const std::string& sql, SourceUse use,
                                     const Parameters& parameters) override;
    std::unique_ptr<TableWriter> DoOpenWriter(LeasePointer lease, const EditPlan& plan) override;
    void DoCommit() override;
    void DoRollBack() override;
    void EndUse() noexcept override;

private:
    OdbcSession(const Connection& connection, std::shared_ptr<OdbcConnection> open);
    void BeginUse();
    void EndAll() noexcept;
    void CommitAll() noexcept;
    std::optional<bool> AskForChanges() const noexcept;

    std::shared_ptr<OdbcConnection> m_open;
    // Of the present use:
    bool m_hasSavepoint = false;
    bool m_isChanged = false;
    bool m_isFinal = false; ///< see CommitsByItself
};

} // namespace vnquery

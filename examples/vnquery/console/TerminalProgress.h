// How far long work has come, on the terminal.
#pragma once

#include "vnquery/tasks/Progress.h"

#include <chrono>
#include <string>

namespace vnquery {

/// One line on the terminal: counts rows and bytes, shows them on standard error if that is a
/// terminal (at most ten times a second), and removes the line in the end. Each call also notices
/// a signal to end.
class TerminalProgress : public Progress {
public:
    /// `work` says what is being done, such as "Reading". Without `isShown` nothing appears.
    explicit TerminalProgress(std::string work, bool isShown = true);
    ~TerminalProgress() override;
    TerminalProgress(const TerminalProgress&) = delete;
    TerminalProgress& operator=(const TerminalProgress&) = delete;

    /// Removes the line until the next call that shows it.
    void Hide();
    void AddRow() override;
    void AddBytes(std::uint64_t count) override;

private:
    using Clock = std::chrono::steady_clock;
    void Show();

    std::string m_work;
    bool m_isTerminal;
    bool m_isShown = false;
    std::uint64_t m_rows = 0;
    std::uint64_t m_bytes = 0;
    unsigned m_untilLook = 0; ///< rows until the clock is read again
    Clock::time_point m_next;
};

} // namespace vnquery

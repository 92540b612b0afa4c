// One line on the terminal that tells how far long work has come.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace vnquery {

/// Counts rows and bytes, shows them on standard error when that is a terminal (ten times a second
/// at most), and removes the line at its end. Every call is also where a signal to end is noticed.
class Progress {
public:
    /// `work` says what goes on, such as "Reading".
    explicit Progress(std::string work);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Throw Interrupted when a signal asked to end.
    void AddRow();
    void AddBytes(std::uint64_t count);

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

#include "vnquery/console/TerminalProgress.h"

#include "vnquery/console/Process.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"
#include "vnquery/tasks/Interruption.h"

#include <cstdio>
#include <utility>

namespace vnquery {

namespace {

constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr unsigned kRowsPerLook = 64;
constexpr std::uint64_t kBytesPerLook = 16384;

} // namespace

TerminalProgress::TerminalProgress(std::string work, bool isShown)
    : m_work(std::move(work)), m_isTerminal(isShown && IsErrorOutputTerminal()),
      m_next(Clock::now() + kInterval) {}

TerminalProgress::~TerminalProgress() { Hide(); }

void TerminalProgress::Hide() {
    if (m_isShown)
        std::fputs("\r\x1B[K", stderr);
    m_isShown = false;
}

void TerminalProgress::AddRow() {
    CheckInterrupted();
    ++m_rows;
    if (m_isTerminal && m_untilLook-- == 0) {
        m_untilLook = kRowsPerLook;
        Show();
    }
}

void TerminalProgress::AddBytes(std::uint64_t count) {
    CheckInterrupted();
    m_bytes += count;
    if (m_isTerminal && count >= kBytesPerLook)
        Show();
}

void TerminalProgress::Show() {
    const Clock::time_point now = Clock::now();
    if (now < m_next)
        return;
    m_next = now + kInterval;
    m_isShown = true;
    const std::string line =
        Text(IDS_VQ_PROGRESS, {m_work, GroupDigits(m_rows), FormatSize(m_bytes)});
    std::fprintf(stderr, "\r%s\x1B[K", line.c_str());
    std::fflush(stderr);
}

} // namespace vnquery

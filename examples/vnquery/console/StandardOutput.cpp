#include "vnquery/console/StandardOutput.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace vnquery {

namespace {

constexpr std::size_t kBlock = 65536;
constexpr std::size_t kMaxWrite = 1 << 20;
constexpr auto kMaxDelay = std::chrono::milliseconds(100);

} // namespace

void StandardOutput::Write(const void* bytes, UINT count) {
    m_block.append(static_cast<const char*>(bytes), count);
    if (m_block.size() >= kBlock || Clock::now() - m_flushed >= kMaxDelay)
        Flush();
}

void StandardOutput::Flush() {
    for (std::size_t done = 0; done < m_block.size();) {
        CheckInterrupted();
        const auto size =
            static_cast<unsigned>(std::min<std::size_t>(m_block.size() - done, kMaxWrite));
        const auto count = write(STDOUT_FILENO, m_block.data() + done, size);
        if (count >= 0)
            done += static_cast<std::size_t>(count);
        else if (errno == EPIPE && m_goesOn)
            break;
        else if (errno == EPIPE)
            throw OutputClosed();
        else if (errno != EINTR)
            throw Failure(kFileFailed, Text(IDS_VQ_CANNOT_WRITE_OUTPUT, {std::strerror(errno)}));
    }
    m_block.clear();
    m_flushed = Clock::now();
}

} // namespace vnquery

// Standard output as a file that a result is written to.
#pragma once

#include "vnbytstr/framework/File.h"

#include <chrono>
#include <string>

namespace vnquery {

/// Gathers what is written for at most a tenth of a second. Write and Flush throw Failure,
/// OutputClosed and Interrupted.
class StandardOutput : public CFile {
public:
    /// With `goesOn` a closed pipe is not noticed: the result is written elsewhere, too.
    explicit StandardOutput(bool goesOn) : m_goesOn(goesOn) {}

    void Write(const void* bytes, UINT count) override;
    void Flush() override;

private:
    using Clock = std::chrono::steady_clock;

    std::string m_block;
    Clock::time_point m_flushed = Clock::now();
    const bool m_goesOn;
};

} // namespace vnquery

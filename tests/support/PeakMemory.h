// Peak resident memory of this process.
#pragma once

#include <fstream>
#include <string>

namespace vnbytstr::test {

/// In KiB; -1 where the system does not tell. It never goes down, so that each program can measure
/// one thing only.
inline long PeakKiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:"))
            return std::stol(line.substr(6));
    }
    return -1;
}

} // namespace vnbytstr::test

// How far long work has come, and where it notices that it has to stop.
#pragma once

#include <cstdint>

namespace vnquery {

/// Work that takes time reports here what it has done.
class Progress {
public:
    virtual ~Progress() = default;
    /// Throw Interrupted when the work has to stop.
    virtual void AddRow() = 0;
    virtual void AddBytes(std::uint64_t count) = 0;

protected:
    Progress() = default;
    Progress(const Progress&) = default;
    Progress& operator=(const Progress&) = default;
};

} // namespace vnquery

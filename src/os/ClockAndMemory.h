// The part of the system seam that measures: time and memory.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Types.h"

namespace vnbytstr {

/// Every function may be called from every thread.
class VNBYTSTR_API ClockAndMemory {
public:
    virtual ~ClockAndMemory() = default;

    /// Milliseconds of a clock that never goes back; wraps after 49.7 days.
    virtual DWORD GetTickCount() = 0;
    /// Seconds since 1970-01-01 UTC; wraps in 2106.
    virtual DWORD GetTime() = 0;
    /// Memory in use in percent (0 to 100), of the machine or of the process's memory group,
    /// whichever is fuller; read from the system at most once per tick.
    virtual DWORD GetMemoryLoad() = 0;
};

} // namespace vnbytstr

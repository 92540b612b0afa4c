// Makes the n-th allocation of the program fail: malloc and its kin are this program's own, so that
// all libraries come here, the C++ library's operator new included.
#pragma once

namespace vnbytstr::test {

struct MemoryFault {
    unsigned at = 1;         ///< which allocation, counted from 1
    bool fromThenOn = false; ///< that one and all after it
};

/// Lets allocations fail from now on.
void FailMemory(const MemoryFault& fault);
/// Lets them succeed again; whether any has failed.
bool StopFailing();
/// Leaves ICU's own allocations out. Before the first use of ICU.
void SpareIcu();

} // namespace vnbytstr::test

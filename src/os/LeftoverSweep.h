// Removes the scratch files of killed processes.
#pragma once

#include "src/os/System.h"

#include <string>

namespace vnbytstr {

/// Removes the scratch files in `folder` whose process has ended: plain files of this user (for
/// root also new content of other users, since root may have changed the owner) whose lock nobody
/// holds, swap files only while they have the scratch mark. A file that a killed process was
/// overwriting in place first gets its old content back. Never removes a file that is in use, here
/// or in another process. Reports nothing.
VNBYTSTR_API void SweepLeftovers(const std::string& folder);

/// SweepLeftovers, on the process's first call for that folder only.
VNBYTSTR_API void SweepLeftoversOnce(const std::string& folder);

} // namespace vnbytstr

// Clears away the scratch files that killed processes left behind.
#pragma once

#include "src/os/System.h"

#include <string>

namespace vnbytstr {

/// Removes the scratch files in `folder` whose owner is gone: plain files of this user (root: for
/// new content of any user, which root may have given away) whose lock nobody holds, swap files
/// only while they carry the scratch mark. What a killed process was writing over in place gets its
/// old content back first. Never removes a file that is in use, here or in another process. Reports
/// nothing.
VNBYTSTR_API void SweepLeftovers(const std::string& folder);

/// SweepLeftovers, on the process's first call for that folder only.
VNBYTSTR_API void SweepLeftoversOnce(const std::string& folder);

} // namespace vnbytstr

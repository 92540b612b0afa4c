// Overwrites a file in place, so that it keeps its identity, for files that cannot be replaced by a
// rename: those with several names, or with an owner that a new file could not be given.
#pragma once

#include "src/os/System.h"

#include <string>

namespace vnbytstr {

/// The error for a target whose name leads to another file now: ESTALE of POSIX systems, which
/// other systems' error numbers lack.
inline constexpr int kStale = 116;

/// Makes the first `length` bytes of the open file `source` the content of the file `target`: the
/// one of that identity (kStale when another one is there now), or, when `expected` is unknown, a
/// new one (EEXIST). The target is locked meanwhile, so that two processes that write it over come
/// one after the other; EWOULDBLOCK when another process holds its lock for 2 seconds. 0 or an
/// error number; after an error the target has its old content (on a disk that does not take even
/// that, from the next RecoverInPlace on).
///
/// What needs room on the disk comes first. The old content is kept in a scratch file until all is
/// on the disk, so that a process that is killed meanwhile, or a disk that fails, does not leave a
/// part of each: RecoverInPlace puts the old content back. The scratch file stands beside the
/// target, or in the temporary folder where the target's folder takes no new names.
int WriteInPlace(FileHandle source, std::uint64_t length, const std::string& target,
                 const FileIdentity& expected);

/// Takes an old-content file of a killed process (open for reading, its lock held),
/// and puts that content back into the file it came from, if that file is the same still and holds
/// parts of the old and the new content and nothing else. True when the scratch file is not needed
/// any more; after an error it is, so that the next sweep tries again. Throws std::bad_alloc.
bool RecoverInPlace(FileHandle undo);

} // namespace vnbytstr

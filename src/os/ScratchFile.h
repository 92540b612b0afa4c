// Temporary files of one process: private, marked, and locked for as long as the process
// lives, so that another process can recognise those of a dead one.
#pragma once

#include "src/os/System.h"

#include <optional>
#include <string>
#include <string_view>

namespace vnbytstr {

/// Makes the scratch file `name`, open for reading and writing, and takes its lock. EEXIST when the
/// name is taken, or when the sweep was faster: try another name. On failure no file is left.
int OpenScratch(const char* name, FileHandle& handle);

/// Takes the lock of a scratch file just opened. EEXIST when the sweep was faster.
int LockScratch(const char* name, FileHandle handle);

/// Whether a lock failed because the file system has no locks, or none for this kind of open.
bool LocksAreMissing(int error) noexcept;

/// What a scratch file is for; the beginning of its name tells.
enum class ScratchUse {
    Swap, ///< pages of a store ("~dat-1234-0.tmp", in the temporary folder)
    New,  ///< content that is to take another file's name (".~new-1234-0.tmp")
    Old,  ///< a file's old content while it is overwritten (".~old-1234-0.tmp")
};

/// The name for scratch file `counter` of the process.
std::string ScratchName(ScratchUse use, DWORD process, unsigned counter);

/// What the name (without folder) says the file is for; nothing for a name of another form.
std::optional<ScratchUse> UseOfScratchName(std::string_view name) noexcept;

/// Makes a scratch file of that use in `folder` (with or without its last slash); `name` is its
/// full name.
int MakeScratch(ScratchUse use, const std::string& folder, std::string& name, FileHandle& handle);

} // namespace vnbytstr

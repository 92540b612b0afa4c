// What a name leads to. A file has many spellings: relative names, "./", links and hard links. Text
// never tells whether two of them mean the same file; the file's identity does.
#pragma once

#include "src/os/System.h"

namespace vnbytstr {

/// Whether the file that `name` leads to, links followed, is the one of that identity. False when
/// there is no such file, or the identity is not known.
VNBYTSTR_API bool LeadsTo(const char* name, const FileIdentity& identity);

/// The open file's identity; an unknown one when the system does not tell.
VNBYTSTR_API FileIdentity IdentityOf(FileHandle handle);

} // namespace vnbytstr

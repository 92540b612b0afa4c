// Writes a file so that whoever looks sees the old content or the whole new one, never a part.
#pragma once

#include "System.h"

#include <string>

namespace vnbytstr {

/// The new content goes to a file of another name in the same folder, which takes the target's name
/// at Commit. What is no plain file (a pipe, a terminal), and a file in a folder that takes no new
/// names, is written directly. Without Commit nothing is left behind.
///
/// All functions return 0 or a system error number.
class VNBYTSTR_API FileReplacement {
public:
    FileReplacement() = default;
    ~FileReplacement() { Abandon(); }
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Begins the new content of `name`. A symbolic link stays one: its target is replaced. With
    /// `directlyToo` false nothing is ever written directly: what cannot be written beside is an
    /// error, and the file is untouched.
    int Open(const char* name, bool directlyToo = true);
    /// Where to write; open for reading and writing.
    FileHandle Handle() const { return m_handle; }
    /// Brings the content to the disk and gives it its name, with the permissions of the file that
    /// had it before. After a failure the old file is as it was.
    int Commit();
    /// Gives up: closes, and removes what was written.
    void Abandon() noexcept;

private:
    int OpenBeside();

    FileHandle m_handle = kNoFile;
    std::string m_target;
    std::string m_beside; ///< name of the new file until Commit; empty when written directly
    bool m_isNew = false; ///< the target did not exist
};

/// The folder part of a file name, "." when it has none.
VNBYTSTR_API std::string FolderOf(const std::string& name);

} // namespace vnbytstr

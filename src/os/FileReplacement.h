// Writes a file so that every reader sees the old content or the whole new one, never a part, and
// a failure or a kill leaves one of the two.
#pragma once

#include "src/os/FileIdentity.h"
#include "src/os/System.h"

#include <string>

namespace vnbytstr {

/// The one way in which this library replaces files. New content is gathered in a scratch file
/// (private, mode 0600) and put in place by Commit. How depends on what the name leads to:
///
///  - A plain file, or nothing yet: the scratch file stands beside it, is given the target's mode,
///    group, owner, access control lists and extended attributes, and takes its name in one step. A
///    symbolic link stays one; what it leads to is replaced.
///  - A plain file that a new one cannot replace (it has several names; its owner, group or
///    attributes cannot be given to another file; its folder takes no new names): it is overwritten
///    in place at Commit, with a copy of the old content kept until all is on the disk (see
///    InPlaceWrite.h). Two processes that do so take turns; EWOULDBLOCK after 2 seconds of waiting.
///  - Anything else (a pipe, a terminal, a device, and what /dev/stdout stands for, be it a file):
///    it is opened for writing only and written to directly, without these guarantees. Opening a
///    pipe waits for its reader.
///
/// Left-overs of killed processes in the folder are swept when the process first writes there.
/// Without Commit no file is left. A forked child does nothing to what its parent began.
///
/// Functions return 0 or a system error number unless they say otherwise. One object, one thread.
class VNBYTSTR_API FileReplacement {
public:
    FileReplacement() = default;
    ~FileReplacement() { Abandon(); }
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Begins the new content of `name`. EACCES for a file that is read-only, or that a link in a
    /// sticky folder leads to which belongs neither to the folder's owner nor to this user; ENOENT
    /// for a link that leads nowhere. With `plainOnly`, EINVAL for what would be written directly.
    int Open(const char* name, bool plainOnly = false);
    /// Makes a file that did not exist before private to its owner (mode 0600), instead of giving
    /// it the mode of any new file. Call it before Commit.
    void SetPrivate() noexcept { m_isPrivate = true; }
    /// Where to write; open for reading as well unless IsDirect.
    FileHandle Handle() const { return m_handle; }
    /// Whether what is written goes to the target at once.
    bool IsDirect() const { return m_way == Way::Direct; }
    /// The full name, free of links, of what is replaced; undefined when IsDirect.
    const std::string& Target() const { return m_target; }
    /// Whether there was no such file at Open.
    bool IsNew() const { return !m_old.identity.IsKnown(); }
    /// Whether the target's file exists and is the one of that identity.
    bool Replaces(const FileIdentity& identity) const {
        return identity.IsKnown() && m_old.identity == identity;
    }

    /// Takes an existing file of this process as the new content, without copying: the open file
    /// `handle`, which `name` leads to, stands beside the target from now on. Nothing may have been
    /// written before, or be written after this but through `handle`, which stays the caller's,
    /// open until Commit or Abandon; the latter gives the file its name back (or, where even that
    /// fails, leaves it without one). Fails with nothing changed where a rename is not enough:
    /// then copy.
    int Adopt(FileHandle handle, const char* name);

    /// Brings the content to the disk and puts it in place. After a failure the old file is
    /// unchanged. With `kept`, when that is not null, the new file stays open: for reading and
    /// writing, and locked meanwhile; kNoFile when the file was overwritten in place or written
    /// directly.
    int Commit(FileHandle* kept = nullptr);
    /// What the name leads to after Commit.
    const FileIdentity& Committed() const { return m_committed; }

    /// Drops the new content: closes, and removes what was written.
    void Abandon() noexcept;

private:
    enum class Way : unsigned char { Beside, InPlace, Direct };

    int OpenDirectly(const char* name);
    int OpenGathering();
    int CommitBeside(FileHandle* kept);
    int CommitInPlace();
    int CommitDirectly();
    int GiveAttributes();
    void Reset() noexcept;

    Way m_way = Way::Beside;
    FileHandle m_handle = kNoFile;
    std::string m_target; ///< full name, free of links
    std::string m_folder; ///< of the target
    std::string
        m_scratch; ///< full name of the scratch file until Commit; empty when written directly
    std::string m_adopted; ///< the name that an adopted file had
    FileStatus m_before;   ///< of an adopted file
    FileStatus m_old;      ///< of the target at Open; its identity is unknown when it did not exist
    FileIdentity m_committed;
    DWORD m_process = 0; ///< the one that opened
    bool m_isPrivate = false;
};

} // namespace vnbytstr

// CReplacementFile: writes a new version of a file, which keeps its old content until all of the
// new content is on the disk.
#pragma once

#include "vnbytstr/framework/File.h"

#include <memory>

namespace vnbytstr {
class FileReplacement;
}

/// New content for a file, as CFile takes it, that takes the file's place at Commit. Until then,
/// and after a failure or a kill, the file is what it was. Closing or destroying the object without
/// Commit drops the new content and leaves no file.
///
/// A file that is there keeps its mode, owner, group, access control lists and extended attributes;
/// a symbolic link stays one, and what it leads to is replaced. A file that has several names, or
/// that another file cannot replace, is overwritten at Commit while a copy of the old content is
/// kept. Where the name leads to a pipe, a terminal, a device or one of the process's own open
/// files (/dev/stdout), the bytes go there directly, as they are written.
///
/// Errors are CFileException with the name of the file: accessDenied for a read-only file, diskFull
/// where there is no room for the new content.
class VNBYTSTR_API CReplacementFile : public CFile {
    DECLARE_DYNAMIC(CReplacementFile)
public:
    CReplacementFile();
    /// As Open; throws when that fails.
    explicit CReplacementFile(const char* name);
    ~CReplacementFile() override;

    /// Begins new content for `name`, dropping any that was begun before. The flags are accepted
    /// because CFile has them: the file is always made, and written from its beginning.
    BOOL Open(const char* name, UINT flags = modeCreate | modeWrite,
              CFileException* error = nullptr) override;
    /// Puts the content in place and closes. On failure the old file is unchanged, and the new
    /// content is dropped. Cause invalidFile when nothing was begun.
    void Commit();
    /// Drops the new content.
    void Close() override;
    void Abort() noexcept override;

private:
    BOOL Begin(const char* name, CFileException* error);

    std::unique_ptr<vnbytstr::FileReplacement> m_pReplacement;
};

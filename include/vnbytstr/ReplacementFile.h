// CReplacementFile: writes a file so that it is the old one until all of the new one is on the
// disk.
#pragma once

#include "vnbytstr/framework/File.h"

#include <memory>

namespace vnbytstr {
class FileReplacement;
}

/// New content for a file, as CFile takes it, that takes the file's place at Commit. Until then,
/// and after a failure or a kill, the file is what it was. Closing or destroying the object without
/// Commit gives the new content up and leaves nothing behind.
///
/// A file that is there keeps its mode, owner, group, access control lists and extended attributes;
/// a symbolic link stays one, and what it leads to is replaced. A file that has several names, or
/// that another file cannot stand in for, is written over at Commit while a copy of the old content
/// is kept. Where the name leads to a pipe, a terminal, a device or one of the process's own open
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

    /// Begins new content for `name`, giving up what was begun before. The flags are accepted for
    /// the sake of CFile: the file is always made, and written from its beginning.
    BOOL Open(const char* name, UINT flags = modeCreate | modeWrite,
              CFileException* error = nullptr) override;
    /// Puts the content in place and closes. On failure the old file is as it was, and the new
    /// content is given up. cause invalidFile when nothing was begun.
    void Commit();
    /// Gives the new content up.
    void Close() override;
    void Abort() noexcept override;

private:
    BOOL Begin(const char* name, CFileException* error);

    std::unique_ptr<vnbytstr::FileReplacement> m_pReplacement;
};

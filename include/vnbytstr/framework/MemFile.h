// CMemFile, a file in memory.
#pragma once

#include "vnbytstr/framework/File.h"

/// A file whose content is one block of memory that grows. It behaves as CFile does, with lengths
/// and positions to 4 GiB - 1. When memory runs out, CMemoryException is thrown, and content and
/// position are unchanged.
class VNBYTSTR_API CMemFile : public CFile {
    DECLARE_DYNAMIC(CMemFile)
public:
    /// An empty file. `growBytes` is the unit it grows by (at least; a large one grows by half its
    /// size).
    explicit CMemFile(UINT growBytes = 1024);
    /// As Attach.
    CMemFile(BYTE* buffer, UINT size, UINT growBytes = 0);
    ~CMemFile() override;

    /// Uses the caller's block of `size` bytes, dropping what the file had. With `growBytes` 0 the
    /// block is the file's content, and writing past it throws CMemoryException. Else the file is
    /// empty, `size` bytes are room, and the block, which must come from malloc (or from the
    /// override of Alloc), is reallocated when the file grows. The caller keeps the block: call
    /// Detach to get it back.
    void Attach(BYTE* buffer, UINT size, UINT growBytes = 0);
    /// Gives the block to the caller, who frees it (free, or the override of Free); null when the
    /// file has no block. The file is then empty and cannot grow until the next Attach.
    BYTE* Detach();

    /// Refused: a file in memory has no name. FALSE, cause genericException.
    BOOL Open(const char* name, UINT flags, CFileException* error = nullptr) override;
    /// Frees the content unless the block is the caller's. The file is then as after Detach.
    void Close() override;
    void Abort() noexcept override;
    UINT Read(void* buffer, UINT count) override;
    /// Past the end, the bytes between are zero.
    void Write(const void* buffer, UINT count) override;
    void WriteGather(std::span<const std::span<const BYTE>> buffers) override;
    void Flush() override {}
    LONG Seek(LONG offset, UINT from) override;
    DWORD GetPosition() const override { return m_position; }
    DWORD GetLength() const override { return m_length; }
    /// Cuts the file, or lengthens it with zeros. Unlike CFile's, the position stays where it is
    /// unless the file now ends before it; then it is at the end.
    void SetLength(DWORD length) override;
    BOOL GetStatus(CFileStatus& status) const override;

protected:
    /// Where the block comes from: malloc, realloc and free. A class that overrides them calls
    /// Close in its destructor. Null means there is no memory; Realloc then leaves the old block
    /// alone.
    virtual BYTE* Alloc(DWORD size);
    virtual BYTE* Realloc(BYTE* block, DWORD size);
    virtual void Free(BYTE* block) noexcept;

private:
    void Use(BYTE* buffer, UINT size, UINT growBytes);
    void MakeRoom(DWORD size);
    void Check() const noexcept;

    BYTE* m_block = nullptr;
    DWORD m_room = 0;
    DWORD m_length = 0;
    DWORD m_position = 0;
    UINT m_growBytes = 0;
    bool m_isOwn = true;
};

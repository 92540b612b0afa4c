// Invariants of a file in memory:
//  1. m_block has m_room bytes; it is null when m_room is 0, unless the caller attached an
//     empty block.
//  2. m_length <= m_room; the bytes below m_length are the content.
//  3. m_position may lie anywhere; the bytes between m_length and a write past it become zero then.
#include "vnbytstr/framework/MemFile.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <cstring>

IMPLEMENT_DYNAMIC(CMemFile, CFile)

namespace {
constexpr std::uint64_t kMaxLength = 0xFFFFFFFF;
}

void CMemFile::Check() const noexcept {
    assert(m_length <= m_room);
    assert(m_room == 0 || m_block != nullptr);
}

CMemFile::CMemFile(UINT growBytes) : m_growBytes(growBytes) {}

CMemFile::CMemFile(BYTE* buffer, UINT size, UINT growBytes) { Use(buffer, size, growBytes); }

CMemFile::~CMemFile() {
    if (m_isOwn)
        CMemFile::Free(m_block);
}

BYTE* CMemFile::Alloc(DWORD size) { return static_cast<BYTE*>(std::malloc(size)); }

BYTE* CMemFile::Realloc(BYTE* block, DWORD size) {
    return static_cast<BYTE*>(std::realloc(block, size));
}

void CMemFile::Free(BYTE* block) noexcept { std::free(block); }

void CMemFile::Attach(BYTE* buffer, UINT size, UINT growBytes) {
    if (buffer == nullptr && size > 0)
        AfxThrowInvalidArgException();
    Abort();
    Use(buffer, size, growBytes);
}

void CMemFile::Use(BYTE* buffer, UINT size, UINT growBytes) {
    if (buffer == nullptr && size > 0)
        AfxThrowInvalidArgException();
    m_block = buffer;
    m_room = size;
    m_length = growBytes == 0 ? size : 0;
    m_growBytes = growBytes;
    m_isOwn = buffer == nullptr;
    Check();
}

BYTE* CMemFile::Detach() {
    BYTE* block = std::exchange(m_block, nullptr);
    Abort();
    return block;
}

BOOL CMemFile::Open(const char* name, UINT, CFileException* error) {
    if (error != nullptr) {
        error->m_cause = CFileException::genericException;
        error->m_lOsError = EINVAL;
        error->m_strFileName = name;
    }
    return FALSE;
}

void CMemFile::Close() { Abort(); }

void CMemFile::Abort() noexcept {
    if (m_block != nullptr && m_isOwn)
        Free(m_block);
    m_block = nullptr;
    m_room = m_length = m_position = 0;
    m_growBytes = 0;
    m_isOwn = true;
    m_strFileName.Empty();
}

UINT CMemFile::Read(void* buffer, UINT count) {
    if (m_position >= m_length || count == 0)
        return 0;
    if (buffer == nullptr)
        AfxThrowInvalidArgException();
    count = std::min<DWORD>(count, m_length - m_position);
    std::memcpy(buffer, m_block + m_position, count);
    m_position += count;
    return count;
}

// Room for `size` bytes in whole units of m_growBytes.
void CMemFile::MakeRoom(DWORD size) {
    if (size <= m_room)
        return;
    if (m_growBytes == 0)
        AfxThrowMemoryException();
    const std::uint64_t wanted = std::max<std::uint64_t>(size, m_room + std::uint64_t{m_room} / 2);
    const std::uint64_t units = (wanted + m_growBytes - 1) / m_growBytes;
    const auto room = static_cast<DWORD>(std::min(units * m_growBytes, kMaxLength));
    BYTE* block = m_block != nullptr ? Realloc(m_block, room) : Alloc(room);
    if (block == nullptr)
        AfxThrowMemoryException();
    m_block = block;
    m_room = room;
}

void CMemFile::Write(const void* buffer, UINT count) {
    if (count == 0)
        return;
    if (buffer == nullptr)
        AfxThrowInvalidArgException();
    const std::uint64_t newEnd = std::uint64_t{m_position} + count;
    if (newEnd > kMaxLength)
        AfxThrowMemoryException();
    MakeRoom(static_cast<DWORD>(newEnd));
    if (m_position > m_length)
        std::memset(m_block + m_length, 0, m_position - m_length);
    std::memcpy(m_block + m_position, buffer, count);
    m_position = static_cast<DWORD>(newEnd);
    m_length = std::max(m_length, m_position);
    Check();
}

void CMemFile::WriteGather(std::span<const std::span<const BYTE>> buffers) {
    for (const std::span<const BYTE> part : buffers) {
        if (part.size() > kMaxLength)
            AfxThrowMemoryException();
        Write(part.data(), static_cast<UINT>(part.size()));
    }
}

LONG CMemFile::Seek(LONG offset, UINT from) {
    if (from > end)
        AfxThrowInvalidArgException();
    const DWORD origin = from == begin ? 0 : from == current ? m_position : m_length;
    const LONGLONG target = LONGLONG{origin} + offset;
    if (target < 0 || target > static_cast<LONGLONG>(kMaxLength))
        AfxThrowFileException(CFileException::badSeek, EINVAL, m_strFileName);
    m_position = static_cast<DWORD>(target);
    return static_cast<LONG>(m_position);
}

void CMemFile::SetLength(DWORD length) {
    MakeRoom(length);
    if (length > m_length)
        std::memset(m_block + m_length, 0, length - m_length);
    m_length = length;
    m_position = std::min(m_position, length);
    Check();
}

BOOL CMemFile::GetStatus(CFileStatus& status) const {
    status = CFileStatus();
    status.m_size = m_length;
    status.m_szFullName = m_strFileName;
    return TRUE;
}

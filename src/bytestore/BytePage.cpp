#include "vnbytstr/ByteStore.h"

#include "src/os/System.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr DWORD kMaxSeek = 0x7FFFFFFF; // the framework's seek takes a signed offset

} // namespace

CBytePage::CBytePage() : m_pData(new (std::nothrow) BYTE[m_dwPageSize]) {
    if (!m_pData)
        throw new CCacheException(CCacheException::kTooLong);
}

CBytePage::~CBytePage() { delete[] m_pData; }

void CBytePage::SetPageNum(DWORD number) {
    if (number != m_dwPageNum)
        m_bMustRead = TRUE;
    m_dwPageNum = number;
}

BYTE* CBytePage::GetData() {
    m_dwLastAccess = vnbytstr::System::Current().GetTickCount();
    return m_pData;
}

void CBytePage::SeekTo(CFile& file, ULONGLONG position) {
    const auto seek = [&file](ULONGLONG offset, UINT from) {
        try {
            return static_cast<DWORD>(file.Seek(static_cast<LONG>(offset), from));
        } catch (CFileException* error) {
            error->Delete();
            throw new CCacheException(CCacheException::kBadSeek);
        }
    };
    DWORD landed;
    if (position <= kMaxSeek) {
        landed = seek(position, CFile::begin);
    } else {
        if (seek(kMaxSeek, CFile::begin) != kMaxSeek)
            throw new CCacheException(CCacheException::kBadSeek);
        landed = seek(position - kMaxSeek, CFile::current);
    }
    if (landed != position)
        throw new CCacheException(CCacheException::kBadSeek);
}

void CBytePage::SwapOut(CFile& file, DWORD count, DWORD shift) {
    if (!m_bMustWrite)
        return;
    if (count == 0)
        count = m_dwPageSize;
    ULONGLONG position = static_cast<ULONGLONG>(m_dwPageNum) * m_dwPageSize;
    if (position >= shift)
        position -= shift;
    else
        count -= std::min(count, shift);
    if (count > 0) {
        SeekTo(file, position);
        try {
            file.Write(m_pData, count);
        } catch (CFileException* error) {
            error->Delete();
            throw new CCacheException(CCacheException::kWriteFailed);
        }
    }
    m_bMustWrite = FALSE;
}

void CBytePage::SwapIn(CFile& file, DWORD number) {
    SetPageNum(number);
    if (!m_bMustRead)
        return;
    const ULONGLONG position = static_cast<ULONGLONG>(number) * m_dwPageSize;
    SeekTo(file, position);
    try {
        m_dwRead = file.Read(m_pData, m_dwPageSize);
        // Only a page at the end of the file may come short, so its length is asked for only then.
        if (m_dwRead < m_dwPageSize) {
            const ULONGLONG length = file.GetLength();
            if (length < position || length - position != m_dwRead)
                throw new CCacheException(CCacheException::kShortRead);
        }
    } catch (CFileException* error) {
        error->Delete();
        throw new CCacheException(CCacheException::kShortRead);
    }
    std::memset(m_pData + m_dwRead, 0, m_dwPageSize - m_dwRead);
    m_bMustRead = FALSE;
    m_bMustWrite = FALSE;
}

// Invariants of an archive:
//  1. m_buffer has m_size bytes, 0 once the file is detached.
//  2. Storing: m_current <= m_size, m_end is 0; the bytes below m_current are not in the file yet.
//  3. Loading: m_current <= m_end <= m_size; the bytes between are the next ones, and the file
//     stands right after them.
#include "vnbytstr/framework/Archive.h"

#include "vnbytstr/framework/Exception.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <utility>

void CArchive::Check() const noexcept {
    assert(m_file == nullptr ? m_size == 0 : m_size > 0);
    assert(IsStoring() ? m_end == 0 && m_current <= m_size : m_current <= m_end && m_end <= m_size);
}

CArchive::CArchive(CFile* file, UINT mode, int bufferSize, void* buffer)
    : m_file(file), m_mode(mode), m_buffer(static_cast<BYTE*>(buffer)) {
    constexpr int kLeastSize = 128;
    if (file == nullptr)
        AfxThrowInvalidArgException();
    if (buffer == nullptr || bufferSize < kLeastSize) {
        bufferSize = std::max(bufferSize, kLeastSize);
        m_own = vnbytstr::detail::WithMemoryException([&] {
            return std::make_unique_for_overwrite<BYTE[]>(static_cast<std::size_t>(bufferSize));
        });
        m_buffer = m_own.get();
    }
    m_size = static_cast<UINT>(bufferSize);
    Check();
}

CArchive::~CArchive() {
    if (m_file == nullptr || m_failed || (m_mode & bNoFlushOnDelete) != 0)
        return;
    try {
        Close();
    } catch (CException* error) {
        error->Delete();
    }
}

void CArchive::Throw(int cause) const {
    AfxThrowArchiveException(cause, m_file != nullptr ? m_file->GetFilePath() : CString());
}

void CArchive::CheckMode(bool loading) const {
    if (loading != IsLoading())
        Throw(loading ? CArchiveException::writeOnly : CArchiveException::readOnly);
    if (m_file == nullptr)
        Throw(CArchiveException::genericException);
}

void CArchive::Abort() noexcept {
    m_file = nullptr;
    m_own.reset();
    m_buffer = nullptr;
    m_size = m_current = m_end = 0;
}

void CArchive::Close() {
    if (m_file == nullptr)
        return;
    Flush();
    Abort();
}

void CArchive::Flush() {
    if (m_file == nullptr)
        return;
    if (IsLoading()) {
        if (m_current < m_end)
            m_file->Seek(-static_cast<LONG>(m_end - m_current), CFile::current);
    } else if (m_current > 0) {
        WriteOut(m_buffer, m_current);
    }
    m_current = m_end = 0;
    Check();
}

// Writes to the file and remembers a failure, after which the destructor is not to write again.
void CArchive::WriteOut(const void* data, UINT count) {
    try {
        m_file->Write(data, count);
    } catch (...) {
        m_failed = true;
        throw;
    }
}

void CArchive::Write(const void* buffer, UINT count) {
    CheckMode(false);
    if (count == 0)
        return;
    if (buffer == nullptr)
        AfxThrowInvalidArgException();
    const auto* in = static_cast<const BYTE*>(buffer);
    const UINT fits = std::min(count, m_size - m_current);
    std::memcpy(m_buffer + m_current, in, fits);
    m_current += fits;
    in += fits;
    count -= fits;
    if (count > 0) {
        Flush();
        // What would fill the buffer again goes past it.
        const UINT straight = count - count % m_size;
        if (straight > 0)
            WriteOut(in, straight);
        m_current = count - straight;
        std::memcpy(m_buffer, in + straight, m_current);
    }
    Check();
}

// Reads the next bufferful; false at the end of the file. The buffer must be used up.
bool CArchive::Fill() {
    m_current = m_end = 0;
    m_end = m_file->Read(m_buffer, m_size);
    return m_end > 0;
}

UINT CArchive::Read(void* buffer, UINT count) {
    CheckMode(true);
    if (count == 0)
        return 0;
    if (buffer == nullptr)
        AfxThrowInvalidArgException();
    auto* out = static_cast<BYTE*>(buffer);
    UINT total = std::min(count, m_end - m_current);
    std::memcpy(out, m_buffer + m_current, total);
    m_current += total;
    const UINT straight = (count - total) - (count - total) % m_size;
    if (straight > 0) {
        const UINT done = m_file->Read(out + total, straight);
        total += done;
        if (done < straight)
            return total;
    }
    if (total < count && Fill()) {
        const UINT rest = std::min(count - total, m_end);
        std::memcpy(out + total, m_buffer, rest);
        m_current = rest;
        total += rest;
    }
    Check();
    return total;
}

void CArchive::ReadAll(void* buffer, UINT count) {
    if (Read(buffer, count) < count)
        Throw(CArchiveException::endOfFile);
}

CArchive& CArchive::operator<<(const CString& text) {
    const auto length = static_cast<DWORD>(text.GetLength());
    if (length < 0xFF) {
        *this << static_cast<BYTE>(length);
    } else if (length < 0xFFFE) {
        *this << BYTE{0xFF} << static_cast<WORD>(length);
    } else {
        *this << BYTE{0xFF} << WORD{0xFFFF} << length;
    }
    Write(static_cast<const char*>(text), length);
    return *this;
}

DWORD CArchive::ReadLength() {
    BYTE small;
    *this >> small;
    if (small < 0xFF)
        return small;
    WORD medium;
    *this >> medium;
    if (medium == 0xFFFE)
        Throw(CArchiveException::badSchema);
    if (medium < 0xFFFE)
        return medium;
    DWORD large;
    *this >> large;
    if (large > INT_MAX)
        Throw(CArchiveException::badIndex);
    return large;
}

CArchive& CArchive::operator>>(CString& text) {
    constexpr DWORD kFirstPiece = 65536;
    const DWORD length = ReadLength();
    CString arrived;
    for (DWORD done = 0; done < length;) {
        const DWORD piece = std::min(length - done, std::max(kFirstPiece, done));
        char* buffer = arrived.GetBufferSetLength(static_cast<int>(done + piece));
        ReadAll(buffer + done, piece);
        done += piece;
    }
    text = std::move(arrived);
    return *this;
}

BOOL CArchive::ReadString(CString& line) {
    CheckMode(true);
    CString arrived;
    while (m_current < m_end || Fill()) {
        const auto* begin = reinterpret_cast<const char*>(m_buffer + m_current);
        const auto* end = reinterpret_cast<const char*>(m_buffer + m_end);
        const char* stop =
            std::find_if(begin, end, [](char ch) { return ch == '\n' || ch == '\r'; });
        arrived += CString(begin, static_cast<int>(stop - begin));
        m_current += static_cast<UINT>(stop - begin);
        if (stop == end)
            continue;
        ++m_current;
        // A line feed that belongs to the carriage return may be the first of the next bufferful.
        if (*stop == '\r' && (m_current < m_end || Fill()) && m_buffer[m_current] == '\n')
            ++m_current;
        line = std::move(arrived);
        return TRUE;
    }
    line = std::move(arrived);
    return !line.IsEmpty();
}

void CArchive::WriteString(const char* text) {
    const CString bytes(text); // a text too long for an archive is too long for a string
    Write(static_cast<const char*>(bytes), static_cast<UINT>(bytes.GetLength()));
}

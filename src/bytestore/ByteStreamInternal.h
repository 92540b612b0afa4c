// Shared by the source files of CByteStream.
#pragma once

#include "src/bytestore/ByteStoreInternal.h"
#include "vnbytstr/ByteStream.h"

/// Empties a destination, and once more unless Keep was called.
class CByteStream::EmptyGuard {
public:
    explicit EmptyGuard(CByteStream& stream) : m_stream(stream) { m_stream.Empty(0); }
    ~EmptyGuard() {
        if (!m_bKept)
            m_stream.Empty(0);
    }
    EmptyGuard(const EmptyGuard&) = delete;
    EmptyGuard& operator=(const EmptyGuard&) = delete;
    void Keep() { m_bKept = true; }

private:
    CByteStream& m_stream;
    bool m_bKept = false;
};

/// Gives the content the length back that it had when the guard was made, unless Keep was called.
class CByteStream::LengthGuard {
public:
    explicit LengthGuard(CByteStream& stream) : m_stream(stream), m_dwLength(stream.GetLength()) {}
    ~LengthGuard() {
        if (m_bKept)
            return;
        if (m_stream.m_pStore)
            m_stream.m_pStore->Truncate(m_dwLength);
        else
            m_stream.m_dwLength = m_dwLength;
    }
    LengthGuard(const LengthGuard&) = delete;
    LengthGuard& operator=(const LengthGuard&) = delete;
    void Keep() { m_bKept = true; }

private:
    CByteStream& m_stream;
    const DWORD m_dwLength;
    bool m_bKept = false;
};

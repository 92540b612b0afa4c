// Shared by the source files of CByteStore.
#pragma once

#include "vnbytstr/ByteStore.h"

/// Gives the store the length back that it had when the guard was made, unless Keep was called.
class CByteStore::LengthGuard {
public:
    explicit LengthGuard(CByteStore& store) : m_store(store), m_dwLength(store.m_dwLength) {}
    ~LengthGuard() {
        if (!m_bKept)
            m_store.Truncate(m_dwLength);
    }
    LengthGuard(const LengthGuard&) = delete;
    LengthGuard& operator=(const LengthGuard&) = delete;
    void Keep() { m_bKept = true; }

private:
    CByteStore& m_store;
    const DWORD m_dwLength;
    bool m_bKept = false;
};

namespace vnbytstr::detail {
/// Most bytes that go through an intermediate buffer at once.
inline constexpr DWORD kChunk = 65536;
} // namespace vnbytstr::detail

// What the store and stream tests share: a system with its own folder and a cache of 16 pages.
#pragma once

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"
#include "vnbytstr/ByteStore.h"
#include "vnbytstr/ByteStream.h"
#include "vnbytstr/framework/Exception.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace vnbytstr::test {

using Bytes = std::vector<BYTE>;

inline constexpr DWORD kPage = CBytePage::m_dwPageSize;

class StoreFixture : public ::testing::Test {
protected:
    StoreFixture() : m_scope(m_system) {
        m_system.SetTemporaryFolder(m_folder.Path());
        m_system.SetEnvironment("VNBYTSTR_PROFILE", m_folder.File("profile.ini"));
        m_system.SetMemoryLoad(100); // the floor: 16 pages
        m_oldLimit = CByteStream::m_dwMaxSizeInMemory;
        CByteStream::m_dwMaxSizeInMemory = 0x40000;
    }
    ~StoreFixture() override {
        CByteStream::m_dwMaxSizeInMemory = m_oldLimit;
        EXPECT_TRUE(m_system.OpenHandles().empty()) << "a file was left open";
    }

    /// Files in the folder, without those that tests made by other means.
    std::size_t FileCount() const { return m_folder.Names().size(); }

    /// Appends page by page while the clock goes on, so that pages leave in the order of their
    /// numbers.
    void AppendPages(CByteStore& store, const Bytes& bytes) {
        for (std::size_t done = 0; done < bytes.size(); done += kPage) {
            m_system.SetTick(++m_tick);
            store.Concat(bytes.data() + done,
                         static_cast<DWORD>(std::min<std::size_t>(kPage, bytes.size() - done)));
        }
    }

    TemporaryFolder m_folder;
    TestSystem m_system;
    ScopedSystem m_scope;
    DWORD m_tick = 1000;

private:
    DWORD m_oldLimit;
};

/// Bytes that differ from page to page and at every shift.
inline Bytes Pattern(std::size_t size, unsigned seed = 1) {
    std::minstd_rand random(seed);
    Bytes bytes(size);
    for (BYTE& byte : bytes)
        byte = static_cast<BYTE>(random() >> 11);
    return bytes;
}

inline std::string AsText(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

template <class Container>
Bytes Content(Container& container) {
    Bytes bytes(container.GetLength());
    if (!bytes.empty())
        container.CopyTo(0, bytes.data(), 0, static_cast<DWORD>(bytes.size()));
    return bytes;
}

template <class Container>
void Append(Container& container, const Bytes& bytes) {
    container.Concat(bytes.data(), static_cast<DWORD>(bytes.size()));
}

/// The cause of the CCacheException that `action` throws; -1 when it throws none, -2 for a
/// CFileException.
template <class Action>
int CauseOf(Action action) {
    try {
        action();
    } catch (CCacheException* error) {
        const int cause = error->m_nCause;
        error->Delete();
        return cause;
    } catch (CFileException* error) {
        error->Delete();
        return -2;
    }
    return -1;
}

} // namespace vnbytstr::test

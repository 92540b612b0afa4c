// CByteStore: the pages in memory and their swap file.

#include "src/bytestore/ByteStoreInternal.h"

#include "src/bytestore/SwapImage.h"
#include "src/bytestore/WriteBehind.h"
#include "vnbytstr/Profile.h"
#include "vnbytstr/TempFileName.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

using vnbytstr::detail::WithMemoryException;

namespace {

constexpr DWORD kPageSize = CBytePage::m_dwPageSize;
constexpr int kMinPages = 16;
constexpr std::size_t kRunPages = vnbytstr::detail::WriteBehind::kMaxPages;

} // namespace

int CByteStore::GetTargetMaxPages() {
    const DWORD load = vnbytstr::System::Current().GetMemoryLoad();
    const DWORD pages =
        WithMemoryException([] { return VNGetProfileDWORD(3, "Options", "MaxCachePages", 64, 0); });
    const DWORD target = pages * (100 - load) / 100;
    return static_cast<int>(std::clamp<DWORD>(target, kMinPages, 0x7FFFFFFF));
}

int CByteStore::TargetPages() const {
    return m_dwPageLimit == 0 ? GetTargetMaxPages()
                              : static_cast<int>(std::min<DWORD>(m_dwPageLimit, 0x7FFFFFFF));
}

// --- lookup --------------------------------------------------------------------------------------

CBytePage* CByteStore::GetPageFromPageNum(DWORD number) {
    EndRun();
    if (CBytePage* page = LoadedPage(number))
        return page;
    GrowPageTable(GetIndexFromPageNum(number) + 1);
    CBytePage* page = nullptr;
    for (int i = 0; m_bReadFailed && i < m_arrPages.GetSize() && !page; ++i) {
        auto* candidate = static_cast<CBytePage*>(m_arrPages[i]);
        if (candidate->GetPageNum() == number)
            page = candidate; // its last reading failed
    }
    if (!page)
        page = RoomForPage() ? AddPage() : SwapOutAPage();
    WithMemoryException([&] { LoadPage(page, number); });
    CheckInvariants();
    return page;
}

void CByteStore::LoadPage(CBytePage* page, DWORD number) {
    const bool failedBefore = std::exchange(m_bReadFailed, true);
    page->SetPageNum(number);
    page->SetMustRead(TRUE);
    page->SetMustWrite(FALSE); // whatever the buffer holds must not reach the file
    const BYTE* pending = m_pPending ? m_pPending->Find(number) : nullptr;
    if (pending) {
        std::memcpy(page->m_pData, pending, kPageSize); // it keeps waiting to be written
        page->SetMustRead(FALSE);
    } else if (IsOnFile(number)) {
        ReadImage();
        page->SwapIn(m_file, number);
        // Fewer bytes than were written: the file has been cut. Other bytes: they have been
        // changed, by a program or by the disk.
        const ULONGLONG position = static_cast<ULONGLONG>(number) * kPageSize;
        if (page->m_dwRead < std::min<ULONGLONG>(m_ullImageEnd - position, kPageSize) ||
            !m_arrOnFile[number].Matches({page->m_pData, page->m_dwRead})) {
            page->SetMustRead(TRUE);
            throw new CCacheException(CCacheException::kShortRead);
        }
    } else {
        std::memset(page->m_pData, 0, kPageSize); // accounted for, but never stored
        page->SetMustRead(FALSE);
        page->SetMustWrite(TRUE);
    }
    m_arrLoaded[number] = page;
    m_bReadFailed = failedBefore;
}

CBytePage* CByteStore::PageForAppend(DWORD number) {
    EndRun();
    for (int i = 0; i < m_arrPages.GetSize(); ++i) {
        auto* page = static_cast<CBytePage*>(m_arrPages[i]);
        if (page->GetPageNum() == number)
            return page; // GetFirstPage of an empty store made it
    }
    return RoomForPage() ? AddPage() : SwapOutAPage();
}

std::span<const BYTE> CByteStore::GetPiece(DWORD index) {
    if (index >= m_dwLength)
        return {};
    if (index < m_dwStart)
        throw new CCacheException(CCacheException::kOutOfRange);
    DWORD number, position;
    GetPageNumFromIndex(index, number, position);
    const BYTE* data = GetPageFromPageNum(number)->GetData();
    return {data + position, std::min(m_dwLength - index, kPageSize - position)};
}

BYTE* CByteStore::GetFirstPage() { return GetPageFromPageNum(0)->GetData(); }

void CByteStore::GrowPageTable(DWORD length) {
    const auto pages = static_cast<std::size_t>((length + (kPageSize - 1ull)) / kPageSize);
    WithMemoryException([&] {
        if (pages > m_arrLoaded.size())
            m_arrLoaded.resize(pages, nullptr);
        // Reserved in advance: noting what has been written must not fail.
        if (pages > m_arrOnFile.capacity())
            m_arrOnFile.reserve(std::max(pages, 2 * m_arrOnFile.capacity()));
    });
}

/// The swap file has (or will have, once what is pending is written) these bytes of the page.
void CByteStore::NoteOnFile(DWORD number, std::span<const BYTE> written) {
    if (number >= m_arrOnFile.size())
        m_arrOnFile.resize(static_cast<std::size_t>(number) + 1);
    m_dwPagesOnFile += m_arrOnFile[number].IsPresent() ? 0 : 1;
    m_arrOnFile[number].SetWritten(written);
    const ULONGLONG position = static_cast<ULONGLONG>(number) * kPageSize;
    m_ullImageEnd = std::max<ULONGLONG>(m_ullImageEnd, position + written.size());
}

void CByteStore::NoteNotOnFile(DWORD number) noexcept {
    m_dwPagesOnFile -= IsOnFile(number) ? 1 : 0;
    if (number < m_arrOnFile.size())
        m_arrOnFile[number].SetAbsent();
}

// --- access times --------------------------------------------------------------------------------

/// Reading the clock takes ten times as long as reading a byte, so a long series of accesses does
/// without. The first ones still read it, which makes scattered accesses exact.
void CByteStore::StampNow(CBytePage* page) {
    page->GetData();
    m_dwRunTick = page->m_dwLastAccess;
}

/// Gives the pages of a run the times they would have had at a steady pace: in their order, after
/// the pages used before the run and before the one used now.
void CByteStore::EndRun() const noexcept {
    const LONGLONG uses = std::exchange(m_llUses, -vnbytstr::detail::kStampsBeforeRun);
    if (uses <= 0)
        return;
    const DWORD passed = vnbytstr::System::Current().GetTickCount() - m_dwRunTick;
    for (int i = 0; i < m_arrPages.GetSize(); ++i) {
        auto* page = static_cast<CBytePage*>(m_arrPages[i]);
        if (page->m_llUse == 0)
            continue;
        const double part = static_cast<double>(page->m_llUse) / static_cast<double>(uses + 1);
        page->m_dwLastAccess = m_dwRunTick + static_cast<DWORD>(passed * part);
        page->m_llUse = 0;
    }
    m_pRunPage = nullptr;
}

// --- pages coming and going ----------------------------------------------------------------------

CBytePage* CByteStore::AddPage() {
    auto page = WithMemoryException([] { return std::make_unique<CBytePage>(); });
    page->SetPageNum(0xFFFFFFFF); // no page's number; the caller sets it
    page->SetMustWrite(FALSE);
    m_arrPages.Add(page.get());
    return page.release();
}

void CByteStore::RemovePage(CBytePage* page) {
    int i = 0;
    while (m_arrPages[i] != page)
        ++i;
    m_arrPages.RemoveAt(i);
    if (LoadedPage(page->GetPageNum()) == page)
        m_arrLoaded[page->GetPageNum()] = nullptr;
    if (m_pRunPage == page)
        m_pRunPage = nullptr;
    delete page;
}

/// Forgets the pages from `number` on, which lie past the end.
void CByteStore::DropPagesFrom(DWORD number) noexcept {
    for (int i = m_arrPages.GetSize(); i-- > 0;) {
        auto* page = static_cast<CBytePage*>(m_arrPages[i]);
        if (page->GetPageNum() >= number)
            RemovePage(page);
    }
    if (m_pPending)
        m_pPending->DropFrom(number);
    for (std::size_t n = number; n < m_arrOnFile.size(); ++n)
        NoteNotOnFile(static_cast<DWORD>(n));
    if (m_arrOnFile.size() > number)
        m_arrOnFile.resize(number);
}

void CByteStore::Truncate(DWORD length) noexcept {
    if (length >= m_dwLength)
        return;
    m_dwLength = length;
    DropPagesFrom(static_cast<DWORD>((length + (kPageSize - 1ull)) / kPageSize));
    m_dwStart = std::min(m_dwStart, m_dwLength);
}

CBytePage* CByteStore::GetPageToDiscard() const {
    EndRun();
    CBytePage* oldest = nullptr;
    for (int i = 0; i < m_arrPages.GetSize(); ++i) {
        auto* page = static_cast<CBytePage*>(m_arrPages[i]);
        if (!oldest || page->GetLastAccessTime() < oldest->GetLastAccessTime())
            oldest = page;
    }
    return oldest;
}

CBytePage* CByteStore::SwapOutAPage() {
    CBytePage* page = GetPageToDiscard();
    const ULONGLONG end = static_cast<ULONGLONG>(page->GetPageNum()) * kPageSize + kPageSize;
    if (m_dwStart <= end)
        WithMemoryException([&] { WriteVictim(page); });
    if (LoadedPage(page->GetPageNum()) == page)
        m_arrLoaded[page->GetPageNum()] = nullptr;
    page->SetMustRead(TRUE);
    page->SetMustWrite(FALSE);
    return page;
}

void CByteStore::SetMaxPages(int count) {
    while (m_arrPages.GetSize() > count)
        RemovePage(SwapOutAPage());
    m_nMaxPages = count;
}

void CByteStore::SetPageLimit(DWORD pages) {
    const DWORD before = std::exchange(m_dwPageLimit, pages);
    try {
        WithMemoryException([&] {
            if (pages != 0 && m_pPending) {
                if (!m_pPending->IsEmpty())
                    WriteImage();
                WritePending();
                m_pPending.reset();
            }
            SetMaxPages(TargetPages());
        });
    } catch (...) {
        m_dwPageLimit = before;
        throw;
    }
    CheckInvariants();
}

bool CByteStore::DropCleanPage() noexcept {
    EndRun();
    CBytePage* oldest = nullptr;
    for (int i = 0; i < m_arrPages.GetSize(); ++i) {
        auto* page = static_cast<CBytePage*>(m_arrPages[i]);
        if (!page->GetMustWrite() && (!oldest || page->m_dwLastAccess < oldest->m_dwLastAccess))
            oldest = page;
    }
    if (oldest)
        RemovePage(oldest);
    return oldest != nullptr;
}

// --- the swap file -------------------------------------------------------------------------------

void CByteStore::WriteVictim(CBytePage* page) {
    if (!page->GetMustWrite())
        return;
    WriteImage();
    const DWORD number = page->GetPageNum();
    if (WriteRun(page))
        return;
    const std::span<const BYTE> bytes(page->m_pData, kPageSize);
    if (m_dwPageLimit != 0) {
        page->SwapOut(m_file, 0, 0);
        NoteOnFile(number, bytes);
        return;
    }
    if (!m_pPending)
        m_pPending = std::make_unique<vnbytstr::detail::WriteBehind>();
    if (m_pPending->IsFull() || (!m_pPending->IsEmpty() &&
                                 number != m_pPending->FirstPage() + m_pPending->Buffers().size()))
        WritePending();
    if (m_pPending->Take(number, page->m_pData))
        page->SetMustWrite(FALSE);
    else
        page->SwapOut(m_file, 0, 0);
    NoteOnFile(number, bytes);
}

/// Writes the pages that wait in m_pPending. After a failure they keep waiting.
void CByteStore::WritePending() {
    if (!m_pPending || m_pPending->IsEmpty())
        return;
    CBytePage::SeekTo(m_file, static_cast<ULONGLONG>(m_pPending->FirstPage()) * kPageSize);
    try {
        m_file.WriteGather(m_pPending->Buffers());
    } catch (CFileException* error) {
        error->Delete();
        throw new CCacheException(CCacheException::kWriteFailed);
    }
    m_pPending->Clear();
}

/// Writes a page together with the unwritten pages that follow it without a gap. False when there
/// are none or the write fails; nothing has changed then, except perhaps bytes in the file that
/// will be written again.
bool CByteStore::WriteRun(CBytePage* first) {
    std::array<std::span<const BYTE>, kRunPages> buffers;
    const DWORD number = first->GetPageNum();
    const DWORD last = m_dwLength == 0 ? 0 : (m_dwLength - 1) / kPageSize;
    std::size_t count = 0;
    // The last page is left out, since it is still growing.
    for (CBytePage* page = first; page && count < kRunPages && page->GetMustWrite();) {
        buffers[count++] = std::span<const BYTE>(page->m_pData, kPageSize);
        const auto next = static_cast<DWORD>(number + count);
        page = next < last ? LoadedPage(next) : nullptr;
    }
    if (count < 2)
        return false;
    WritePending(); // older bytes of the same pages must not come later
    CBytePage::SeekTo(m_file, static_cast<ULONGLONG>(number) * kPageSize);
    try {
        m_file.WriteGather(std::span(buffers).first(count));
    } catch (CFileException* error) {
        error->Delete();
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const auto written = static_cast<DWORD>(number + i);
        LoadedPage(written)->SetMustWrite(FALSE);
        NoteOnFile(written, buffers[i]);
    }
    return true;
}

// CByteStore: life, appending, typed access.
//
// Invariants, checked by CheckInvariants in debug builds after every change:
//  1. m_dwStart <= m_dwLength.
//  2. The pages in m_arrPages, in order of creation, have distinct numbers, and no more of them
//     exist than m_nMaxPages (one new page at least).
//  3. m_arrLoaded[n] is the page in m_arrPages with the number n and m_bMustRead clear, or null
//     when there is none. A page with m_bMustRead set is one whose reading failed; it is read again
//     on the next access.
//  4. m_arrLoaded covers every page below the length.
//  5. m_arrOnFile[n] tells that the swap file holds bytes of page n, or will once m_pPending has
//     been written; m_dwPagesOnFile counts them; there are none while the swap file is closed.
//     m_pPending is written before anything else is.
//  6. A byte of the valid range that was ever stored is in its resident page; when the page is not
//     resident, in m_pPending; when it is not there either, in the swap file.
//  7. A resident page with m_bMustWrite clear equals its place in m_pPending or else in the swap
//     file.
//  8. m_pImage is there while the swap file is open. Of files only those are ever removed, cut or
//     replaced that it knows by their identity: the open swap file, and the one under m_strFileName
//     while that is m_pImage->named. In another process than m_pImage->process (a forked child)
//     nothing is: the child reads what its parent wrote, and writes a file of its own.
//  9. m_arrOnFile has the checksum of every page that the store wrote. A page that comes back
//     different is an error (cause 2), never data.
// 10. m_llUse of a page is not 0 only within a run, and tells the order of its pages; all of them
//     were used after all others. m_pRunPage is then in m_arrLoaded, and else null.

#include "src/bytestore/ByteStoreInternal.h"

#include "src/bytestore/SwapImage.h"
#include "src/bytestore/WriteBehind.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <utility>

using namespace vnbytstr::detail;

namespace {
constexpr int kInitialMaxPages = 64;
constexpr DWORD kPageSize = CBytePage::m_dwPageSize;
} // namespace

CByteStore::CByteStore() noexcept { Init(); }

// A constructor that ends in an exception runs no destructor of its own, so the content is filled
// in by a store that is complete already.
CByteStore::CByteStore(CByteStore& source) : CByteStore() {
    m_nMaxPages = source.m_nMaxPages;
    CopyRetained(*this, source);
}

CByteStore::CByteStore(const BYTE* bytes, DWORD count) : CByteStore() { CopyFrom(0, bytes, count); }

CByteStore::CByteStore(const char* hex) : CByteStore() { CopyFromHex(0, hex); }

CByteStore::CByteStore(CByteStore&& source) noexcept : CByteStore() { Swap(source); }

CByteStore::~CByteStore() { Empty(); }

bool CByteStore::IsOnFile(DWORD number) const {
    return number < m_arrOnFile.size() && m_arrOnFile[number].IsPresent();
}

void CByteStore::Init() noexcept {
    m_bComplete = FALSE;
    m_dwLength = m_dwStart = m_dwCurrent = 0;
    m_nMaxPages = kInitialMaxPages;
    m_bAutoDelete = TRUE;
    m_dwPagesOnFile = 0;
    m_ullImageEnd = 0;
    m_pRunPage = nullptr;
    m_llUses = -kStampsBeforeRun;
    m_dwRunTick = 0;
    m_bReadFailed = false;
}

CByteStore& CByteStore::operator=(CByteStore& source) {
    if (&source != this) {
        CByteStore copy;
        copy.m_nMaxPages = m_nMaxPages;
        CopyRetained(copy, source);
        TakeContent(copy);
    }
    return *this;
}

CByteStore& CByteStore::operator=(const char* hex) {
    CByteStore copy(hex);
    TakeContent(copy);
    return *this;
}

CByteStore& CByteStore::operator=(CByteStore&& source) noexcept {
    if (&source != this) {
        CByteStore old(std::move(*this));
        Swap(source);
    }
    return *this;
}

void CByteStore::Swap(CByteStore& other) noexcept {
    std::swap(m_bComplete, other.m_bComplete);
    std::swap(m_dwLength, other.m_dwLength);
    std::swap(m_dwStart, other.m_dwStart);
    std::swap(m_dwCurrent, other.m_dwCurrent);
    std::swap(m_nMaxPages, other.m_nMaxPages);
    m_arrPages.Swap(other.m_arrPages);
    std::swap(m_strFileName, other.m_strFileName);
    m_file.Swap(other.m_file);
    std::swap(m_bAutoDelete, other.m_bAutoDelete);
    m_arrLoaded.swap(other.m_arrLoaded);
    m_arrOnFile.swap(other.m_arrOnFile);
    std::swap(m_dwPagesOnFile, other.m_dwPagesOnFile);
    m_pPending.swap(other.m_pPending);
    std::swap(m_ullImageEnd, other.m_ullImageEnd);
    m_pImage.swap(other.m_pImage);
    std::swap(m_pRunPage, other.m_pRunPage);
    std::swap(m_llUses, other.m_llUses);
    std::swap(m_dwRunTick, other.m_dwRunTick);
    std::swap(m_bReadFailed, other.m_bReadFailed);
}

/// Drops the content as Empty does and takes that of `result`, a store of its own that is not
/// needed any more. What the user set stays: the auto-delete flag and, while the new content has no
/// swap file, the name of the last one.
void CByteStore::TakeContent(CByteStore& result) noexcept {
    Swap(result);
    SetAutoDelete(result.m_bAutoDelete);
    result.Empty();
    if (m_strFileName.IsEmpty())
        std::swap(m_strFileName, result.m_strFileName);
    CheckInvariants();
}

// --- appending -----------------------------------------------------------------------------------

void CByteStore::Concat(const BYTE* bytes, DWORD count) {
    if (count == 0)
        return;
    CheckLength(static_cast<ULONGLONG>(m_dwLength) + count);
    std::vector<BYTE> copy;
    if (AppendEvicts(count) && HoldsAddress(bytes)) {
        // The source is a page of this store that may leave memory on the way.
        WithMemoryException([&] { copy.assign(bytes, bytes + count); });
        bytes = copy.data();
    }
    LengthGuard guard(*this);
    if (m_dwLength != 0)
        AppendToLastPage(bytes, count);
    AppendToNewPages(bytes, count);
    guard.Keep();
    CheckInvariants();
}

bool CByteStore::AppendEvicts(DWORD count) const {
    const DWORD used = m_dwLength % kPageSize;
    return used == 0 || count > kPageSize - used || !LoadedPage(m_dwLength / kPageSize);
}

bool CByteStore::HoldsAddress(const BYTE* address) const {
    for (int i = 0; i < m_arrPages.GetSize(); ++i) {
        const BYTE* data = static_cast<CBytePage*>(m_arrPages[i])->m_pData;
        if (std::less_equal<>()(data, address) && std::less<>()(address, data + kPageSize))
            return true;
    }
    return false;
}

void CByteStore::AppendToLastPage(const BYTE*& bytes, DWORD& count) {
    DWORD number, position;
    GetPageNumFromIndex(m_dwLength - 1, number, position);
    const DWORD used = position + 1;
    const DWORD taken = std::min(count, kPageSize - used);
    if (taken == 0)
        return;
    CBytePage* page = GetPageFromPageNum(number);
    std::memmove(page->GetData() + used, bytes, taken);
    page->SetMustWrite(TRUE);
    m_dwLength += taken;
    bytes += taken;
    count -= taken;
}

void CByteStore::AppendToNewPages(const BYTE* bytes, DWORD count) {
    while (count > 0) {
        const int target = GetTargetMaxPages();
        if (target != m_nMaxPages)
            SetMaxPages(target);
        const DWORD taken = std::min(count, kPageSize);
        const DWORD number = m_dwLength / kPageSize;
        GrowPageTable(m_dwLength + taken);
        CBytePage* page = PageForAppend(number);
        BYTE* data = page->GetData();
        std::memmove(data, bytes, taken);
        std::memset(data + taken, 0, kPageSize - taken);
        page->SetPageNum(number);
        page->SetMustRead(FALSE);
        page->SetMustWrite(TRUE);
        m_arrLoaded[number] = page;
        m_dwLength += taken;
        bytes += taken;
        count -= taken;
    }
}

void CByteStore::ConcatWord(WORD value) {
    const auto bytes = ToBigEndian<2>(value);
    Concat(bytes.data(), 2);
}

void CByteStore::Concat(CByteStore& source) { CopyFrom(m_dwLength, source, 0, source.m_dwLength); }

void CByteStore::Concat(const char* hex) { CopyFromHex(m_dwLength, hex); }

void CByteStore::Concat(DWORD count) {
    CheckLength(static_cast<ULONGLONG>(m_dwLength) + count);
    GrowPageTable(m_dwLength + count);
    m_dwLength += count;
    m_dwStart += count;
    CheckInvariants();
}

void CByteStore::ExtendTo(DWORD length) {
    static constexpr std::array<BYTE, kChunk> kZeros{};
    if (length <= m_dwLength)
        return;
    LengthGuard guard(*this);
    while (m_dwLength < length)
        Concat(kZeros.data(), std::min(length - m_dwLength, kChunk));
    guard.Keep();
}

// --- typed access --------------------------------------------------------------------------------

BYTE CByteStore::GetByteSlow(DWORD index) {
    if (index >= m_dwLength)
        return 0;
    DWORD number, position;
    GetPageNumFromIndex(index, number, position);
    return GetPageFromPageNum(number)->GetData()[position];
}

WORD CByteStore::GetWord(DWORD index) { return GetTwoBytes(*this, index); }
DWORD CByteStore::GetDWord(DWORD index) { return static_cast<DWORD>(GetWide<4>(*this, index)); }
LONGLONG CByteStore::GetInt48(DWORD index) {
    return static_cast<LONGLONG>(GetWide<6>(*this, index));
}
LONGLONG CByteStore::GetInt64(DWORD index) {
    return static_cast<LONGLONG>(GetWide<8>(*this, index));
}

void CByteStore::SetByte(DWORD index, BYTE value) {
    if (index < m_dwLength) [[likely]] {
        if (CBytePage* page = m_arrLoaded[index / kPageSize]) [[likely]] {
            Touch(page)[index % kPageSize] = value;
            page->SetMustWrite(TRUE);
            return;
        }
    }
    SetWide<1>(*this, index, value);
}

void CByteStore::SetWord(DWORD index, WORD value) { SetWide<2>(*this, index, value); }
void CByteStore::SetDWord(DWORD index, DWORD value) { SetWide<4>(*this, index, value); }
void CByteStore::SetInt48(DWORD index, LONGLONG value) {
    SetWide<6>(*this, index, static_cast<ULONGLONG>(value));
}
void CByteStore::SetInt64(DWORD index, LONGLONG value) {
    SetWide<8>(*this, index, static_cast<ULONGLONG>(value));
}

// --- invariants ----------------------------------------------------------------------------------

#ifndef NDEBUG
void CByteStore::CheckInvariants() const {
    assert(m_dwStart <= m_dwLength);
    assert(m_arrPages.GetSize() <= std::max(m_nMaxPages, 1));
    std::size_t loaded = 0;
    for (int i = 0; i < m_arrPages.GetSize(); ++i) {
        const auto* page = static_cast<CBytePage*>(m_arrPages[i]);
        for (int j = 0; j < i; ++j)
            assert(static_cast<CBytePage*>(m_arrPages[j])->GetPageNum() != page->GetPageNum());
        if (!page->GetMustRead()) {
            assert(LoadedPage(page->GetPageNum()) == page);
            ++loaded;
        }
    }
    // Walking the whole table every time would make debug builds quadratic; it is short for most
    // tests.
    if (m_arrLoaded.size() <= 64) {
        assert(static_cast<std::size_t>(std::count_if(m_arrLoaded.begin(), m_arrLoaded.end(),
                                                      [](const CBytePage* p) { return p; })) ==
               loaded);
        assert(static_cast<std::size_t>(
                   std::count_if(m_arrOnFile.begin(), m_arrOnFile.end(), [](const auto& page) {
                       return page.IsPresent();
                   })) == m_dwPagesOnFile);
    }
    assert(m_arrLoaded.size() >= (m_dwLength + (kPageSize - 1ull)) / kPageSize);
    assert(!m_pRunPage || LoadedPage(m_pRunPage->GetPageNum()) == m_pRunPage);
    assert(m_dwPagesOnFile == 0 || m_file.m_hFile != CFile::hFileNull);
    assert((m_file.m_hFile != CFile::hFileNull) == (m_pImage != nullptr));
}
#endif

// CByteStore: life, appending, typed access.
//
// Invariants. CheckInvariants checks them in debug builds after every change, but for what only the
// content can show (6) or only the file system (8, second sentence on).
//  1. m_dwStart <= m_dwLength.
//  2. The pages in m_arrPages, in order of creation, have distinct numbers, and there are at most
//     m_nMaxPages of them (but always room for one).
//  3. m_arrLoaded[n] is the page in m_arrPages with the number n and m_bMustRead clear, or null
//     when there is no such page. m_bMustRead marks a page whose reading failed; m_bReadFailed is
//     set while there may be one. It is read again on the next access.
//  4. m_arrLoaded covers every page below the length.
//  5. m_arrOnFile[n] tells whether the swap file has bytes of page n, or will have them once
//     m_pPending has been written. m_dwPagesOnFile counts those pages; the count is 0 while the
//     swap file is closed. m_pPending is written before anything else is; it is null while there is
//     a page limit.
//  6. A byte of the valid range that was ever stored is in its resident page; if the page is not
//     resident, in m_pPending; if it is not there either, in the swap file.
//  7. A resident page with m_bMustWrite clear equals its copy in m_pPending or else in the swap
//     file.
//  8. m_pImage exists exactly while the swap file is open. Only files that it knows by identity
//     are ever removed, cut or replaced: the open swap file, and the file under m_strFileName while
//     that is m_pImage->named. In a process other than m_pImage->process (a forked child) no file
//     is: the child reads what its parent wrote, and writes a file of its own.
//  9. m_arrOnFile has the checksum of every page that the store wrote. A page that comes back
//     different is an error (cause 2), never data.
// 10. m_llUse of a page is nonzero only within a run, where it gives the order of use; those pages
//     were all used after the others. m_pRunPage is then in m_arrLoaded; otherwise it is null.
//
// Where a page below the length has its newest bytes:
//
//   state    m_arrLoaded  m_bMustWrite  m_arrOnFile  m_pPending  newest bytes
//   blank    null                       no           no          never stored: zeros when needed
//   dirty    page         set           yes or no    yes or no   in the page
//   clean    page         clear         yes          yes or no   in the page and its copy
//   waiting  null                       yes          yes         in m_pPending
//   on file  null                       yes          no          in the swap file
//   failed   null                       yes          no          in the swap file, not yet readable
//
//   blank   -> dirty    AppendToNewPages, LoadPage
//   dirty   -> clean    FlushImage, BindImage, WriteRun of the page before
//   dirty   -> waiting  SwapOutAPage: WriteVictim hands the buffer to m_pPending
//   dirty   -> on file  SwapOutAPage: WriteVictim writes the page
//   clean   -> dirty    Overwrite, AppendToLastPage, SetByte, ConcatByte, MarkCutPage
//   clean   -> waiting or on file, where its copy is: SwapOutAPage
//   waiting -> on file  WritePending
//   waiting -> clean    LoadPage
//   on file -> clean    LoadPage
//   on file -> failed   LoadPage, when the page cannot be read or its checksum differs
//   failed  -> clean    LoadPage, on the next access
//   A page that leaves memory when all its bytes are below the start is not written. Truncate and
//   Empty forget pages in any state.
//
// What the swap file is (m_pImage):
//
//   none      no file
//   own       made by CreateSwapFile: isGenerated, named == image
//   opened    the file of SetFileName: not isGenerated, named == image, or unknown for a device
//   apart     the name leads to a shifted copy: named != image, the image itself has no name
//   borrowed  in a forked child: the parent's file, open for reading; named unknown
//   nameless  in a forked child: a copy of the parent's file; named unknown
//
//   none            -> own       CreateSwapFile, with the first page that has to leave
//   none            -> opened    OpenImage
//   own, opened     -> apart     PutShifted (Flush and CopyToFile from the cursor on)
//   apart           -> own, opened, as before: PutImageUnderName (the next Flush of everything)
//   all but none    -> borrowed  ReadImage, in a child
//   borrowed        -> nameless  WriteImage
//   any             -> none      CloseImage (Empty, SaveToFile, the destructor)

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

// When a constructor throws, its object's destructor does not run, so the content is filled in
// after a delegated constructor has completed the object.
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
    m_dwPageLimit = 0;
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
        copy.TakeLimits(*this);
        CopyRetained(copy, source);
        TakeContent(copy);
    }
    return *this;
}

CByteStore& CByteStore::operator=(const char* hex) {
    CByteStore copy;
    copy.TakeLimits(*this);
    copy.CopyFromHex(0, hex);
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
    std::swap(m_dwPageLimit, other.m_dwPageLimit);
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

/// Replaces the content by that of `result`, a temporary store. What the user set stays: the
/// auto-delete flag and, while the new content has no swap file, the name of the last one.
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
        const int target = TargetPages();
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
    assert(m_dwStart <= m_dwLength);                                             // 1
    assert(m_arrPages.GetSize() <= std::max(m_nMaxPages, 1));                    // 2
    assert(m_arrLoaded.size() >= (m_dwLength + (kPageSize - 1ull)) / kPageSize); // 4
    CheckPages();
    CheckPagesOnFile();
    assert((m_file.m_hFile != CFile::hFileNull) == (m_pImage != nullptr)); // 8
    if (m_pImage) {
        assert(!m_pImage->isBorrowed || !m_pImage->named.IsKnown());
        assert(m_pImage->shifted == vnbytstr::kNoFile || m_pImage->named != m_pImage->image);
    }
    assert(!m_pRunPage || (m_llUses > 0 && LoadedPage(m_pRunPage->GetPageNum()) == m_pRunPage));
}

void CByteStore::CheckPages() const {
    std::ptrdiff_t loaded = 0;
    for (int i = 0; i < m_arrPages.GetSize(); ++i) {
        const auto* page = static_cast<CBytePage*>(m_arrPages[i]);
        for (int j = 0; j < i; ++j) // 2
            assert(static_cast<CBytePage*>(m_arrPages[j])->GetPageNum() != page->GetPageNum());
        if (page->GetMustRead()) { // 3
            assert(m_bReadFailed && LoadedPage(page->GetPageNum()) != page);
        } else {
            assert(LoadedPage(page->GetPageNum()) == page);
            assert(page->GetMustWrite() || IsOnFile(page->GetPageNum())); // 7
            ++loaded;
        }
        assert(page->m_llUse == 0 || page->m_llUse <= m_llUses); // 10
    }
    // Walking the whole table every time would make debug builds quadratic; most tests' are short.
    if (m_arrLoaded.size() <= 64)
        assert(std::count_if(m_arrLoaded.begin(), m_arrLoaded.end(),
                             [](const CBytePage* page) { return page; }) == loaded);
}

void CByteStore::CheckPagesOnFile() const {
    assert(m_dwPagesOnFile == 0 || m_file.m_hFile != CFile::hFileNull); // 5
    assert(m_dwPageLimit == 0 || !m_pPending);
    if (m_arrOnFile.size() <= 64)
        assert(std::count_if(m_arrOnFile.begin(), m_arrOnFile.end(), [](const auto& page) {
                   return page.IsPresent();
               }) == static_cast<std::ptrdiff_t>(m_dwPagesOnFile));
    const std::size_t waiting = m_pPending ? m_pPending->Buffers().size() : 0;
    for (std::size_t i = 0; i < waiting; ++i)
        assert(IsOnFile(static_cast<DWORD>(m_pPending->FirstPage() + i)));
    // 7 and 9: a page now and then, each in its turn.
    static thread_local unsigned turn = 0;
    if (m_arrPages.GetSize() == 0 || ++turn % 16 != 0)
        return;
    const auto chosen = static_cast<int>(turn / 16 % static_cast<unsigned>(m_arrPages.GetSize()));
    const auto* page = static_cast<CBytePage*>(m_arrPages[chosen]);
    if (!page->GetMustRead() && !page->GetMustWrite())
        assert(m_arrOnFile[page->GetPageNum()].Matches({page->m_pData, kPageSize}));
}
#endif

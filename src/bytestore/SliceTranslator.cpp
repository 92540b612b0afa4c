// CByteStore and CByteStream: translation between coded character sets.

#include "src/bytestore/SliceTranslator.h"

#include "src/bytestore/ByteStreamInternal.h"

#include <algorithm>
#include <cstring>

using vnbytstr::detail::BufferTaker;
using vnbytstr::detail::SliceTranslator;

namespace {

/// What goes into *outLength, and whether the text has fitted.
int Deliver(ULONGLONG total, DWORD* outLength) {
    const DWORD room = *outLength;
    *outLength = static_cast<DWORD>(std::min<ULONGLONG>(total, 0xFFFFFFFF));
    return total <= room ? 1 : 0;
}

int Fail(DWORD* outLength) {
    *outLength = 0;
    return 0;
}

void TextFrom(const CByteStream& bytes, CString& text) {
    const DWORD length = bytes.GetLength();
    if (length > 0x7FFFFFFE)
        AfxThrowMemoryException();
    auto* buffer = reinterpret_cast<BYTE*>(text.GetBufferSetLength(static_cast<int>(length)));
    if (length > 0)
        bytes.CopyTo(0, buffer, length, length);
    text.ReleaseBuffer(static_cast<int>(length));
}

} // namespace

void BufferTaker::operator()(const BYTE* bytes, DWORD count) {
    if (m_total < m_room)
        std::memcpy(m_out + m_total, bytes,
                    static_cast<std::size_t>(std::min<ULONGLONG>(count, m_room - m_total)));
    m_total += count;
}

// --- store ---------------------------------------------------------------------------------------

/// Passes `count` bytes from `index` on through `translator`, never across a page at once.
template <class Take>
bool CByteStore::TranslateRange(SliceTranslator& translator, DWORD index, DWORD count, Take take) {
    if (count > 0 && index < m_dwStart)
        throw new CCacheException(CCacheException::kOutOfRange);
    while (count > 0) {
        DWORD number, position;
        GetPageNumFromIndex(index, number, position);
        const DWORD taken =
            std::min({count, CBytePage::m_dwPageSize - position, SliceTranslator::kSlice});
        // `take` may use this store's pages, but only after the slice has been read.
        const BYTE* slice = GetPageFromPageNum(number)->GetData() + position;
        if (!translator.Pass(slice, taken, false, take))
            return false;
        index += taken;
        count -= taken;
    }
    return translator.Pass(nullptr, 0, true, take);
}

int CByteStore::TranslateCCSID(WORD from, WORD to, CByteStore& destination,
                               STranslationReport* report) {
    if (&destination == this) {
        CByteStore translated;
        translated.m_nMaxPages = m_nMaxPages;
        if (!TranslateCCSID(from, to, translated, report))
            return 0;
        TakeContent(translated);
        return 1;
    }
    EmptyGuard guard(destination);
    SliceTranslator translator(from, to);
    if (!translator.IsValid())
        return 0;
    const bool done =
        TranslateRange(translator, m_dwStart, m_dwLength - m_dwStart,
                       [&](const BYTE* bytes, DWORD count) { destination.Concat(bytes, count); });
    translator.Report(report);
    if (!done)
        return 0;
    guard.Keep();
    return 1;
}

int CByteStore::TranslateCCSID(DWORD index, DWORD count, BYTE* out, DWORD* outLength, WORD from,
                               WORD to, STranslationReport* report) {
    if (index > m_dwLength)
        throw new CCacheException(CCacheException::kOutOfRange);
    if (count == 0 || count > m_dwLength - index)
        count = m_dwLength - index;
    SliceTranslator translator(from, to);
    BufferTaker taker(out, *outLength);
    const bool done = translator.IsValid() &&
                      TranslateRange(translator, index, count,
                                     [&](const BYTE* bytes, DWORD size) { taker(bytes, size); });
    if (translator.IsValid())
        translator.Report(report);
    return done ? Deliver(taker.Total(), outLength) : Fail(outLength);
}

int CByteStore::TranslateCCSID(BYTE* out, DWORD* outLength, WORD from, WORD to,
                               STranslationReport* report) {
    return TranslateCCSID(m_dwStart, 0, out, outLength, from, to, report);
}

int CByteStore::TranslateCCSID(WORD from, CString& text, STranslationReport* report) {
    SliceTranslator translator(from, GetNativeCCSID());
    if (!translator.IsValid())
        return 0;
    CByteStream bytes;
    const bool done =
        TranslateRange(translator, m_dwStart, m_dwLength - m_dwStart,
                       [&](const BYTE* piece, DWORD count) { bytes.Concat(piece, count); });
    translator.Report(report);
    if (done)
        TextFrom(bytes, text);
    return done ? 1 : 0;
}

// --- stream --------------------------------------------------------------------------------------

template <class Take>
bool CByteStream::TranslateRange(SliceTranslator& translator, DWORD index, DWORD count,
                                 Take take) const {
    if (m_pStore)
        return m_pStore->TranslateRange(translator, index, count, take);
    CheckRange(index, count);
    return translator.Pass(m_pBuffer ? m_pBuffer + index : nullptr, count, true, take);
}

int CByteStream::TranslateCCSID(WORD from, WORD to, CByteStream& destination,
                                STranslationReport* report) const {
    if (&destination == this)
        return destination.TranslateCCSID(from, to, report);
    destination.CheckWritable();
    EmptyGuard guard(destination);
    SliceTranslator translator(from, to);
    if (!translator.IsValid())
        return 0;
    const bool done =
        TranslateRange(translator, GetStart(), GetLength() - GetStart(),
                       [&](const BYTE* bytes, DWORD count) { destination.Concat(bytes, count); });
    translator.Report(report);
    if (!done)
        return 0;
    guard.Keep();
    return 1;
}

int CByteStream::TranslateCCSID(WORD from, WORD to, STranslationReport* report) {
    CheckWritable();
    CByteStream translated;
    translated.LieAs(*this);
    if (!static_cast<const CByteStream&>(*this).TranslateCCSID(from, to, translated, report))
        return 0;
    TakeContent(translated);
    return 1;
}

int CByteStream::TranslateCCSID(DWORD index, DWORD count, BYTE* out, DWORD* outLength, WORD from,
                                WORD to, STranslationReport* report) const {
    if (m_pStore)
        return m_pStore->TranslateCCSID(index, count, out, outLength, from, to, report);
    count = CheckCopy(index, count);
    SliceTranslator translator(from, to);
    BufferTaker taker(out, *outLength);
    const bool done = translator.IsValid() &&
                      TranslateRange(translator, index, count,
                                     [&](const BYTE* bytes, DWORD size) { taker(bytes, size); });
    if (translator.IsValid())
        translator.Report(report);
    return done ? Deliver(taker.Total(), outLength) : Fail(outLength);
}

int CByteStream::TranslateCCSID(BYTE* out, DWORD* outLength, WORD from, WORD to,
                                STranslationReport* report) const {
    return TranslateCCSID(GetStart(), 0, out, outLength, from, to, report);
}

int CByteStream::TranslateCCSID(WORD from, CString& text, STranslationReport* report) const {
    CByteStream translated;
    if (!TranslateCCSID(from, GetNativeCCSID(), translated, report))
        return 0;
    TextFrom(translated, text);
    return 1;
}

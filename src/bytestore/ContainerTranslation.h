// CByteStore and CByteStream: translation between coded character sets. The templates take either
// of them and know only what is public.
#pragma once

#include "src/bytestore/Containers.h"
#include "src/bytestore/SliceTranslator.h"
#include "vnbytstr/ByteStream.h"

namespace vnbytstr::detail {

/// Passes `count` bytes from `index` on through a translator, and ends the text. False when that
/// fails.
template <class Container, class Take>
bool TranslateRange(Container& bytes, SliceTranslator& translator, DWORD index, DWORD count,
                    Take take) {
    return ForEachPiece(bytes, index, count,
                        [&](std::span<const BYTE> piece) {
                            for (; !piece.empty();) {
                                const auto slice = piece.first(
                                    std::min<std::size_t>(piece.size(), SliceTranslator::kSlice));
                                if (!translator.Pass(slice.data(), static_cast<DWORD>(slice.size()),
                                                     false, take))
                                    return false;
                                piece = piece.subspan(slice.size());
                            }
                            return true;
                        }) &&
           translator.Pass(nullptr, 0, true, take);
}

/// Gives the translation of all that the container holds to `take`, piece by piece. False when the
/// pair cannot be translated, or the options stopped it.
template <class Container, class Take>
bool TranslateAll(Container& bytes, WORD from, WORD to, STranslationReport* report, UINT options,
                  Take take) {
    SliceTranslator translator(from, to, options);
    if (!translator.IsValid())
        return false;
    DWORD start, end;
    bytes.GetRange(start, end);
    const bool done = TranslateRange(bytes, translator, start, end - start, take);
    translator.Report(report);
    return done;
}

/// Replaces the content of another container by the translation.
template <class Container>
int TranslateTo(Container& bytes, WORD from, WORD to, std::remove_const_t<Container>& destination,
                STranslationReport* report, UINT options) {
    EmptyGuard guard(destination);
    if (!TranslateAll(bytes, from, to, report, options,
                      [&](const BYTE* piece, DWORD count) { destination.Concat(piece, count); }))
        return 0;
    guard.Keep();
    return 1;
}

/// Translates a range into a buffer of `*outLength` bytes, and sets that to the bytes written, or
/// needed.
template <class Container>
int TranslateInto(Container& bytes, DWORD index, DWORD count, BYTE* out, DWORD* outLength,
                  WORD from, WORD to, STranslationReport* report, UINT options) {
    count = CheckedCount(bytes.GetLength(), index, count);
    SliceTranslator translator(from, to, options);
    bool done = translator.IsValid();
    const DWORD room = std::exchange(*outLength, 0);
    ULONGLONG total = 0;
    if (done) {
        done = TranslateRange(bytes, translator, index, count, [&](const BYTE* piece, DWORD size) {
            if (total < room)
                std::copy_n(piece, std::min<ULONGLONG>(size, room - total), out + total);
            total += size;
        });
        translator.Report(report);
    }
    if (!done)
        return 0;
    *outLength = static_cast<DWORD>(std::min<ULONGLONG>(total, 0xFFFFFFFF));
    return total <= room ? 1 : 0;
}

/// Translates into a text of the native coded character set; the text stays when that fails.
template <class Container>
int TranslateToText(Container& bytes, WORD from, CString& text, STranslationReport* report,
                    UINT options) {
    CByteStream translated;
    if (!TranslateAll(bytes, from, GetNativeCCSID(), report, options,
                      [&](const BYTE* piece, DWORD count) { translated.Concat(piece, count); }))
        return 0;
    const DWORD length = translated.GetLength();
    if (length > 0x7FFFFFFE)
        AfxThrowMemoryException();
    CString result; // the caller's stays as it is when a page cannot be read
    auto* buffer = reinterpret_cast<BYTE*>(result.GetBufferSetLength(static_cast<int>(length)));
    if (length > 0)
        translated.CopyTo(0, buffer, length, length);
    result.ReleaseBuffer(static_cast<int>(length));
    text = std::move(result);
    return 1;
}

} // namespace vnbytstr::detail

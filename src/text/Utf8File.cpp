#include "vnbytstr/TextEncoding.h"

#include "src/os/FileReplacement.h"
#include "src/text/AnsiToUtf8.h"
#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/File.h"

#include <algorithm>
#include <memory>
#include <new>
#include <span>

namespace {

using vnbytstr::FileReplacement;
using vnbytstr::detail::AnsiToUtf8;

constexpr DWORD kSlice = 256 * 1024; // in and out stay in the cache together

/// Reads `length` bytes from the beginning of `file` and hands them to `put` as UTF-8. A file that
/// ends before that, or is not in the ANSI code page, throws CUserException.
template <class Put>
void ConvertFile(CFile& file, DWORD length, const Put& put) {
    AnsiToUtf8 converter;
    const auto slice = std::make_unique_for_overwrite<BYTE[]>(std::min(length, kSlice));
    file.SeekToBegin();
    for (DWORD done = 0; done < length;) {
        const DWORD wanted = std::min(length - done, kSlice);
        if (file.Read(slice.get(), wanted) < wanted)
            AfxThrowUserException();
        done += wanted;
        put(converter.Convert({slice.get(), wanted}, done == length));
        if (converter.IsForeign())
            AfxThrowUserException();
    }
}

void Write(CFile& file, std::span<const BYTE> bytes) {
    constexpr std::size_t kMaxWrite = 1u << 30;
    while (!bytes.empty()) {
        const std::span<const BYTE> piece = bytes.first(std::min(bytes.size(), kMaxWrite));
        file.Write(piece.data(), static_cast<UINT>(piece.size()));
        bytes = bytes.subspan(piece.size());
    }
}

bool IsReadOnly(const CFile& file) {
    CFileStatus status;
    return file.GetStatus(status) && (status.m_attribute & CFile::readOnly) != 0;
}

} // namespace

int ConvertToUTF8(const char* path) {
    try {
        CFile file;
        // A privileged user may open a read-only file.
        if (!file.Open(path, CFile::modeReadWrite) || IsReadOnly(file))
            return 0;
        const DWORD length = file.GetLength();
        if (length == 0)
            return 1;
        FileReplacement replacement;
        if (replacement.Open(path, true) != 0)
            return 0;
        CFile target(replacement.Handle());
        ConvertFile(file, length, [&](std::span<const BYTE> piece) { Write(target, piece); });
        return replacement.Commit() == 0 ? 1 : 0;
    } catch (CException* error) {
        error->Delete();
    } catch (const std::bad_alloc&) {
        // The file is unchanged.
    }
    return 0;
}

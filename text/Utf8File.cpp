#include "vnbytstr/TextEncoding.h"

#include "platform/framework/Exception.h"
#include "platform/framework/File.h"
#include "platform/system/FileReplacement.h"
#include "text/AnsiToUtf8Internal.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>
#include <span>
#include <vector>

namespace {

using vnbytstr::FileReplacement;
using vnbytstr::detail::AnsiToUtf8;

constexpr DWORD kSlice = 256 * 1024; // in and out stay in the cache together

/// Reads `length` bytes from the beginning of `file` and hands them to `put` as UTF-8. A file that
/// ends before that throws CUserException.
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
    }
}

void Write(CFile& file, std::span<const BYTE> bytes) {
    constexpr std::size_t kMost = 1u << 30;
    while (!bytes.empty()) {
        const std::span<const BYTE> piece = bytes.first(std::min(bytes.size(), kMost));
        file.Write(piece.data(), static_cast<UINT>(piece.size()));
        bytes = bytes.subspan(piece.size());
    }
}

void WriteAt(CFile& file, DWORD position, std::span<const BYTE> bytes) {
    file.SeekToBegin();
    for (DWORD left = position; left > 0;) {
        const DWORD step = std::min<DWORD>(left, 0x7FFFFFFF);
        file.Seek(static_cast<LONG>(step), CFile::current);
        left -= step;
    }
    Write(file, bytes);
}

/// What the file grows by comes first: that alone needs room on the disk. When it fails the rest is
/// still untouched; when the rest fails, which only a broken disk does, it is written back.
void RewriteInPlace(CFile& file, DWORD length) {
    std::vector<BYTE> before(length), after;
    file.SeekToBegin();
    if (file.Read(before.data(), length) < length)
        AfxThrowUserException();
    ConvertFile(file, length, [&](std::span<const BYTE> piece) {
        after.insert(after.end(), piece.begin(), piece.end());
    });
    const std::span<const BYTE> text(after);
    const std::size_t head = std::min<std::size_t>(after.size(), length);
    bool isHeadTouched = false;
    try {
        WriteAt(file, length, text.subspan(head));
        file.Flush();
        isHeadTouched = true;
        WriteAt(file, 0, text.first(head));
        if (after.size() < length)
            file.SetLength(static_cast<DWORD>(after.size()));
        file.Flush();
    } catch (CException* error) {
        try {
            if (isHeadTouched)
                WriteAt(file, 0, before);
            file.SetLength(length);
        } catch (CException* second) {
            second->Delete();
        }
        throw error;
    }
}

/// Writes the UTF-8 text beside the file. False when the folder takes no new file.
bool RewriteBeside(CFile& file, DWORD length, const char* path) {
    FileReplacement replacement;
    const int error = replacement.Open(path, false);
    if (error == EACCES || error == EPERM || error == EROFS || error == ENAMETOOLONG)
        return false;
    if (error != 0)
        CFileException::ThrowOsError(error, path);
    CFile beside(replacement.Handle());
    ConvertFile(file, length, [&](std::span<const BYTE> piece) { Write(beside, piece); });
    file.Close();
    if (const int failure = replacement.Commit())
        CFileException::ThrowOsError(failure, path);
    return true;
}

bool IsReadOnly(const CFile& file) {
    CFileStatus status;
    return file.GetStatus(status) && (status.m_attribute & CFile::readOnly) != 0;
}

} // namespace

int ConvertToUTF8(const char* path) {
    try {
        CFile file;
        // A privileged user may open what is read-only.
        if (!file.Open(path, CFile::modeReadWrite) || IsReadOnly(file))
            return 0;
        const DWORD length = file.GetLength();
        if (length > 0 && !RewriteBeside(file, length, path))
            RewriteInPlace(file, length);
        return 1;
    } catch (CException* error) {
        error->Delete();
    } catch (const std::bad_alloc&) {
        // The file is as it was.
    }
    return 0;
}

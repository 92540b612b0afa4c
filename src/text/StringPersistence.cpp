#include "vnbytstr/StringPersistence.h"

#include "src/charset/CodePage.h"
#include "vnbytstr/TextEncoding.h"
#include "vnbytstr/framework/Exception.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using vnbytstr::CodePage;
using vnbytstr::detail::WithMemoryException;

namespace {

constexpr unsigned char kMark[] = {0xFF, 0xFE};

struct Free {
    void operator()(char* block) const noexcept { std::free(block); }
};
using MallocBlock = std::unique_ptr<char, Free>;

/// Exchanges the bytes of every unit where the machine is big-endian.
void SwapToLittleEndian(std::u16string& units) noexcept {
    if constexpr (std::endian::native == std::endian::big) {
        for (char16_t& unit : units)
            unit = static_cast<char16_t>(unit << 8 | unit >> 8);
    }
}

/// One unit for each byte of `text`: its UTF-16 text, then zeros.
std::u16string UnitsToWrite(const CString& text) {
    const auto length = static_cast<std::size_t>(text.GetLength());
    return WithMemoryException([&] {
        std::u16string units = CodePage::Ansi().ToWide({text, length});
        units.resize(length); // no byte gives more than one unit
        SwapToLittleEndian(units);
        return units;
    });
}

/// The text of `size` bytes of UTF-16 little-endian up to the first zero unit, in the ANSI code
/// page. It has at most twice as many bytes.
std::string ToAnsi(const char* bytes, std::size_t size) {
    return WithMemoryException([&] {
        std::u16string units((size + 1) / 2, u'\0');
        std::memcpy(units.data(), bytes, size);
        SwapToLittleEndian(units);
        units.resize(std::min(units.find(u'\0'), units.size()));
        return CodePage::Ansi().FromWide(units);
    });
}

CFile& FileOf(const CArchive& archive) {
    if (archive.GetFile() == nullptr)
        AfxThrowArchiveException(CArchiveException::genericException);
    return *archive.GetFile();
}

/// `count` bytes of the archive.
std::vector<char> ReadBytes(CArchive& archive, DWORD count) {
    constexpr DWORD kFirstPiece = 65536;
    std::vector<char> bytes;
    for (DWORD done = 0; done < count;) {
        const DWORD piece = std::min(count - done, std::max(kFirstPiece, done));
        WithMemoryException([&] { bytes.resize(std::size_t{done} + piece); });
        if (archive.Read(bytes.data() + done, piece) < piece)
            AfxThrowArchiveException(CArchiveException::endOfFile, FileOf(archive).GetFilePath());
        done += piece;
    }
    return bytes;
}

/// Removes the mark at the beginning, if there is one.
bool CutMark(char* block, DWORD size) {
    return CutBOM(reinterpret_cast<unsigned short*>(block), size) != 0;
}

} // namespace

void WriteStringToFile(CFile& file, const CString& text) {
    const std::u16string units = UnitsToWrite(text);
    file.Write(kMark, sizeof kMark);
    if (!units.empty())
        file.Write(units.data(), static_cast<UINT>(2 * units.size()));
}

DWORD ReadStringFromFile(CFile& file, char*& text, bool& converted, bool& hadMark) {
    text = nullptr;
    converted = hadMark = false;
    const DWORD length = file.GetLength();
    const MallocBlock::pointer memory =
        static_cast<char*>(std::calloc(2 * std::size_t{length} + 4, 1));
    if (memory == nullptr)
        AfxThrowMemoryException();
    MallocBlock block(memory);
    if (file.Read(block.get(), length) < length)
        AfxThrowArchiveException(CArchiveException::endOfFile, file.GetFilePath());
    int bigEndian = 0;
    const auto* bytes = reinterpret_cast<const unsigned char*>(block.get());
    if (IsUnicodeText(bytes, length, bigEndian) != 0) {
        hadMark = CutMark(block.get(), length);
        const std::string ansi = ToAnsi(block.get(), length);
        std::memcpy(block.get(), ansi.c_str(), ansi.size() + 1);
        converted = true;
    }
    text = block.release();
    return length;
}

void WriteStringToArchive(CArchive& archive, const CString& text) {
    WriteStringToFile(FileOf(archive), text);
}

void ReadStringFromArchive(CArchive& archive, char*& text, bool& converted, bool& hadMark) {
    text = nullptr;
    converted = hadMark = false;
    ReadStringFromFile(FileOf(archive), text, converted, hadMark);
}

void WriteStringWithLengthToArchive(CArchive& archive, const CString& text) {
    if (text.GetLength() > INT_MAX / 2) // the count of bytes is read as a signed number
        AfxThrowArchiveException(CArchiveException::badIndex, FileOf(archive).GetFilePath());
    const std::u16string units = UnitsToWrite(text);
    const auto count = static_cast<DWORD>(2 * units.size());
    archive << count;
    archive.Write(units.data(), count);
}

void ReadStringWithLengthFromArchive(CArchive& archive, CString& text) {
    DWORD count = 0;
    archive >> count;
    if (static_cast<LONG>(count) <= 0) {
        text.Empty();
        return;
    }
    std::vector<char> bytes = ReadBytes(archive, count);
    CutMark(bytes.data(), count);
    const std::string ansi = ToAnsi(bytes.data(), count);
    if (ansi.size() > INT_MAX)
        AfxThrowMemoryException();
    text = CString(ansi.data(), static_cast<int>(ansi.size()));
}

// Strings in files and archives: exact bytes, round trips in every page, bad input.
#include "vnbytstr/StringPersistence.h"

#include "src/charset/CodePage.h"
#include "tests/support/Text.h"
#include "vnbytstr/framework/MemFile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

namespace {

using namespace std::string_literals;
using namespace vnbytstr::test;
using vnbytstr::CodePage;
using vnbytstr::ScopedCodePage;

struct ReadBack {
    std::string text;
    DWORD length = 0;
    bool converted = false, hadMark = false;
};

ReadBack ReadFile(const std::string& bytes) {
    CMemFile file;
    Fill(file, bytes);
    ReadBack result;
    char* text = nullptr;
    result.length = ReadStringFromFile(file, text, result.converted, result.hadMark);
    result.text = text;
    std::free(text);
    return result;
}

std::string InFile(const CString& text) {
    CMemFile file;
    WriteStringToFile(file, text);
    return Content(file);
}

std::string InArchive(const CString& text) {
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    WriteStringWithLengthToArchive(archive, text);
    archive.Close();
    return Content(file);
}

/// The string in an archive of these bytes; the cause of the exception in `cause`.
CString FromArchive(const std::string& bytes, int& cause) {
    CMemFile file;
    Fill(file, bytes);
    CArchive archive(&file, CArchive::load);
    CString text("before");
    cause = std::max(
        0, CauseOf<CArchiveException>([&] { ReadStringWithLengthFromArchive(archive, text); }));
    archive.Abort();
    return text;
}

} // namespace

TEST(StringPersistence, ExactBytes) {
    const ScopedCodePage scope(932);
    EXPECT_EQ(InFile(""), "\xFF\xFE"s);
    EXPECT_EQ(InFile("ABC"), "\xFF\xFE\x41\0\x42\0\x43\0"s);
    EXPECT_EQ(InFile("\x82\xA0"), "\xFF\xFE\x42\x30\0\0"s); // 2 x 2 bytes, one unit
    EXPECT_EQ(InFile("a\x82"), "\xFF\xFE\x61\0\xFD\xFF"s);  // a lone lead byte
    EXPECT_EQ(InFile(CString("a\0b", 3)), "\xFF\xFE\x61\0\0\0\x62\0"s);
    EXPECT_EQ(InArchive(""), "\0\0\0\0"s);
    EXPECT_EQ(InArchive("ABC"), "\x06\0\0\0\x41\0\x42\0\x43\0"s);
    EXPECT_EQ(InArchive("\x82\xA0Z"), "\x06\0\0\0\x42\x30\x5A\0\0\0"s);
    const ScopedCodePage utf8(65001);
    EXPECT_EQ(InFile("\xF0\x9F\x98\x80"), "\xFF\xFE\x3D\xD8\x00\xDE\0\0\0\0"s);
}

TEST(StringPersistence, RoundTripsInEveryPage) {
    const char16_t* const kinds = u"az \u00E9\u20AC\u0431\u05D0\u0628\u3042\u4E00\uAC00\uFF71";
    for (const UINT page : {1252u, 932u, 936u, 949u, 950u, 1255u, 1256u, 65001u, 54936u}) {
        const ScopedCodePage scope(page);
        std::string text;
        for (int i = 0; i < 5000; ++i) {
            const std::u16string wide(1, kinds[i * 7 % 12]);
            const std::string narrow = CodePage::Ansi().FromWide(wide);
            text += CodePage::Ansi().ToWide(narrow) == wide ? narrow : "";
        }
        ASSERT_GT(text.size(), 1000u);
        const ReadBack read = ReadFile(InFile(StringOf(text)));
        EXPECT_EQ(read.text, text) << page;
        EXPECT_TRUE(read.converted && read.hadMark);
        EXPECT_EQ(read.length, 2 + 2 * text.size());
        int cause = 0;
        EXPECT_EQ(BytesOf(FromArchive(InArchive(StringOf(text)), cause)), text) << page;
    }
}

TEST(StringPersistence, WhatReadersTakeForUnicode) {
    const ScopedCodePage scope(1252);
    struct Case {
        std::string bytes, text;
        bool converted, hadMark;
    };
    const Case cases[] = {
        {"ABCDE", "ABCDE", false, false},
        {"", "", false, false},
        {"\xFF\xFE"s, "", true, true},
        {"\xFF\xFE\x41\0\x42"s, "AB", true, true},          // an odd byte at the end
        {"\x41\0\x42\0"s, "AB", true, false},               // by the statistic
        {"\xFE\xFF\0\x41"s, "??", true, false},             // a big-endian mark, read as two units
        {"\xEF\xBB\xBF\x41"s, "??", true, false},           // UTF-8's mark, read as two units
        {"\xFF\xFE\x41\0\0\0\x42\0"s, "A", true, true},     // up to the first NUL
        {"\xFF\xFE\x3D\xD8\x41\0"s, "?A", true, true},      // an unpaired surrogate
        {"\xFF\xFE\xAC\x20\x42\x30"s, "\x80?", true, true}, // a character the page lacks
    };
    for (const Case& one : cases) {
        const ReadBack read = ReadFile(one.bytes);
        EXPECT_EQ(read.length, one.bytes.size());
        EXPECT_EQ(read.converted, one.converted) << testing::PrintToString(one.bytes);
        EXPECT_EQ(read.hadMark, one.hadMark) << testing::PrintToString(one.bytes);
        EXPECT_EQ(read.text, one.text) << testing::PrintToString(one.bytes);
    }
    // A page whose text is longer than its UTF-16 form keeps all of it.
    const ScopedCodePage utf8(65001);
    const std::string three = "\xE3\x81\x82\xE3\x81\x84\xE3\x81\x86";
    EXPECT_EQ(ReadFile("\xFF\xFE\x42\x30\x44\x30\x46\x30"s).text, three);
}

TEST(StringPersistence, ShortAndBrokenFiles) {
    CMemFile file;
    Fill(file, "\xFF\xFE\x41\0"s);
    file.Seek(2, CFile::begin); // fewer bytes than the file has
    char* text = file.GetLength() > 0 ? reinterpret_cast<char*>(&file) : nullptr;
    bool converted = true, hadMark = true;
    EXPECT_EQ(
        CauseOf<CArchiveException>([&] { ReadStringFromFile(file, text, converted, hadMark); }),
        CArchiveException::endOfFile);
    EXPECT_EQ(text, nullptr);
    EXPECT_FALSE(converted || hadMark);
}

TEST(StringPersistence, Archives) {
    const ScopedCodePage scope(1252);
    const auto from = [](const std::string& bytes, const std::string& expected,
                         int wantedCause = 0) {
        int cause = 0;
        EXPECT_EQ(BytesOf(FromArchive(bytes, cause)), expected) << testing::PrintToString(bytes);
        EXPECT_EQ(cause, wantedCause) << testing::PrintToString(bytes);
    };
    constexpr int kEnd = CArchiveException::endOfFile;
    from("\0\0\0\0"s, "");
    from("\0\0\0\x80"s, ""); // negative
    from("\xFF\xFF\xFF\xFF"s, "");
    from("\x03\0\0\0\x41\0\x42"s, "AB"); // an odd count
    from("\x01\0\0\0\xFF"s, "\xFF");
    from("\x06\0\0\0\xFF\xFE\x41\0\x42\0"s, "AB");
    from("\x04\0\0\0\x41\0\0\0"s, "A");
    from("\x04\0\0\0\x00\xDC\x41\0"s, "?A");
    from("\x04\0\0\0\x41\0\x42"s, "before", kEnd);
    from("\x04\0\0"s, "before", kEnd);
    from("", "before", kEnd);
    from("\xFF\xFF\xFF\x7F"s + std::string(16, 'x'), "before", kEnd); // 2 GiB in 20 bytes
}

TEST(StringPersistence, TextsOfMoreBytesThanACountHasAreRefused) {
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    CString text;
    try {
        text.GetBufferSetLength(1 << 30);
    } catch (CMemoryException* error) {
        error->Delete();
        GTEST_SKIP() << "a GiB of memory is missing";
    }
    EXPECT_EQ(CauseOf<CArchiveException>([&] { WriteStringWithLengthToArchive(archive, text); }),
              CArchiveException::badIndex);
    archive.Close();
    EXPECT_EQ(file.GetLength(), 0u);
}

TEST(StringPersistence, ArchivesFileRoundTheBuffer) {
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    archive << DWORD{0x31313131};
    WriteStringToArchive(archive, "A"); // overtakes what is in the buffer
    archive.Flush();
    WriteStringWithLengthToArchive(archive, "B");
    archive.Close();
    EXPECT_EQ(Content(file), "\xFF\xFE\x41\0"s
                             "1111"
                             "\x02\0\0\0\x42\0"s);

    CMemFile whole;
    Fill(whole, "\xFF\xFE\x41\0"s);
    CArchive reader(&whole, CArchive::load);
    char* text = nullptr;
    bool converted = false, hadMark = false;
    ReadStringFromArchive(reader, text, converted, hadMark);
    EXPECT_STREQ(text, "A");
    std::free(text);
    reader.Close();
    EXPECT_NE(CauseOf<CArchiveException>(
                  [&] { ReadStringFromArchive(reader, text, converted, hadMark); }),
              -1);
    EXPECT_EQ(text, nullptr);
}

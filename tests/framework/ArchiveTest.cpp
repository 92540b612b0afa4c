#include "vnbytstr/framework/Archive.h"

#include "tests/support/Text.h"
#include "vnbytstr/framework/MemFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <string_view>

namespace {

using vnbytstr::test::Content;
using vnbytstr::test::Fill;

template <class Action>
int CauseOf(Action action) {
    return vnbytstr::test::CauseOf<CArchiveException>(action);
}

TEST(Archive, ValuesAreLittleEndian) {
    CMemFile file;
    CArchive out(&file, CArchive::store);
    out << BYTE{0x81} << 'c' << WORD{0x8182} << short{-2} << DWORD{0x81828384} << LONG{-2} << 7
        << ULONGLONG{0x8182838485868788} << LONGLONG{-2} << 1.0F << -2.0 << CString("text");
    out.Close();
    using namespace std::string_view_literals;
    EXPECT_EQ(Content(file), "\x81"
                             "c"
                             "\x82\x81"
                             "\xFE\xFF"
                             "\x84\x83\x82\x81"
                             "\xFE\xFF\xFF\xFF"
                             "\7\0\0\0"
                             "\x88\x87\x86\x85\x84\x83\x82\x81"
                             "\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
                             "\0\0\x80\x3F"
                             "\0\0\0\0\0\0\0\xC0"
                             "\4text"sv);

    file.SeekToBegin();
    CArchive in(&file, CArchive::load);
    BYTE byte;
    char ch;
    WORD word;
    short small;
    DWORD dword;
    LONG number;
    int other;
    ULONGLONG large;
    LONGLONG negative;
    float single;
    double real;
    CString text;
    in >> byte >> ch >> word >> small >> dword >> number >> other >> large >> negative >> single >>
        real >> text;
    EXPECT_EQ(byte, 0x81);
    EXPECT_EQ(ch, 'c');
    EXPECT_EQ(word, 0x8182);
    EXPECT_EQ(small, -2);
    EXPECT_EQ(dword, 0x81828384u);
    EXPECT_EQ(number, -2);
    EXPECT_EQ(other, 7);
    EXPECT_EQ(large, 0x8182838485868788u);
    EXPECT_EQ(negative, -2);
    EXPECT_EQ(single, 1.0F);
    EXPECT_EQ(real, -2.0);
    EXPECT_EQ(text, "text");
    DWORD untouched = 5;
    EXPECT_EQ(CauseOf([&] { in >> untouched; }), CArchiveException::endOfFile);
    EXPECT_EQ(untouched, 5u);
}

TEST(Archive, StringLengthForms) {
    using namespace std::string_view_literals;
    const std::pair<int, std::string_view> cases[] = {
        {0, "\0"sv},
        {254, "\xFE"sv},
        {255, "\xFF\xFF\0"sv},
        {0xFFFD, "\xFF\xFD\xFF"sv},
        {0xFFFE, "\xFF\xFF\xFF\xFE\xFF\0\0"sv},
        {300000, "\xFF\xFF\xFF\xE0\x93\4\0"sv},
    };
    for (const auto& [length, prefix] : cases) {
        SCOPED_TRACE(length);
        CString text('\0', length);
        if (length > 0)
            text.SetAt(length - 1, 'z');
        CMemFile file;
        CArchive out(&file, CArchive::store);
        out << text;
        out.Close();
        const std::string content = Content(file);
        EXPECT_EQ(content.substr(0, prefix.size()), prefix);
        EXPECT_EQ(content.size(), prefix.size() + static_cast<std::size_t>(length));

        file.SeekToBegin();
        CArchive in(&file, CArchive::load);
        CString back("old");
        in >> back;
        ASSERT_EQ(back.GetLength(), length);
        EXPECT_EQ(back.Right(1), text.Right(1));

        // One byte less, and the string is not there; the target keeps what it had.
        file.SetLength(file.GetLength() - 1);
        file.SeekToBegin();
        CArchive cut(&file, CArchive::load);
        CString kept("kept");
        EXPECT_EQ(CauseOf([&] { cut >> kept; }), CArchiveException::endOfFile);
        EXPECT_EQ(kept, "kept");
    }
}

TEST(Archive, DamagedStringLengthsAreRefused) {
    using namespace std::string_view_literals;
    const std::pair<std::string_view, int> cases[] = {
        {"\xFF\xFF\xFF\xFF\xFF\xFF\x7F"sv
         "abc"sv,
         CArchiveException::endOfFile}, // 2 GiB announced
        {"\xFF\xFF\xFF\0\0\0\x80"sv
         "abc"sv,
         CArchiveException::badIndex},
        {"\xFF\xFE\xFF\3a\0b\0c\0"sv, CArchiveException::badSchema},
        {"\xFF\x80"sv, CArchiveException::endOfFile},
        {""sv, CArchiveException::endOfFile},
    };
    for (const auto& [content, cause] : cases) {
        CMemFile file;
        Fill(file, content);
        CArchive in(&file, CArchive::load);
        CString text;
        EXPECT_EQ(CauseOf([&] { in >> text; }), cause);
    }
}

// Pieces of random size through small buffers, against the plain bytes.
TEST(Archive, BufferingChangesNothing) {
    std::mt19937 random(5);
    const auto number = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    for (int round = 0; round < 50; ++round) {
        CMemFile file;
        BYTE buffer[150];
        auto out = std::make_unique<CArchive>(&file, CArchive::store, 150,
                                              round % 2 == 0 ? buffer : nullptr);
        std::string written;
        while (written.size() < 3000) {
            std::string piece(static_cast<std::size_t>(number(0, 500)), ' ');
            std::generate(piece.begin(), piece.end(),
                          [&] { return static_cast<char>(number(0, 255)); });
            if (number(0, 2) == 0) {
                const auto value = static_cast<WORD>(number(0, 0xFFFF));
                *out << value;
                piece = {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
            } else {
                out->Write(piece.data(), static_cast<UINT>(piece.size()));
            }
            written += piece;
            if (number(0, 9) == 0) {
                out->Flush();
                EXPECT_EQ(file.GetLength(), written.size());
            }
        }
        out.reset(); // writes the rest
        ASSERT_EQ(Content(file), written);

        file.SeekToBegin();
        CArchive in(&file, CArchive::load, 150);
        std::string back;
        for (bool more = true; more;) {
            char piece[400];
            const auto wanted = static_cast<UINT>(number(1, 400));
            const UINT got = in.Read(piece, wanted);
            back.append(piece, got);
            more = got == wanted;
            if (number(0, 5) == 0) {
                in.Flush(); // the file stands where the archive does
                ASSERT_EQ(file.GetPosition(), back.size());
            }
        }
        ASSERT_EQ(back, written);
    }
}

TEST(Archive, LinesEndInThreeWays) {
    // The carriage return after it is the last byte of the first bufferful.
    const std::string longLine(128 - 1 - 8, 'l');
    CMemFile file;
    Fill(file, "a\n\nb\rc\r\n" + longLine + "\r\n\r\nlast");
    CArchive in(&file, CArchive::load, 128);
    CString line("old");
    for (const char* expected : {"a", "", "b", "c", longLine.c_str(), "", "last"}) {
        EXPECT_TRUE(in.ReadString(line));
        EXPECT_EQ(line, expected);
    }
    EXPECT_FALSE(in.ReadString(line));
    EXPECT_TRUE(line.IsEmpty());
}

TEST(Archive, WrongDirectionAndClosedArchive) {
    CMemFile file;
    CArchive out(&file, CArchive::store);
    char byte;
    EXPECT_EQ(CauseOf([&] { out >> byte; }), CArchiveException::writeOnly);
    EXPECT_EQ(CauseOf([&] { out.Read(&byte, 1); }), CArchiveException::writeOnly);
    out.WriteString("text");
    out.Abort();
    EXPECT_EQ(file.GetLength(), 0u);
    EXPECT_EQ(out.GetFile(), nullptr);
    EXPECT_EQ(CauseOf([&] { out << 'c'; }), CArchiveException::genericException);
    out.Close();
    {
        CArchive silent(&file, CArchive::store | CArchive::bNoFlushOnDelete);
        silent << 'c';
    }
    EXPECT_EQ(file.GetLength(), 0u);
    CArchive in(&file, CArchive::load);
    EXPECT_EQ(CauseOf([&] { in << 'c'; }), CArchiveException::readOnly);
    EXPECT_EQ(CauseOf([&] { in.WriteString("x"); }), CArchiveException::readOnly);
}

TEST(Archive, NothingIsWrittenAfterAFailure) {
    BYTE room[100];
    CMemFile file(room, sizeof room); // cannot grow
    {
        CArchive out(&file, CArchive::store, 200);
        const std::string much(150, 'x');
        out.Write(much.data(), 150);
        EXPECT_THROW(out.Flush(), CMemoryException*);
        room[0] = 'k';
        file.Detach();
        file.Attach(room, sizeof room, 0);
        file.SetLength(0);
    } // the destructor does not try again
    EXPECT_EQ(file.GetLength(), 0u);
}

} // namespace

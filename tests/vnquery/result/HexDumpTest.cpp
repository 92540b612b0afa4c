#include "examples/vnquery/result/HexDump.h"
#include "examples/vnquery/result/PictureKind.h"

#include "tests/vnquery/result/MakeValue.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace vnquery {
namespace {

using test::MakeValue;

TEST(HexDump, LinesHaveOffsetsDigitsAndCharacters) {
    const Value value = MakeValue(Value::Type::Binary, "\x89PNG\r\n\x1A\nabcdefgh\x7F~");
    const HexDump dump(value);
    ASSERT_EQ(dump.GetLineCount(), 2u);
    EXPECT_EQ(dump.GetLine(0),
              "000000  89 50 4E 47 0D 0A 1A 0A  61 62 63 64 65 66 67 68  .PNG....abcdefgh");
    EXPECT_EQ(dump.GetLine(1), "000010  7F 7E                                             .~");
    EXPECT_EQ(dump.GetLine(2), "");
    EXPECT_EQ(dump.GetLines(0, 9), dump.GetLine(0) + "\r\n" + dump.GetLine(1) + "\r\n");
    EXPECT_EQ(HexDump(Value()).GetLineCount(), 0u);
    EXPECT_EQ(HexDump(Value()).GetLines(0, 1), "");
}

/// A value in a store, against a dump made byte by byte.
TEST(HexDump, LongValuesAreReadWhereTheyLie) {
    std::string bytes(20000001, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 2654435761u >> 13);
    const Value value = MakeValue(Value::Type::Binary, bytes);
    const HexDump dump(value);
    ASSERT_EQ(dump.GetLineCount(), 1250001u);
    for (const DWORD line : {0u, 2047u, 2048u, 1048576u, 1249999u, 1250000u}) {
        char digits[128];
        std::string expected;
        std::string characters;
        for (DWORD i = 0; i < 16; ++i) {
            const std::size_t at = line * 16 + i;
            expected += i == 8 ? " " : "";
            if (at >= bytes.size()) {
                expected += "   ";
                continue;
            }
            const auto byte = static_cast<unsigned char>(bytes[at]);
            std::snprintf(digits, sizeof digits, " %02X", byte);
            expected += digits;
            characters += byte > 31 && byte < 127 ? bytes[at] : '.';
        }
        std::snprintf(digits, sizeof digits, "%07X ", line * 16);
        EXPECT_EQ(dump.GetLine(line), digits + expected + "  " + characters);
    }
}

TEST(PictureKind, SignaturesAreRecognised) {
    using namespace std::string_view_literals;
    EXPECT_EQ(RecognisePicture("\x89PNG\r\n\x1A\n\0\0\0\rIHDR"sv), PictureKind::Png);
    EXPECT_EQ(RecognisePicture("\xFF\xD8\xFF\xE0\0\x10JFIF"sv), PictureKind::Jpeg);
    EXPECT_EQ(RecognisePicture("GIF89a\1\0"sv), PictureKind::Gif);
    EXPECT_EQ(RecognisePicture("BM\x46\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0"sv), PictureKind::Bmp);
    for (const std::string_view none : {""sv, "BM"sv, "BMW is a car, not a bitmap"sv,
                                        "\x89PNG\n\x1A\n"sv, "\xFF\xD8\xFF"sv, "GIF88a"sv})
        EXPECT_EQ(RecognisePicture(none), PictureKind::None) << none;
    EXPECT_EQ(RecognisePicture(
                  MakeValue(Value::Type::Binary, "\x89PNG\r\n\x1A\n" + std::string(5000, 'x'))),
              PictureKind::Png);
    EXPECT_EQ(RecognisePicture(MakeValue(Value::Type::Text, "GIF89a")), PictureKind::None);
}

} // namespace
} // namespace vnquery

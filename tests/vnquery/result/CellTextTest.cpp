#include "examples/vnquery/result/CellText.h"

#include "tests/vnquery/result/MakeValue.h"

#include <gtest/gtest.h>

namespace vnquery {
namespace {

using test::MakeValue;

TEST(CellText, SizesHaveThreeDigitsAndTheNextUnitInTime) {
    EXPECT_EQ(FormatSize(0), "0 B");
    EXPECT_EQ(FormatSize(1023), "1023 B");
    EXPECT_EQ(FormatSize(1024), "1.0 KB");
    EXPECT_EQ(FormatSize(102400 - 52), "99.9 KB");
    EXPECT_EQ(FormatSize(102400 - 51), "100 KB");
    EXPECT_EQ(FormatSize(1024 * 1000), "1.0 MB");
    EXPECT_EQ(FormatSize(27577344), "26.3 MB");
    EXPECT_EQ(FormatSize(4294967295), "4.0 GB");
    EXPECT_EQ(GroupDigits(999), "999");
    EXPECT_EQ(GroupDigits(1234567), "1,234,567");
}

TEST(CellText, WhatATerminalActsOnIsShown) {
    EXPECT_EQ(MakeVisible("a\tb\r\n\x1B[31m\x7F"), "a\\tb\\r\\n\\x1B[31m\\x7F");
    EXPECT_EQ(MakeVisible("\xC2\x9B \xE2\x80\xAE"), "\\x9B \\u202E");
    // Truncated, overlong, surrogate and too large sequences, and a lone trail byte.
    EXPECT_EQ(MakeVisible("\xE2\x82"), "\\xE2\\x82");
    EXPECT_EQ(MakeVisible("\xC0\x80"), "\\xC0\\x80");
    EXPECT_EQ(MakeVisible("\xED\xA0\x80"), "\\xED\\xA0\\x80");
    EXPECT_EQ(MakeVisible("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");
    EXPECT_EQ(MakeVisible("\x80"), "\\x80");
    EXPECT_EQ(MakeVisible("Gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80"),
              "Gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80");
}

TEST(CellText, WidthCountsTerminalCells) {
    EXPECT_EQ(DisplayWidth("abc"), 3u);
    EXPECT_EQ(DisplayWidth("\xC3\xBC"), 1u);
    EXPECT_EQ(DisplayWidth("u\xCC\x88"), 1u);
    EXPECT_EQ(DisplayWidth("\xE6\x97\xA5\xE6\x9C\xAC"), 4u);
    EXPECT_EQ(DisplayWidth("\xF0\x9F\x98\x80"), 2u);
}

TEST(CellText, NullEmptyAndTheNullTextDiffer) {
    const CellFormat format;
    EXPECT_EQ(FormatCell(Value(), format), "-");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, ""), format), "");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, "-"), format), "\"-\"");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, "\"-\""), format), "\"\"-\"\"");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Number, "-1"), format), "-1");
}

TEST(CellText, PreviewsOfLongTextsAndOfSeveralLines) {
    CellFormat format;
    format.hasPreviews = true;
    format.textLimit = 4;
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, "abcd"), format), "abcd");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, "abcde"), format), "abcd \u2026 [5 B]");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, "ab\ncd"), format), "ab \u2026 [5 B]");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, "\n"), format), " \u2026 [1 B]");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, "\tb\xFF" + std::string(99, 'x')), format),
              "\\tb\\xFFx \u2026 [102 B]");
    // The cut does not go through a character, wherever the bytes end that are looked at.
    EXPECT_EQ(
        FormatCell(MakeValue(Value::Type::Text, "a" + std::string(99, '\n') + "\u20AC"), format),
        "a \u2026 [103 B]");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, "\u20AC\u20AC\U0001F600\u20ACx"), format),
              "\u20AC\u20AC\U0001F600\u20AC \u2026 [14 B]");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, "-"), format), "\"-\"");
}

TEST(CellText, LongTextsBecomePlaceholdersByCharacters) {
    CellFormat format;
    format.textLimit = 4;
    const std::string four = "\xE6\x97\xA5\xE6\x97\xA5\xE6\x97\xA5\xE6\x97\xA5";
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, four), format), four);
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, "abcde"), format), "<CLOB 5 B>");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Text, std::string(35000, 'x')), format),
              "<CLOB 34.2 KB>");
    EXPECT_EQ(FormatCell(MakeValue(Value::Type::Binary, "ab"), format), "<BLOB 2 B>");
}

} // namespace
} // namespace vnquery

#include "examples/vnquery/result/CellEdit.h"

#include "tests/vnquery/result/MakeValue.h"

#include <gtest/gtest.h>

namespace vnquery {
namespace {

using test::MakeValue;

CellFormat WindowFormat() {
    CellFormat format;
    format.defaultText = "+";
    return format;
}

EditFault Parse(std::string_view typed, ColumnKind kind, NewValue& value, bool isNullable = true) {
    EditColumn column;
    column.isNullable = isNullable;
    return ParseCell(typed, kind, column, WindowFormat(), value);
}

TEST(CellEdit, MarkersAreNullAndDefaultAndQuotesMakeThemTexts) {
    NewValue value;
    ASSERT_EQ(Parse("-", ColumnKind::Text, value), EditFault::None);
    EXPECT_TRUE(value.value.IsNull());
    EXPECT_FALSE(value.isDefault);
    ASSERT_EQ(Parse("+", ColumnKind::Integer, value), EditFault::None);
    EXPECT_TRUE(value.isDefault);
    ASSERT_EQ(Parse("\"-\"", ColumnKind::Text, value), EditFault::None);
    EXPECT_EQ(value.value.GetBytes(), "-");
    ASSERT_EQ(Parse("\"x\"", ColumnKind::Text, value), EditFault::None);
    EXPECT_EQ(value.value.GetBytes(), "\"x\"");
    EXPECT_EQ(Parse("-", ColumnKind::Text, value, false), EditFault::NotNullable);
}

/// What is displayed and typed again is the same value, whatever looks like a marker.
TEST(CellEdit, DisplayedTextsReadBack) {
    const CellFormat format = WindowFormat();
    for (const char* text :
         {"", "a", "-", "+", "--", "\"-\"", "\"\"+\"\"", "\"", "\"\"", "\"-", "\"x\""}) {
        const Value value = MakeValue(Value::Type::Text, text);
        NewValue read;
        ASSERT_EQ(Parse(FormatCell(value, format), ColumnKind::Text, read), EditFault::None);
        EXPECT_FALSE(read.isDefault);
        EXPECT_TRUE(AreSame(read.value, value)) << text;
    }
}

TEST(CellEdit, NumbersAreChecked) {
    NewValue value;
    for (const char* good : {"0", "-7", "+7", " 12 ", "123456789012345678901234567890"})
        EXPECT_EQ(Parse(good, ColumnKind::Integer, value), EditFault::None) << good;
    for (const char* bad : {"", " ", "1.5", "--1", "+-1", "1 2", "0x10", "one"})
        EXPECT_EQ(Parse(bad, ColumnKind::Integer, value), EditFault::NotANumber) << bad;
    for (const char* good : {"1.5", "-1e10", ".5", "+2."})
        EXPECT_EQ(Parse(good, ColumnKind::Decimal, value), EditFault::None) << good;
    for (const char* bad : {"", "inf", "nan", "1e999", "1,5", "."})
        EXPECT_EQ(Parse(bad, ColumnKind::Decimal, value), EditFault::NotANumber) << bad;
    ASSERT_EQ(Parse("+7", ColumnKind::Integer, value), EditFault::None);
    EXPECT_EQ(value.value.GetBytes(), "7");
    EXPECT_EQ(value.value.GetType(), Value::Type::Number);
}

TEST(CellEdit, BytesAreTypedAsInSql) {
    NewValue value;
    const std::pair<const char*, std::string> kGood[] = {
        {"x''", ""}, {" X'41fF' ", "A\xFF"}, {"x'00'", std::string(1, '\0')}};
    for (const auto& [typed, bytes] : kGood) {
        ASSERT_EQ(Parse(typed, ColumnKind::Binary, value), EditFault::None) << typed;
        EXPECT_EQ(value.value.GetType(), Value::Type::Binary);
        EXPECT_EQ(value.value.GetBytes(), bytes);
    }
    for (const char* bad :
         {"", "00FF", "x", "x'", "x'0'", "x'0G'", "x'-1'", "x'0 '", "x'00", "y'00'"})
        EXPECT_EQ(Parse(bad, ColumnKind::Binary, value), EditFault::Bytes) << bad;
}

TEST(CellEdit, WhereAValueCanBeEdited) {
    const CellFormat format = WindowFormat();
    EXPECT_TRUE(IsEditableInCell(Value(), format));
    EXPECT_TRUE(IsEditableInCell(MakeValue(Value::Type::Text, "Gr\xC3\xBC\xC3\x9F"), format));
    EXPECT_FALSE(IsEditableInCell(MakeValue(Value::Type::Text, "a\nb"), format));
    EXPECT_FALSE(IsEditableInCell(MakeValue(Value::Type::Text, std::string(200, 'x')), format));
    EXPECT_FALSE(IsEditableInCell(MakeValue(Value::Type::Binary, "ab"), format));
}

TEST(CellEdit, LineBreaksComeBackAsTheyWere) {
    for (const std::string original : {"a\r\nb\r\n", "", "one line"})
        EXPECT_EQ(FromFieldText(original, original), original);
    EXPECT_EQ(FromFieldText("a\nb\n", "a\r\nb"), "a\r\nb\r\n");
    EXPECT_EQ(FromFieldText("a\r\nb\nc", "one"), "a\nb\nc");
}

TEST(CellEdit, SamenessLooksAtEveryByte) {
    std::string bytes(300000, 'x');
    const Value a = MakeValue(Value::Type::Binary, bytes);
    EXPECT_TRUE(AreSame(a, MakeValue(Value::Type::Binary, bytes)));
    EXPECT_FALSE(AreSame(a, MakeValue(Value::Type::Text, bytes)));
    bytes.back() = 'y';
    EXPECT_FALSE(AreSame(a, MakeValue(Value::Type::Binary, bytes)));
    EXPECT_FALSE(AreSame(Value(), MakeValue(Value::Type::Text, "")));
    EXPECT_TRUE(AreSame(Value(), Value()));
}

TEST(ColumnKindTest, DeclaredTypes) {
    EXPECT_EQ(KindOfDeclaredType("integer"), ColumnKind::Integer);
    EXPECT_EQ(KindOfDeclaredType("BIGINT"), ColumnKind::Integer);
    EXPECT_EQ(KindOfDeclaredType("VARCHAR(20)"), ColumnKind::Text);
    EXPECT_EQ(KindOfDeclaredType("double precision"), ColumnKind::Decimal);
    EXPECT_EQ(KindOfDeclaredType("DECIMAL(10,2)"), ColumnKind::Decimal);
    EXPECT_EQ(KindOfDeclaredType("blob"), ColumnKind::Binary);
    EXPECT_EQ(KindOfDeclaredType("datetime"), ColumnKind::Text);
    EXPECT_EQ(KindOfDeclaredType(""), ColumnKind::Unknown);
}

} // namespace
} // namespace vnquery

#include "vnbytstr/Messages.h"

#include "messages/ResourceIds.h"
#include "tests/support/PeFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestInteraction.h"
#include "tests/support/TestSystem.h"
#include "tests/support/Text.h"
#include "vnbytstr/ResourceLibrary.h"
#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/Module.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace vnbytstr;
using test::TestInteraction;

namespace {

/// A program whose current resources are those that a test gives it.
class MessagesTest : public ::testing::Test {
protected:
    MessagesTest() {
        system.SetModuleFileName(folder.File("program"));
        scope.emplace(system);
        SetStrings(0x409);
    }
    ~MessagesTest() override { AfxSetResourceHandle(nullptr); }

    void SetStrings(WORD language) {
        test::PeContent content;
        content.strings = {{10, u"plain"}, {11, u"caption"}, {12, u"%2 and %1"}};
        content.language = language;
        folder.Write("r" + std::to_string(language) + ".dll", MakePeFile(content).Text());
        HINSTANCE library = nullptr;
        LoadResourceLibrary(folder.File("r" + std::to_string(language) + ".dll").c_str(), library);
        AfxSetResourceHandle(library);
    }

    test::TemporaryFolder folder;
    test::TestSystem system;
    std::optional<ScopedSystem> scope;
    TestInteraction interaction;
    ScopedInteraction interactionScope{interaction};
};

TEST_F(MessagesTest, FillsInsertionPoints) {
    CString out;
    EXPECT_EQ(FormatStringEx(out, "%2 and %1", "a", "b"), 7);
    EXPECT_STREQ(out, "b and a");
    FormatStringEx(out, "%1%1 %2 %9 %0 %% %A %", "%2");
    EXPECT_STREQ(out, "%2%2 ? ? %0 %% %A %");
    FormatStringEx(out, "%9%8%7%6%5%4%3%2%1.", "1", "2", "3", "4", nullptr, "6", "7", "8", "9");
    EXPECT_STREQ(out, "9876"
                      "4321.");
    FormatStringEx(out, static_cast<const char*>(nullptr), "a");
    EXPECT_STREQ(out, "");
    out = "again ";
    FormatStringEx(out, "%1%1", out);
    EXPECT_STREQ(out, "again again ");
    const std::string longText(1 << 20, 'x');
    FormatStringEx(out, "%1%2%1", longText.c_str(), "y");
    EXPECT_EQ(out.GetLength(), (2 << 20) + 1);
}

TEST_F(MessagesTest, FillsInsertionPointsOfResources) {
    CString out = "old";
    EXPECT_EQ(FormatStringEx(out, 12, nullptr, "a", "b"), 7);
    EXPECT_STREQ(out, "b and a");
    EXPECT_EQ(FormatStringEx(out, 99, nullptr, "a"), -1);
    EXPECT_EQ(FormatStringEx(out, 99, nullptr, "a", "b"), -1);
    EXPECT_EQ(FormatStringEx(out, 99, nullptr, "1", "2", "3", "4", "5", "6", "7", "8", "9"), -1);
    EXPECT_STREQ(out, "b and a");
}

TEST_F(MessagesTest, ShowsMessageBoxes) {
    interaction.answer = IDNO;
    EXPECT_EQ(FormattedMessageBox(12, nullptr, MB_YESNO, "a"), IDNO);
    EXPECT_EQ(FormattedMessageBox(12, nullptr, MB_OK, "a", "b"), IDNO);
    EXPECT_EQ(FormattedMessageBox(99, nullptr, MB_OK, "a"), IDNO);
    EXPECT_EQ(DisplayMessageBox(10, nullptr, MB_ICONSTOP, 0), IDNO);
    EXPECT_EQ(DisplayMessageBox(10, 11, nullptr, MB_ICONSTOP, 0), IDNO);
    using Box = TestInteraction::Box;
    EXPECT_EQ(interaction.boxes, (std::vector<Box>{{"? and a", "program", MB_YESNO, 12},
                                                   {"b and a", "program", MB_OK, 12},
                                                   {"", "program", MB_OK, 99},
                                                   {"plain", "program", MB_ICONSTOP, 10},
                                                   {"plain", "caption", MB_ICONSTOP, 0}}));
}

TEST_F(MessagesTest, ShowsNothingForAMissingString) {
    EXPECT_EQ(DisplayMessageBox(99, nullptr, MB_OK, 0), -1);
    EXPECT_EQ(DisplayMessageBox(10, 99, nullptr, MB_OK, 0), -1);
    EXPECT_EQ(DisplayMessageBox(99, 11, nullptr, MB_OK, 0), -1);
    EXPECT_TRUE(interaction.boxes.empty());
}

TEST_F(MessagesTest, AlignsRightToLeftTexts) {
    SetStrings(0x40D);
    DisplayMessageBox(10, 11, nullptr, MB_OKCANCEL, 0);
    DisplayMessageBox(10, nullptr, MB_OKCANCEL, 0);
    ASSERT_EQ(interaction.boxes.size(), 2u);
    EXPECT_EQ(interaction.boxes[0].type, MB_OKCANCEL | 0x180000u);
    EXPECT_EQ(interaction.boxes[1].type, 0u + MB_OKCANCEL);
}

TEST_F(MessagesTest, CatchesWhatABoxThrows) {
    interaction.duringBox = [] { AfxThrowMemoryException(); };
    EXPECT_EQ(FormattedMessageBox(12, nullptr, MB_OK, "a"), 0);
    EXPECT_EQ(DisplayMessageBox(10, nullptr, MB_OK, 0), 0);
    EXPECT_EQ(DisplayMessageBox(10, 11, nullptr, MB_OK, 0), 0);
}

TEST_F(MessagesTest, ServesTheFrameworksMessageBoxes) {
    AfxMessageBox(10u, MB_OK);
    AfxMessageBox(10u, MB_OK, 3);
    AfxMessageBox("text");
    using Box = TestInteraction::Box;
    EXPECT_EQ(interaction.boxes, (std::vector<Box>{{"plain", "program", MB_OK, 10},
                                                   {"plain", "program", MB_OK, 3},
                                                   {"text", "program", MB_OK, 0}}));
}

TEST(LargeObjectTexts, ComeFromTheResources) {
    const std::pair<CString (*)(), UINT> kTexts[] = {
        {GetBlobDisplayString, 34588},         {GetBlobLocatorDisplayString, 34589},
        {GetClobDisplayString, 34590},         {GetClobLocatorDisplayString, 34591},
        {GetDBClobDisplayString, 34592},       {GetDBClobLocatorDisplayString, 34593},
        {GetLongVarBlobDisplayString, 34760},  {GetLongVarClobDisplayString, 34761},
        {GetLongVarDBClobDisplayString, 34762}};
    test::PeContent content;
    for (const auto& [function, id] : kTexts) {
        const std::string digits = std::to_string(id);
        content.strings[id] = std::u16string(digits.begin(), digits.end());
    }
    const test::TemporaryFolder folder;
    folder.Write("a.dll", MakePeFile(content).Text());
    HINSTANCE library = nullptr;
    ASSERT_EQ(LoadResourceLibrary(folder.File("a.dll").c_str(), library), 0);
    AfxSetResourceHandle(library);
    for (const auto& [function, id] : kTexts)
        EXPECT_EQ(std::string(function()), std::to_string(id));
    AfxSetResourceHandle(nullptr);
    EXPECT_STREQ(GetBlobDisplayString(), "<BLOB>"); // of the English library
}

TEST(Numbers, AreDecimal) {
    const auto check = [](auto format, auto number, const char* expected) {
        CString text;
        format(text, number);
        EXPECT_STREQ(text, expected);
    };
    check(FormatShort, short{-1}, "-1");
    check(FormatShort, short{INT16_MIN}, "-32768");
    check(FormatLong, LONG{INT32_MIN}, "-2147483648");
    check(FormatWORD, WORD{65535}, "65535");
    check(FormatDWORD, DWORD{0xFFFFFFFF}, "4294967295");
    check(FormatDWORD, DWORD{0}, "0");
}

/// Formats with ours and with the C library.
#define EXPECT_AS_PRINTF(format, ...)                                                              \
    do {                                                                                           \
        CString expected, out;                                                                     \
        expected.Format(format, __VA_ARGS__);                                                      \
        EXPECT_EQ(FormatString(out, format, __VA_ARGS__), expected.GetLength()) << (format);       \
        EXPECT_STREQ(out, expected);                                                               \
    } while (false)

TEST(FormatString, FormatsAsPrintf) {
    EXPECT_AS_PRINTF("%d|%5d|%-5d|%05d|%+d|% d|%.3d", 42, 42, 42, 42, 42, 42, 42);
    EXPECT_AS_PRINTF("%u %x %X %#x %o %i", 0xFFFFFFFFu, 255u, 255u, 255u, 8u, INT32_MIN);
    EXPECT_AS_PRINTF("%d %u %x", -1, -1, -1);
    EXPECT_AS_PRINTF("%hd %hhd %hu %hhx", 70000, 300, 70000, 511);
    EXPECT_AS_PRINTF("%lld %llu %zu %jd", -1LL, ~0ULL, std::size_t{7}, std::intmax_t{-9});
    EXPECT_AS_PRINTF("%c%c%%", 'a', 200);
    EXPECT_AS_PRINTF("%s|%10s|%-10s|%.2s|%5.1s|%.0s", "abc", "abc", "abc", "abc", "abc", "abc");
    EXPECT_AS_PRINTF("%*d %-*d %.*s %*s", 6, 1, 6, 2, 2, "abc", -5, "x");
    EXPECT_AS_PRINTF("%.*s", -1, "all of it");
    EXPECT_AS_PRINTF("%f %.2f %e %G %a %10.3f %g", 1.5, 2.345, 1e10, 1e-10, 1.0, 3.141592653589793,
                     INFINITY);
    EXPECT_AS_PRINTF("%.400f", 1e308);
    EXPECT_AS_PRINTF("%p", static_cast<const void*>("x"));
    CString out;
    EXPECT_EQ(FormatString(out, "%I64d %I32u %ld %wd", std::int64_t{1} << 40, 5u, LONG{-3}, 1), 20);
    EXPECT_STREQ(out, "1099511627776 5 -3 1");
    FormatString(out, "%s %s", CString("string"), static_cast<const char*>(nullptr));
    EXPECT_STREQ(out, "string (null)");
    FormatString(out, "no arguments, 100%%", 1, 2);
    EXPECT_STREQ(out, "no arguments, 100%");
}

TEST(FormatString, TakesTextsOfAnyLength) {
    const std::string text(3 << 20, 'x');
    CString out;
    EXPECT_EQ(FormatString(out, "<%s%s>", text.c_str(), text.c_str()), (6 << 20) + 2);
    EXPECT_EQ(FormatString(out, "%16777216s", "x"), 16777216);
    EXPECT_EQ(FormatString(out, "%16384d%.16384d", 1, 2), 2 * 16384);
    char letters[] = "letters"; // a text, whatever an argument pointer is
    EXPECT_EQ(FormatString(out, "%s", letters), 7);
}

TEST(FormatString, RefusesFormatsThatDoNotFitTheArguments) {
    CString out = "as it was";
    for (const std::string& format :
         test::Split("%d%d;%s;%d %s;%n;%*d;%*n;%.*d;%1$d;%S;%C;%ls;%lc;%y;%;%-;%5;%5.;%l;%ll;%f;%p;"
                     "%16385d;%.16385d;%16777216d;%99999999999999999999d;%.99999999999999999999d;"
                     "%d%;%s%s%s%s%s%s%s%n;%\xC3",
                     ';'))
        EXPECT_EQ(FormatString(out, format.c_str(), 1), -1) << format;
    EXPECT_EQ(FormatString(out, "%d"), -1);
    EXPECT_EQ(FormatString(out, "%d", "text"), -1);
    EXPECT_EQ(FormatString(out, "%d", 1.0), -1);
    EXPECT_EQ(FormatString(out, "%s", 1.0), -1);
    for (const int width : {16385, -16385, 1 << 30}) {
        EXPECT_EQ(FormatString(out, "%*d", width, 1), -1);
        EXPECT_EQ(FormatString(out, "%*f", width, 1.0), -1);
    }
    EXPECT_EQ(FormatString(out, "%.*f", 16385, 1.0), -1);
    EXPECT_EQ(FormatString(out, "%16777217s", "x"), -1);
    EXPECT_EQ(FormatString(out, "%*d", INT32_MIN, 1), -1);
    EXPECT_EQ(FormatString(out, "%*s", "5", "x"), -1);
    EXPECT_STREQ(out, "as it was");
    EXPECT_EQ(FormatString(out, nullptr, 1), 0);
    EXPECT_STREQ(out, "");
}

int FormatList(CString& out, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = vnbytstr::detail::kIsArgumentPointerText
                           ? FormatStringV(out, format, arguments)
                           : FormatString(out, format, arguments);
    va_end(arguments);
    return length;
}

TEST(FormatString, TakesAnArgumentPointer) {
    CString out;
    EXPECT_EQ(
        FormatList(out, "%s %5d %-4s|%I64x %.*f %hs%%", "a", 7, "b", 0xFFFFFFFFFFLL, 1, 2.55, "c"),
        static_cast<int>(std::strlen("a     7 b   |ffffffffff 2.5 c%")));
    for (const char* format : {"%n", "%ls", "%S", "%1$d", "%", "%16777217d", "%y"})
        EXPECT_EQ(FormatList(out, format, 1), -1) << format;
    EXPECT_EQ(FormatList(out, "%*d", 1 << 30, 1), -1);
    EXPECT_EQ(FormatList(out, "%.*f", 1 << 30, 1.0), -1);
    const char* const kinds = "%hhd|%hu|%ld|%lu|%lld|%zx|%jd|%td|%c|%Lg|%g|%x|%-*d|%.*s|%p|%s";
    const auto expect = [&](auto... arguments) {
        CString expected;
        expected.Format(kinds, arguments...);
        EXPECT_EQ(FormatList(out, kinds, arguments...), expected.GetLength());
        EXPECT_STREQ(out, expected);
    };
    expect(300, 70000u, -1L, ~0UL, -5LL, ~std::size_t{7}, std::intmax_t{-9}, std::ptrdiff_t{-2},
           'c', 2.5L, 0.1, 255u, 6, 1, 2, "abc", static_cast<void*>(&out), "end");
    const std::string text(3 << 20, 'x');
    EXPECT_EQ(FormatList(out, "%s", text.c_str()), 3 << 20);
    EXPECT_EQ(FormatList(out, nullptr), 0);
}

} // namespace

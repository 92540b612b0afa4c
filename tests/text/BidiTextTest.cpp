// Directions and left-to-right marks.
#include "vnbytstr/BidiText.h"

#include "src/charset/CodePage.h"
#include "src/text/SystemAnswers.h"
#include "tests/support/TestSystem.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using vnbytstr::ScopedCodePage;
using vnbytstr::ScopedSystem;
using vnbytstr::SystemVersion;
using vnbytstr::test::TestSystem;

std::string WithSuffix(const char* text) {
    CString string(text);
    MaybeAddLRMSuffix(string);
    return static_cast<const char*>(string);
}

} // namespace

TEST(BidiText, DirectionsInTheHebrewAndArabicPages) {
    struct Case {
        const char* text;
        bool allLeftToRight, allRightToLeft;
    };
    const Case hebrew[] = {{"", true, true},
                           {nullptr, true, true},
                           {"12 3.4", true, true},
                           {"abc", true, false},
                           {"\xF9\xEC\xE5\xED", false, true},
                           {"a \xF9", false, false},
                           {"\xF9 12", false, true},
                           {"\xFD", true, false},
                           {"\xFE", false, true}}; // the marks of either direction
    for (const Case& one : hebrew) {
        const ScopedCodePage scope(1255);
        EXPECT_EQ(IsStringAllLTR(one.text), one.allLeftToRight);
        EXPECT_EQ(IsStringAllRTL(one.text), one.allRightToLeft);
    }
    const ScopedCodePage scope(1256);
    EXPECT_FALSE(IsStringAllLTR("\xC8")); // beh
    EXPECT_TRUE(IsStringAllRTL("\xC8 1\xA1"));
    EXPECT_FALSE(IsStringAllRTL("\xC8\xE9")); // e acute
    for (const UINT page : {1252u, 932u}) {
        const ScopedCodePage other(page);
        EXPECT_TRUE(IsStringAllLTR("\xF9\xEC"));
        EXPECT_FALSE(IsStringAllRTL("\xF9\xEC"));
    }
}

TEST(BidiText, Utf8) {
    const ScopedCodePage scope(65001);
    const char* const shalom = "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D";
    EXPECT_TRUE(IsStringAllRTL(shalom));
    EXPECT_FALSE(IsStringAllLTR(shalom));
    EXPECT_TRUE(IsStringAllLTR("abc 1"));
    EXPECT_FALSE(IsStringAllRTL("abc 1"));
    EXPECT_TRUE(IsStringAllLTR("1") && IsStringAllRTL("1"));
    CString text("abc");
    SurroundWithLRM(text);
    EXPECT_STREQ(text, "\xE2\x80\x8E"
                       "abc\xE2\x80\x8E");
    TestSystem system;
    const ScopedSystem systemScope(system);
    system.SetEnvironment("LC_ALL", "he_IL.UTF-8");
    EXPECT_EQ(WithSuffix("abc"), "abc\xE2\x80\x8E");
    EXPECT_EQ(WithSuffix("abc\xE2\x80\x8E"), "abc\xE2\x80\x8E");
    EXPECT_EQ(WithSuffix(shalom), shalom);
    system.SetEnvironment("LC_ALL", "C");
    EXPECT_EQ(WithSuffix("abc"), "abc");
}

TEST(BidiText, NoMarkBreaksAText) {
    const ScopedCodePage hebrew(1255);
    CString twice("a"); // it does not look whether there is one
    SurroundWithLRM(twice);
    SurroundWithLRM(twice);
    EXPECT_STREQ(twice, "\xFD\xFD"
                        "a\xFD\xFD");
    for (const UINT number :
         {874u, 932u, 936u, 949u, 950u, 1252u, 1255u, 1256u, 51932u, 54936u, 65001u}) {
        const ScopedCodePage scope(number);
        CString text("a");
        SurroundWithLRM(text);
        const std::string bytes(text);
        const vnbytstr::CodePage& page = vnbytstr::CodePage::Ansi();
        EXPECT_EQ(page.FromWide(page.ToWide(bytes)), bytes) << number;
    }
}

TEST(BidiText, SuffixUnderAllItsConditions) {
    TestSystem system;
    const ScopedSystem scope(system);
    system.SetEnvironment("LC_ALL", "he_IL.UTF-8");
    system.SetVersion({SystemVersion::NtFamily, 5, 0});
    for (const UINT page : {1255u, 1256u}) {
        const ScopedCodePage pageScope(page);
        EXPECT_EQ(WithSuffix("abc"), "abc\xFD");
        EXPECT_EQ(WithSuffix("abc\xFD"), "abc\xFD");
        EXPECT_EQ(WithSuffix(""), "\xFD");
        EXPECT_EQ(WithSuffix("1 2"), "1 2\xFD");
        EXPECT_EQ(WithSuffix("a\xE3\xE4"), "a\xE3\xE4");
    }
    {
        const ScopedCodePage pageScope(1252);
        EXPECT_EQ(WithSuffix("abc"), "abc");
    }
    const ScopedCodePage pageScope(1255);
    system.SetVersion({SystemVersion::NtFamily, 4, 0});
    EXPECT_EQ(WithSuffix("abc"), "abc");
    system.SetVersion({SystemVersion::Windows9x, 5, 0});
    EXPECT_EQ(WithSuffix("abc"), "abc");
    system.SetVersion({SystemVersion::NtFamily, 10, 0});
    EXPECT_EQ(WithSuffix("abc"), "abc\xFD");
}

TEST(BidiText, MiddleEastIsAskedOnce) {
    vnbytstr::detail::ForgetSystemAnswers();
    {
        TestSystem system;
        const ScopedSystem scope(system);
        system.SetEnvironment("LC_ALL", "he_IL.UTF-8");
        EXPECT_TRUE(IsBIDIWindows());
        system.SetEnvironment("LC_ALL", "C");
        EXPECT_TRUE(IsBIDIWindows());
    }
    // The real system goes by the code page and the locale.
    const auto isEnabled = [](UINT page, const char* locale) {
        const ScopedCodePage pageScope(page);
        TestSystem system;
        const ScopedSystem scope(system);
        system.SetEnvironment("LC_ALL", locale);
        vnbytstr::detail::ForgetSystemAnswers();
        return IsBIDIWindows();
    };
    EXPECT_TRUE(isEnabled(1255, "de_DE"));
    EXPECT_TRUE(isEnabled(1256, "C"));
    EXPECT_TRUE(isEnabled(65001, "he_IL.UTF-8"));
    EXPECT_FALSE(isEnabled(65001, "de_DE.UTF-8"));
    vnbytstr::detail::ForgetSystemAnswers();
}

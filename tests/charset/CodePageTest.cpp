// The ANSI code page, characters and conversions. ICU's converters, called directly, and hand-made
// byte strings are the oracle.
#include "src/charset/CodePage.h"
#include "tests/support/TestSystem.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <random>
#include <thread>

namespace vnbytstr {
namespace {

using test::TestSystem;

UINT AnsiUnder(const std::string& variable, const std::string& locale,
               std::string* message = nullptr) {
    TestSystem system;
    system.SetEnvironment("VNBYTSTR_CODEPAGE", variable);
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"})
        system.SetEnvironment(name, "");
    system.SetEnvironment("LC_CTYPE", locale);
    const ScopedSystem scope(system);
    const CodePage* before = CodePage::SetAnsi(nullptr);
    const UINT number = CodePage::Ansi().GetNumber();
    CodePage::SetAnsi(before);
    if (message)
        *message = system.Diagnostics();
    return number;
}

TEST(CodePage, AnsiPageFollowsVariableThenLocale) {
    const std::tuple<const char*, const char*, UINT> cases[] = {{"932", "de_DE.UTF-8", 932},
                                                                {"", "de_AT.UTF-8", 65001},
                                                                {"", "de_AT.utf8", 65001},
                                                                {"", "", 65001},
                                                                {"", "C", 65001},
                                                                {"", "POSIX", 65001},
                                                                {"", "de_DE@euro", 28605},
                                                                {"", "de_DE.ISO-8859-1", 28591},
                                                                {"", "de_DE.iso885915@euro", 28605},
                                                                {"", "ja_JP.SJIS", 932},
                                                                {"", "ja_JP.eucJP", 51932},
                                                                {"", "he_IL.CP1255", 1255},
                                                                {"", "ru_RU.windows-1251", 1251}};
    for (const auto& [variable, locale, page] : cases)
        EXPECT_EQ(AnsiUnder(variable, locale), page) << locale;
}

TEST(CodePage, UnknownNamesAreReportedAndIgnored) {
    std::string message;
    EXPECT_EQ(AnsiUnder("0x3A4", "de_DE.ISO-8859-2", &message), 28592u);
    EXPECT_NE(message.find("VNBYTSTR_CODEPAGE=0x3A4"), std::string::npos);
    EXPECT_EQ(AnsiUnder("1259", "C", &message), 65001u);
    EXPECT_NE(message.find("1259"), std::string::npos);
    EXPECT_EQ(AnsiUnder("", "xx_XX.KLINGON", &message), 65001u);
    EXPECT_NE(message.find("xx_XX.KLINGON"), std::string::npos);
    EXPECT_EQ(CodePage::Find(0), nullptr);
    EXPECT_EQ(CodePage::Find(66666), nullptr);
}

TEST(CodePage, LeadBytesAreThoseOfTheWindowsPages) {
    const auto ranges = [](UINT number) {
        std::string text;
        for (int i = 0; i <= 256; ++i) {
            const auto lead = [&](int j) {
                return j >= 0 && j < 256 &&
                       CodePage::Find(number)->IsLeadByte(static_cast<char>(j));
            };
            char hex[8];
            std::snprintf(hex, sizeof hex, lead(i) ? "%02X-" : "%02X ", lead(i) ? i : i - 1);
            if (lead(i) != lead(i - 1))
                text += hex;
        }
        return text;
    };
    EXPECT_EQ(ranges(932), "81-9F E0-FC ");
    EXPECT_EQ(ranges(936), "81-FE ");
    EXPECT_EQ(ranges(949), "81-FE ");
    EXPECT_EQ(ranges(950), "81-FE ");
    EXPECT_EQ(ranges(65001), "C2-F4 ");
    EXPECT_EQ(ranges(1252), "");
}

std::vector<std::size_t> Lengths(UINT number, std::string_view text) {
    const CodePage& page = *CodePage::Find(number);
    std::vector<std::size_t> lengths;
    for (std::size_t i = 0; i < text.size(); i += lengths.back())
        lengths.push_back(page.CharLength(text.data() + i, text.data() + text.size()));
    EXPECT_EQ(page.CountChars(text), lengths.size());
    // The start found for each byte is that of the walk.
    std::size_t start = 0, next = 0;
    for (std::size_t i = 0, c = 0; i < text.size(); ++i) {
        if (i == next) {
            start = i;
            next += lengths[c++];
        }
        EXPECT_EQ(page.CharStart(text, i), start) << i;
    }
    return lengths;
}

TEST(CodePage, CharLength) {
    using V = std::vector<std::size_t>;
    EXPECT_EQ(Lengths(1252, "a\x81\x40"), (V{1, 1, 1}));
    EXPECT_EQ(Lengths(932, "a\x81\x40\xB1\x83\x5C\x81"), (V{1, 2, 1, 2, 1}));
    EXPECT_EQ(Lengths(65001, "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z"), (V{1, 2, 3, 4, 1}));
    // Broken: cut, overlong, surrogate, past U+10FFFF, stray continuation.
    EXPECT_EQ(Lengths(65001, "\xF0\x9F\x98"), (V{1, 1, 1}));
    EXPECT_EQ(Lengths(65001, "\xE2\x82"), (V{1, 1}));
    EXPECT_EQ(Lengths(65001, "\xC0\x80\xE0\x80\x80"), (V{1, 1, 1, 1, 1}));
    EXPECT_EQ(Lengths(65001, "\xED\xA0\x80"), (V{1, 1, 1}));
    EXPECT_EQ(Lengths(65001, "\xF4\x90\x80\x80"), (V{1, 1, 1, 1}));
    EXPECT_EQ(Lengths(65001, "\xBF\xC3(\xC3"), (V{1, 1, 1, 1}));
    EXPECT_EQ(Lengths(54936, "\x81\x30\x81\x30\x81\x40\x81\x30\x81"), (V{4, 2, 1, 1, 1}));
    EXPECT_EQ(Lengths(51932, "\x8F\xA2\xB7\x8E\xB1\xA4\xA2z\x8F\xA2"), (V{3, 2, 2, 1, 1, 1}));
}

TEST(CodePage, SpanNeverStopsAtATrailByte) {
    // 0x83 0x5C and 0x81 0x7C have a backslash and a bar for trail bytes.
    EXPECT_EQ(CodePage::Find(932)->SpanWithout("\x83\x5C\x81\x7C\\|", "\\|"), 4u);
    EXPECT_EQ(CodePage::Find(1252)->SpanWithout("\x83\x5C\x81\x7C\\|", "\\|"), 1u);
    EXPECT_EQ(CodePage::Find(54936)->SpanWithout("\x81\x30\x81\x30"
                                                 "0",
                                                 "0"),
              4u);
    EXPECT_EQ(CodePage::Find(65001)->SpanWithout("\xC3\xA4\"", "<>&\""), 2u);
    EXPECT_EQ(CodePage::Find(932)->SpanWithout("abc", "<"), 3u);
    EXPECT_EQ(CodePage::Find(932)->SpanWithout("ab\x81", "<"), 3u);
    EXPECT_EQ(CodePage::Find(932)->SpanWithout("", "<"), 0u);
}

TEST(CodePage, ConversionsReplaceWhatHasNoForm) {
    const CodePage& western = *CodePage::Find(1252);
    EXPECT_EQ(western.ToWide("a\x80\xFC"), u"a\u20AC\u00FC");
    EXPECT_EQ(western.FromWide(u"a\u20AC\u4E2D\u0100\u00AD\u200B\U0001F600z"), "a\x80??\xAD??z");
    EXPECT_EQ(CodePage::Find(932)->ToWide("\x83\x5C\\\xB1\xFD\x81"), u"\u30BD\\\uFF71\uFFFD\uFFFD");
    EXPECT_EQ(CodePage::Find(932)->FromWide(u"\u30BD\\\u20AC"), "\x83\x5C\\?");
    EXPECT_EQ(CodePage::Find(65001)->ToWide("\xC3(\xF0\x9F\x98\x80\xE2\x82"),
              u"\uFFFD(\U0001F600\uFFFD");
    EXPECT_EQ(CodePage::Find(65001)->FromWide(u"\xD800z\U0001F600"),
              "\xEF\xBF\xBDz\xF0\x9F\x98\x80");
    EXPECT_EQ(CodePage::Find(1255)->ToWide("\xFD"), u"\u200E");
    EXPECT_EQ(western.ToWide(""), u"");
    // Past the size of one piece, with a character across its end, and growing threefold.
    std::string text(1048575, 'x');
    text += "\xE2\x82\xAC";
    EXPECT_EQ(CodePage::Find(65001)->ToWide(text), std::u16string(1048575, u'x') + u"\u20AC");
    const std::u16string euros(3000000, u'\u20AC');
    EXPECT_EQ(CodePage::Find(65001)->ToWide(CodePage::Find(65001)->FromWide(euros)), euros);
}

TEST(CodePage, EveryPageAgreesWithItsConverter) {
    for (UINT number :
         {874u,  932u,  936u,  949u,   950u,   1250u,  1251u,  1253u,  1254u,  1255u,
          1256u, 1257u, 1258u, 20866u, 28592u, 28597u, 28605u, 51932u, 51949u, 54936u}) {
        const CodePage* page = CodePage::Find(number);
        ASSERT_NE(page, nullptr) << number;
        // Every character of the page survives the way there and back, also through ICU alone.
        const std::string name = number == 51932   ? "EUC-JP"
                                 : number == 51949 ? "EUC-KR"
                                 : number == 54936 ? "gb18030"
                                 : number == 20866 ? "KOI8-R"
                                 : number > 28590  ? "ISO-8859-" + std::to_string(number - 28590)
                                                   : "windows-" + std::to_string(number);
        UErrorCode error = U_ZERO_ERROR;
        UConverter* converter = ucnv_open(name.c_str(), &error);
        ASSERT_TRUE(U_SUCCESS(error)) << name;
        ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        unsigned count = 0;
        for (unsigned pair = 0; pair < 0x10000; ++pair) {
            const char bytes[2] = {static_cast<char>(pair >> 8), static_cast<char>(pair)};
            const std::size_t size = page->CharLength(bytes, bytes + 2);
            if (size == 1 && (pair & 0xFF))
                continue;
            char16_t wide[4];
            error = U_ZERO_ERROR;
            const int32_t units =
                ucnv_toUChars(converter, wide, 4, bytes, static_cast<int32_t>(size), &error);
            if (U_FAILURE(error))
                continue;
            ++count;
            if (static_cast<BYTE>(bytes[0]) <
                0x80) // whatever ICU says (its 932 exchanges controls)
                wide[0] = static_cast<char16_t>(bytes[0]);
            EXPECT_EQ(page->ToWide({bytes, size}),
                      std::u16string(wide, static_cast<std::size_t>(units)));
        }
        EXPECT_GE(count, 215u) << number;
        // ASCII stays itself after other characters too, both ways.
        std::string ascii;
        for (char c = 1; c > 0 && c < 127; ++c)
            ascii += c;
        ascii += '\x7F';
        const std::u16string wide = page->ToWide("\xB1\xA1" + ascii);
        EXPECT_EQ(wide.substr(wide.size() - 127), std::u16string(ascii.begin(), ascii.end()));
        const std::string back = page->FromWide(wide);
        EXPECT_EQ(back.substr(back.size() - 127), ascii) << number;
        ucnv_close(converter);
    }
}

TEST(CodePage, CaseIsMappedOneToOneInPlace) {
    const auto upper = [](UINT number, std::string text) {
        CodePage::Find(number)->MakeUpper(text);
        return text;
    };
    const auto lower = [](UINT number, std::string text) {
        CodePage::Find(number)->MakeLower(text);
        return text;
    };
    EXPECT_EQ(upper(1252, "a\xE4\xFF\xDFz"), "A\xC4\x9F\xDFZ");
    EXPECT_EQ(lower(1252, "A\xC4\x9F?"), "a\xE4\xFF?");
    EXPECT_EQ(upper(1251, "\xE0\xFF"), "\xC0\xDF");
    // Sharp s has no single capital; dotless i and the Kelvin sign have one of another length.
    EXPECT_EQ(upper(65001, "stra\xC3\x9F"
                           "e \xC3\xA4 \xC4\xB1 \xD1\x8F"),
              "STRA\xC3\x9F"
              "E \xC3\x84 \xC4\xB1 \xD0\xAF");
    EXPECT_EQ(lower(65001, "\xE2\x84\xAA \xC3\x84 \xC3("), "\xE2\x84\xAA \xC3\xA4 \xC3(");
    // A trail byte that looks like a letter stays; a full-width letter is one.
    EXPECT_EQ(upper(932, "\x83\x61"
                         "a\x82\x81"),
              "\x83\x61"
              "A\x82\x60");
    EXPECT_EQ(upper(932, "a\x81"), "A\x81");
}

TEST(CodePage, ThreadsShareAPage) {
    const CodePage& page = *CodePage::Find(932);
    std::u16string wide;
    for (char16_t c = 0x3041; c < 0x3090; ++c)
        wide += c;
    const std::string narrow = page.FromWide(wide);
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 500; ++i)
                wrong += page.ToWide(narrow) != wide || page.FromWide(wide) != narrow ||
                         CodePage::Find(1250 + static_cast<UINT>(i % 9)) == nullptr;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
} // namespace vnbytstr

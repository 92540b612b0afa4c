// Comparison and keys against each other, against ICU for every locale it knows, and known pairs.
#include "src/charset/Collation.h"
#include "src/charset/CodePage.h"
#include "tests/support/TestSystem.h"

#include <gtest/gtest.h>
#include <unicode/ucol.h>

#include <random>

namespace vnbytstr {
namespace {

int Sign(int number) { return (number > 0) - (number < 0); }

std::string FoldKey(const Collation& collation, std::string_view text) {
    std::string key;
    collation.AppendKey(text, key);
    return key;
}

/// The same bytes every time a test runs.
std::string RandomText(std::mt19937& random, std::string_view pieces, std::size_t longest) {
    std::string text(random() % (longest + 1), '\0');
    for (char& c : text)
        c = pieces.empty() ? static_cast<char>(random()) : pieces[random() % pieces.size()];
    return text;
}

std::string PrintableAscii() {
    std::string all;
    for (char c = ' '; c < '\x7F'; ++c)
        all += c;
    return all;
}

TEST(Collation, IgnoresCaseKanaTypeAndWidthOnly) {
    const ScopedCodePage utf8(65001);
    const Collation& root = Collation::ForLocale("C");
    const std::pair<const char*, const char*> equal[] = {
        {"MYVAR", "myvar"},   {"ＭＹＶＡＲ", "myvar"},
        {"カナ", "かな"},     {"ｶﾅ", "かな"},
        {"ＡＢ１＄", "ab1$"}, {"É", "é"},
        {"É", "E\u0301"},     {"", "\x01"},
    };
    for (const auto& [left, right] : equal) {
        EXPECT_EQ(root.Compare(left, right), 0) << left << ' ' << right;
        EXPECT_EQ(FoldKey(root, left), FoldKey(root, right)) << left << ' ' << right;
    }
    const std::pair<const char*, const char*> ordered[] = {
        {"a", "B"},   {"E", "é"},     {"A-B", "AB"}, {"A B", "A_B"}, {"A", "A?"},
        {"A?", "A#"}, {"かな", "漢"}, {"z", "\xFF"}, {"1", "a"},     {"は", "ば"},
    };
    for (const auto& [left, right] : ordered) {
        EXPECT_NE(FoldKey(root, left), FoldKey(root, right)) << left << ' ' << right;
        EXPECT_LT(root.Compare(left, right), 0) << left << ' ' << right;
        EXPECT_GT(root.Compare(right, left), 0) << left << ' ' << right;
    }
    EXPECT_NE(Collation::ForLocale("th_TH").Compare("A?", "A#"), 0);
    EXPECT_LT(Collation::ForLocale("sv_SE.UTF-8@x").Compare("z", "ö"), 0);
    EXPECT_GT(Collation::ForLocale("de_AT").Compare("z", "ö"), 0);
}

TEST(Collation, ShortWayToAsciiKeysMakesIcusKeysInEveryLocale) {
    const ScopedCodePage utf8(65001);
    const std::string all = PrintableAscii();
    std::mt19937 random(1);
    for (int32_t i = 0; i < ucol_countAvailable(); ++i) {
        const char* const name = ucol_getAvailable(i);
        const Collation& collation = Collation::ForLocale(name);
        for (int round = 0; round < 200; ++round) {
            const std::string text = RandomText(random, round % 2 ? all : "cChHsSzZdDaA-' y", 40);
            std::string fast = "before", plain = "before";
            collation.AppendKey(text, fast);
            collation.AppendKeyByIcu(text, plain);
            ASSERT_EQ(fast, plain) << name << ": " << text;
        }
    }
    for (const std::size_t length : {254u, 255u, 256u, 1000u, 100000u}) {
        std::string plain;
        Collation::ForLocale("").AppendKeyByIcu(std::string(length, 'x'), plain);
        EXPECT_EQ(FoldKey(Collation::ForLocale(""), std::string(length, 'x')), plain);
    }
}

TEST(Collation, KeysOrderAsTextsDoWhateverTheirBytes) {
    std::mt19937 random(2);
    for (const UINT number : {65001u, 932u, 1252u, 1256u, 54936u}) {
        const ScopedCodePage page(number);
        const Collation& collation = Collation::ForLocale("ja_JP");
        for (int round = 0; round < 4000; ++round) {
            const std::string_view pieces = round % 2 ? "" : "aA\xC3\xA9\xEF\xBD\xB1\x82\xA0-\xFF";
            const std::string left = RandomText(random, pieces, 6);
            const std::string right = RandomText(random, pieces, 6);
            const std::string leftKey = FoldKey(collation, left);
            EXPECT_EQ(leftKey.find('\0'), leftKey.size() - 1);
            ASSERT_EQ(Sign(collation.Compare(left, right)),
                      Sign(leftKey.compare(FoldKey(collation, right))))
                << number << ": " << testing::PrintToString(left) << ' '
                << testing::PrintToString(right);
        }
    }
}

TEST(Collation, FollowsTheSystemsLocale) {
    const ScopedCodePage utf8(65001);
    test::TestSystem system;
    system.SetEnvironment("LC_ALL", "sv_SE.UTF-8");
    const ScopedSystem scope(system);
    EXPECT_LT(CompareIgnoringCaseKanaWidth("z", "ö"), 0);
}

} // namespace
} // namespace vnbytstr

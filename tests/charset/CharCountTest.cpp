// Counting characters, over every kernel of the machine; the oracle is a walk by CharLength. And
// where a text was cut within a character.
#include "src/charset/CodePage.h"
#include "tests/support/KernelTest.h"
#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace vnbytstr {
namespace {

std::size_t Walk(const CodePage& page, std::string_view text) {
    std::size_t count = 0;
    const char* const end = text.data() + text.size();
    for (const char* p = text.data(); p < end; p += page.CharLength(p, end))
        ++count;
    return count;
}

class CharCount : public test::KernelTest {};
VNBYTSTR_FOR_ALL_KERNELS(CharCount);

TEST_P(CharCount, AgreesWithAWalk) {
    std::mt19937 random(7);
    // Bytes of every kind, bytes that are nearly all lead or trail bytes, and edges of their
    // ranges.
    const std::string edges =
        "a\x7F\x80\x81\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xED\xEE\xEF"
        "\xF0\xF3\xF4\xF5\xFC\xFD\xFE\xFF";
    for (const UINT number : {932u, 936u, 949u, 950u, 65001u, 54936u, 51932u, 1252u}) {
        const CodePage& page = *CodePage::Find(number);
        for (int round = 0; round < 3000; ++round) {
            std::string text(random() % 400, '\0');
            for (char& byte : text)
                byte = round % 3 == 0   ? static_cast<char>(random())
                       : round % 3 == 1 ? static_cast<char>(0x80 | random())
                                        : edges[random() % edges.size()];
            ASSERT_EQ(page.CountChars(text), Walk(page, text)) << number << " round " << round;
        }
    }
}

TEST_P(CharCount, CountsWellFormedUtf8ByCodePoints) {
    std::mt19937 random(8);
    const CodePage& page = *CodePage::Find(65001);
    const std::vector<std::string> kinds = test::Split(
        "a \xC3\xA4 \xE3\x81\x82 \xF0\x9F\x98\x80 \xE0\xA0\x80 \xED\x9F\xBF \xF4\x8F\xBF\xBF");
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        const std::size_t count = random() % 300;
        for (std::size_t i = 0; i < count; ++i)
            text += kinds[random() % (round % 2 == 0 ? 3 : kinds.size())];
        ASSERT_EQ(page.CountChars(text), count);
    }
}

TEST(CutShort, TellsABeginningFromAWholeAndFromABrokenOne) {
    const auto isCut = [](UINT number, std::string_view text) {
        return CodePage::Find(number)->IsCutShort(text.data(), text.data() + text.size());
    };
    for (const char* text : {"\xE3", "\xE3\x81", "\xF0", "\xF0\x9F", "\xF0\x9F\x98", "\xC3", "\xE0",
                             "\xE0\xA0", "\xED\x80", "\xF4\x80\x80"})
        EXPECT_TRUE(isCut(65001, text)) << testing::PrintToString(text);
    for (const char* text : {"", "a", "\xC3\xA4", "\xE3\x81\x82", "\x81", "\xFF",
                             "\xE3"
                             "a",
                             "\xE0\x80", "\xED\xA0", "\xF4\x90", "\xC3\xA4\xA4"})
        EXPECT_FALSE(isCut(65001, text)) << testing::PrintToString(text);
    const std::pair<UINT, const char*> cut[] = {{932, "\x81"},
                                                {54936, "\x81"},
                                                {54936, "\x81\x30"},
                                                {54936, "\x81\x30\x81"},
                                                {51932, "\x8F\xB0"}};
    for (const auto& [page, text] : cut)
        EXPECT_TRUE(isCut(page, text)) << page;
    const std::pair<UINT, const char*> whole[] = {// B1: half-width katakana
                                                  {932, "\xB1"},           {932, "\x81\x40"},
                                                  {1252, "\x81"},          {54936, "\x81\x40"},
                                                  {54936, "\x81\x30\x20"}, {51932, "\xB0\xB0"}};
    for (const auto& [page, text] : whole)
        EXPECT_FALSE(isCut(page, text)) << page;
}

} // namespace
} // namespace vnbytstr

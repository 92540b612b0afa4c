// CCSID translation: what stands for lost characters, reports, stopping, layout, and the calls.
#include "src/charset/CodePage.h"
#include "tests/charset/CcsidOracle.h"
#include "tests/support/KernelTest.h"
#include "tests/support/Vectors.h"
#include "vnbytstr/Ccsid.h"

#include <gtest/gtest.h>

using vnbytstr::ScopedCodePage;
using namespace vnbytstr::test;

namespace {

class CcsidReport : public KernelTest {};
VNBYTSTR_FOR_ALL_KERNELS(CcsidReport);

TEST_P(CcsidReport, SubstitutionIsAsTheHeaderSays) {
    for (const auto& vector : ReadVectors("charset/data/substitution.vec")) {
        const auto from = static_cast<WORD>(std::stoi(vector[0])),
                   to = static_cast<WORD>(std::stoi(vector[1]));
        EXPECT_EQ(Translate(from, to, FromHex(vector[2])).text, FromHex(vector[3]))
            << Name(from, to);
    }
    // Shows nothing and has no form: left out, but counted.
    const Result joiner = Translate(1208, 37,
                                    "a\xE2\x80\x8D"
                                    "b");
    EXPECT_EQ(joiner.text, "\x81\x82");
    EXPECT_EQ(joiner.report.ullUntranslatable, 1u);
    EXPECT_EQ(Translate(1252, 37, "\r\n", 0, 16, translateSwapNewLine).text, "\x0D\x15");
    EXPECT_EQ(Translate(930, 819, "\x15\x25", 0, 16, translateSwapNewLine).text, "\x0A\x85");
}

TEST_P(CcsidReport, ReportTellsNumberAndPositionOfWhatWasLost) {
    std::string text(100, 'x');
    text += "\xE4\xB8\xAD"; // at 100
    text += std::string(50, 'y');
    text += "\xC3"; // malformed, at 153
    text += std::string(70, 'z');
    text += "\xF0\x9F\x98\x80\xE2\x82"; // at 224, and cut short at 228
    for (const WORD to : std::initializer_list<WORD>{37, 1252, 930, 1383}) {
        for (const std::size_t slice : {0u, 1u, 2u, 101u, 102u}) {
            const STranslationReport report = Translate(1208, to, text, slice, 9).report;
            EXPECT_EQ(report.ullConsumed, 230u);
            EXPECT_EQ(report.ullUntranslatable, to == 930 || to == 1383 ? 1u : 2u) << to;
            EXPECT_EQ(report.ullFirstUntranslatable, to == 930 || to == 1383 ? 224u : 100u)
                << to << " " << slice;
            EXPECT_EQ(report.ullMalformed, 2u);
            EXPECT_EQ(report.ullFirstMalformed, 153u);
        }
    }
    const STranslationReport clean = Translate(1208, 37, "abc").report;
    EXPECT_EQ(clean.ullUntranslatable, 0u);
    EXPECT_EQ(clean.ullFirstUntranslatable, STranslationReport::nowhere);
    EXPECT_EQ(clean.ullFirstMalformed, STranslationReport::nowhere);
}

TEST_P(CcsidReport, StopEndsAtTheFirstCharacterThatIsLost) {
    std::string text(1500, 'x');
    text += "\xE4\xB8\xAD";
    text += std::string(100, 'y');
    for (const std::size_t slice : {0u, 1u, 7u}) {
        const Result lost = Translate(1208, 1252, text, slice, 100, translateStop);
        EXPECT_EQ(lost.text, std::string(1500, 'x'));
        EXPECT_EQ(lost.report.ullFirstUntranslatable, 1500u);
        const Result broken = Translate(1208, 930,
                                        "ab\xFF"
                                        "cd",
                                        slice, 100, translateStop);
        EXPECT_EQ(broken.text, "\x62\x63");
        EXPECT_EQ(broken.report.ullFirstMalformed, 2u);
    }
    EXPECT_EQ(Translate(1208, 1252, "ab\xC3\xA4", 1, 1, translateStop).text, "ab\xE4");
    EXPECT_EQ(Translate(1208, 1252, "ab\xC3", 0, 9, translateStop).report.ullFirstMalformed, 2u);
}

TEST(CcsidTranslation, WholeTextAtOnce) {
    const BYTE text[] = {0xC8, 0x85, 0x93, 0x93, 0x96};
    BYTE out[8];
    DWORD length = sizeof out;
    EXPECT_TRUE(TranslateCCSID(37, 1202, text, 4, out, &length));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(out), length), std::string("H\0e\0l\0l\0", 8));
    length = 7;
    out[7] = 0x55;
    EXPECT_FALSE(TranslateCCSID(37, 1202, text, 5, out, &length)); // says what it would take
    EXPECT_EQ(length, 10u);
    EXPECT_EQ(out[7], 0x55);
    length = 0;
    EXPECT_TRUE(TranslateCCSID(37, 1202, nullptr, 0, nullptr, &length));
    EXPECT_FALSE(TranslateCCSID(37, 1202, nullptr, 3, out, &length));
    EXPECT_FALSE(TranslateCCSID(37, 4242, text, 5, out, &length));
    EXPECT_FALSE(TranslateCCSID(37, 1202, text, 5, out, nullptr));
    STranslationReport report;
    length = 8;
    const BYTE faces[] = {0xF0, 0x9F, 0x98, 0x80, 'a'};
    EXPECT_FALSE(TranslateCCSID(1208, 37, faces, 5, out, &length, nullptr, translateStop, &report));
    EXPECT_EQ(report.ullFirstUntranslatable, 0u);
    EXPECT_EQ(length, 0u);
    EXPECT_FALSE(TranslateEndEx(nullptr));
    EXPECT_FALSE(TranslateReportEx(nullptr, &report));
}

TEST(CcsidTranslation, ATranslationCanBeUsedAgain) {
    CCCSIDTranslation* translation = TranslateBeginEx(1208, 930);
    for (int round = 0; round < 3; ++round) {
        BYTE out[16];
        DWORD in = 2,
              length = sizeof out; // ends in the middle of a character and between SO and SI
        const BYTE kana[] = {0xE3, 0x81, 0x84};
        EXPECT_EQ(TranslateCCSIDEx(translation, kana, &in, out, &length, FALSE), translationDone);
        EXPECT_EQ(length, 0u);
        in = 1;
        length = sizeof out;
        EXPECT_EQ(TranslateCCSIDEx(translation, kana + 2, &in, out, &length, TRUE),
                  translationDone);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(out), length), "\x0E\x44\x82\x0F");
    }
    EXPECT_TRUE(TranslateEndEx(translation));
}

TEST(CcsidTranslation, LayoutReordersWholeParagraphs) {
    // Logical "abc <shalom>! (<x>)" in Windows Hebrew to visual EBCDIC Hebrew and back.
    const std::string line = "abc \xF9\xEC\xE5\xED (\xE0) \xE1 d(e)f\r\n";
    const std::string text = line + line + "\xF9\xEC x";
    SCCSIDLayout layout;
    layout.eToOrder = bidiVisual;
    layout.bMirror = TRUE;
    const std::string visual = Translate(1255, 424, text, 0, 32768, 0, &layout).text;
    // The Hebrew word and the letter in parentheses are one run, reversed and mirrored.
    const std::string expected = "abc \xE1 (\xE0) \xED\xE5\xEC\xF9 d(e)f\r\n";
    EXPECT_EQ(Translate(424, 1255, visual).text, expected + expected + "\xEC\xF9 x");
    for (const std::size_t slice : {1u, 3u, 11u})
        EXPECT_EQ(Translate(1255, 424, text, slice, 4, 0, &layout).text, visual);
    SCCSIDLayout back;
    back.eFromOrder = bidiVisual;
    back.bMirror = TRUE;
    EXPECT_EQ(Translate(424, 1255, visual, 5, 3, 0, &back).text, text);
    // What cannot be translated is at the beginning of its paragraph.
    const Result lost = Translate(1208, 424, "abc\nxy\xE4\xB8\xAD\n", 4, 100, 0, &layout);
    EXPECT_EQ(lost.report.ullUntranslatable, 1u);
    EXPECT_EQ(lost.report.ullFirstUntranslatable, 4u);
}

TEST(CcsidTranslation, LayoutShapesArabic) {
    SCCSIDLayout shape;
    shape.eShaping = bidiShape;
    const Result shaped = Translate(1256, 1200, "\xC8\xC8", 0, 64, 0, &shape); // two letters beh
    EXPECT_EQ(shaped.text, "\xFE\x91\xFE\x90");
    SCCSIDLayout unshape;
    unshape.eShaping = bidiUnshape;
    EXPECT_EQ(Translate(1200, 1256, shaped.text, 0, 64, 0, &unshape).text, "\xC8\xC8");
}

TEST(CcsidTranslation, NativeSet) {
    const std::pair<UINT, WORD> pages[] = {
        {1252, 1252}, {932, 932}, {1255, 1255}, {65001, 1208}, {28591, 819}};
    for (const auto& [page, ccsid] : pages) {
        const ScopedCodePage scope(page);
        EXPECT_EQ(GetNativeCCSID(), ccsid);
        EXPECT_TRUE(CanTranslateCCSID(GetNativeCCSID(), 37));
    }
    EXPECT_EQ((ScopedCodePage(1252), GetNativeEuroString()), "\x80");
    EXPECT_EQ((ScopedCodePage(65001), GetNativeEuroString()), "\xE2\x82\xAC");
    EXPECT_EQ((ScopedCodePage(28591), GetNativeEuroString()), "EUR");
}

TEST(CcsidTranslation, ExceptionSaysWhatIsWrong) {
    const auto message = [](WORD from, WORD to) {
        std::string text;
        try {
            ThrowTranslationException(from, to);
        } catch (CException* error) {
            const auto* translation = DYNAMIC_DOWNCAST(CTranslationException, error);
            EXPECT_NE(translation, nullptr);
            EXPECT_TRUE(translation && translation->m_wFrom == from && translation->m_wTo == to);
            char buffer[300];
            EXPECT_TRUE(error->GetErrorMessage(buffer, sizeof buffer));
            text = buffer;
            char small[8];
            EXPECT_TRUE(error->GetErrorMessage(small, sizeof small));
            EXPECT_EQ(std::string(small).size(), 7u);
            error->Delete();
        }
        return text;
    };
    EXPECT_NE(message(1208, 4242).find("CCSID 4242 is not known"), std::string::npos);
    EXPECT_NE(message(4242, 1208).find("CCSID 4242 is not known"), std::string::npos);
    EXPECT_NE(message(1208, 37).find("no form"), std::string::npos);
}

} // namespace

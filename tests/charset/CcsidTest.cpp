// CCSID translation against ICU's converters run over the whole text, in slices and output buffers
// of many sizes and with every kernel of the machine.
#include "vnbytstr/Ccsid.h"
#include "tests/charset/CcsidOracle.h"
#include "tests/support/KernelTest.h"
#include "tests/support/Vectors.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

using namespace vnbytstr::test;

namespace {

constexpr WORD kEbcdic[] = {37,   273,  277,  278,  280,  284,  285,  297,  420,  424,
                            500,  870,  871,  875,  1025, 1026, 1047, 1112, 1122, 1123,
                            1140, 1141, 1142, 1143, 1144, 1145, 1146, 1147, 1148, 1149,
                            1153, 1154, 1155, 1156, 1157, 1158, 1160, 838};
constexpr WORD kMixed[] = {930, 933, 935, 937, 939, 1364, 1371, 1388, 1390, 1399};
constexpr WORD kSingle[] = {819, 912,  913,  914,  915,  916,  813,  920,  921,  923,  1089,
                            367, 437,  850,  852,  855,  857,  858,  862,  864,  866,  874,
                            878, 1168, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258};
constexpr WORD kDouble[] = {932, 936, 949, 950, 943, 954, 964, 970, 1363, 1375, 1383, 1386, 1392};
constexpr WORD kUnicode[] = {1200, 1202, 1204, 1208, 13488, 17584, 1232, 1234};

std::vector<WORD> AllSets() {
    std::vector<WORD> all;
    for (const auto& sets : {std::span<const WORD>(kEbcdic), std::span<const WORD>(kMixed),
                             std::span<const WORD>(kSingle), std::span<const WORD>(kDouble),
                             std::span<const WORD>(kUnicode)})
        all.insert(all.end(), sets.begin(), sets.end());
    return all;
}

/// Lines in several scripts, punctuation beyond Latin 1, line ends, and a letter few sets hold.
const std::u16string& SampleText() {
    static const std::u16string text = [] {
        const std::u16string lines =
            u"The quick brown fox jumps over the lazy dog, 0123456789.\r\n"
            u"Zw\u00F6lf Boxk\u00E4mpfer jagen V\u00EDktor quer \u00FCber den gro\u00DFen Sylter "
            u"Deich\u2026\n"
            u"\u20AC 12,50 \u2013 \u201Cna\u00EFve caf\u00E9\u201D \u0141\u00F3d\u017A, "
            u"\u015Awi\u0119ty\n"
            u"\u0421\u044A\u0435\u0448\u044C \u0435\u0449\u0451 \u044D\u0442\u0438\u0445 "
            u"\u0431\u0443\u043B\u043E\u043A\r\n"
            u"\u0396\u03B5\u03C5\u03C2 \u03BA\u03B1\u03B9 \u03AC\u03BD\u03B5\u03BC\u03BF\u03C2; "
            u"\u05E9\u05DC\u05D5\u05DD \u0633\u0644\u0627\u0645\t\n"
            u"\u3044\u308D\u306F\u306B\u307B\u3078\u3068 \u30A2\u30A4\u30A6 \uFF71\uFF72 "
            u"\u65E5\u672C\u8A9E\u306E\u6587\u5B57\u5217\u8868\u4E88\u7533\r\n"
            u"\uD55C\uAE00 \uC774\uB984 \u6F22\u5B57 \u4E2D\u6587\u7B80\u4F53 "
            u"\u0E20\u0E32\u0E29\u0E32 \U0001F600\n";
        std::u16string whole;
        while (whole.size() < 12000)
            whole += lines;
        return whole;
    }();
    return text;
}

void ExpectSameReport(const STranslationReport& a, const STranslationReport& b,
                      const std::string& what) {
    SCOPED_TRACE(what);
    EXPECT_EQ(a.ullConsumed, b.ullConsumed);
    EXPECT_EQ(a.ullUntranslatable, b.ullUntranslatable);
    EXPECT_EQ(a.ullFirstUntranslatable, b.ullFirstUntranslatable);
    EXPECT_EQ(a.ullMalformed, b.ullMalformed);
    EXPECT_EQ(a.ullFirstMalformed, b.ullFirstMalformed);
}

void ExpectSame(const std::string& text, const std::string& oracle, const std::string& what) {
    if (text == oracle)
        return;
    const auto at = static_cast<std::size_t>(
        std::mismatch(text.begin(),
                      text.begin() +
                          static_cast<std::ptrdiff_t>(std::min(text.size(), oracle.size())),
                      oracle.begin())
            .first -
        text.begin());
    ADD_FAILURE() << what << ": " << text.size() << " bytes for " << oracle.size()
                  << ", other from " << at;
}

class Ccsid : public KernelTest {};
VNBYTSTR_FOR_ALL_KERNELS(Ccsid);

/// The oracle below has the same converters: only this tells whether they are the right ones.
TEST(CcsidTranslation, BytesAreThoseOfThePublishedTables) {
    for (const auto& vector : ReadVectors("charset/data/ccsid.vec")) {
        const auto ccsid = static_cast<WORD>(std::stoi(vector[0]));
        const std::string bytes = FromHex(vector[1]), wide = FromHex(vector[2]);
        EXPECT_EQ(Translate(ccsid, 1200, bytes).text, wide) << ccsid;
        EXPECT_EQ(Translate(1200, ccsid, wide).text, bytes) << ccsid;
    }
}

TEST_P(Ccsid, SlicesGiveWhatTheWholeGives) {
    const std::vector<WORD> sets = AllSets();
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const WORD from = sets[i];
        const std::string text = OracleConverter(from).Encode(SampleText());
        for (const WORD to :
             {WORD{1208}, i % 2 ? WORD{37} : WORD{930}, sets[(i + 7) % sets.size()]}) {
            if (to == from)
                continue;
            const std::string oracle = OracleTranslate(from, to, text);
            const Result whole = Translate(from, to, text);
            ExpectSame(whole.text, oracle, Name(from, to));
            EXPECT_EQ(whole.report.ullConsumed, text.size());
            const Result paged = Translate(from, to, text, 16384);
            ExpectSame(paged.text, oracle, Name(from, to) + " in slices of 16384");
            ExpectSameReport(paged.report, whole.report, Name(from, to));
            // Small slices of less text; its end may cut a character.
            const std::string part = text.substr(0, 3001);
            const std::string partOracle = OracleTranslate(from, to, part);
            const Result partWhole = Translate(from, to, part);
            for (const std::size_t slice : {1u, 2u, 3u, 7u}) {
                const Result sliced = Translate(from, to, part, slice);
                const std::string what = Name(from, to) + " in slices of " + std::to_string(slice);
                ExpectSame(sliced.text, partOracle, what);
                ExpectSameReport(sliced.report, partWhole.report, what);
            }
            ExpectSame(Translate(from, to, part, 16384, 1).text, partOracle,
                       Name(from, to) + " byte by byte");
            ExpectSame(Translate(from, to, part, 5, 3).text, partOracle,
                       Name(from, to) + " 5 into 3");
        }
    }
}

TEST_P(Ccsid, BrokenTextInSlicesIsReportedAsTheWhole) {
    std::mt19937 random(5);
    const WORD sources[] = {1200, 1202, 1204, 13488, 1208, 1232, 932, 930, 1392, 954, 964};
    const WORD targets[] = {1208, 1252, 37, 930};
    for (int round = 0; round < 20000; ++round) {
        const WORD from = sources[random() % std::size(sources)];
        const WORD to = targets[random() % std::size(targets)];
        const bool isWide = from == 1200 || from == 1202 || from == 1204 || from == 13488;
        std::string text;
        for (auto size = random() % 16; size > 0; --size) {
            if (isWide) { // lone surrogates, pairs, and others
                const auto low = static_cast<unsigned>(random() % 1024);
                const unsigned choices[] = {'A', 0xD800 + low, 0xDC00 + low, 0x3042};
                const unsigned unit = choices[random() % 4];
                text += static_cast<char>(from == 1202 ? unit : unit >> 8);
                text += static_cast<char>(from == 1202 ? unit >> 8 : unit);
            } else {
                text += static_cast<char>(random() % 3 == 0 ? 'a' : random());
            }
        }
        text.resize(text.size() - (text.empty() ? 0 : random() % 2)); // cut in a unit
        const Result whole = Translate(from, to, text);
        const Result sliced = Translate(from, to, text, 1 + random() % 5, random() % 2 ? 7 : 4096);
        const std::string what = Name(from, to) + " " + testing::PrintToString(text);
        ASSERT_EQ(sliced.text, whole.text) << what;
        ExpectSameReport(sliced.report, whole.report, what);
        EXPECT_TRUE(!isWide || whole.report.ullMalformed == 0 ||
                    whole.report.ullFirstMalformed % 2 == 0)
            << what;
    }
}

TEST_P(Ccsid, SingleByteSetsAgreeOnEveryPairOfBytes) {
    std::string pairs;
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second)
            pairs += {static_cast<char>(first), static_cast<char>(second)};
    }
    std::vector<WORD> sets(std::begin(kEbcdic), std::end(kEbcdic));
    sets.insert(sets.end(), std::begin(kSingle), std::end(kSingle));
    for (const WORD from : sets) {
        const std::u16string wide = OracleConverter(from).Decode(pairs);
        for (const WORD to : {WORD{37}, WORD{1252}, WORD{424}, WORD{1208}}) {
            if (to != from)
                ExpectSame(Translate(from, to, pairs).text, OracleConverter(to).Encode(wide),
                           Name(from, to));
        }
    }
    // The other direction, from UTF-8: every character of the first plane.
    std::u16string plane;
    for (unsigned c = 0; c < 0x10000; ++c) {
        if (c < 0xD800 || c > 0xDFFF)
            plane += {static_cast<char16_t>(c), u'a'};
    }
    const std::string text = OracleConverter(1208).Encode(plane);
    const std::u16string wide = OracleConverter(1208).Decode(text);
    for (const WORD to : sets)
        ExpectSame(Translate(1208, to, text).text, OracleConverter(to).Encode(wide),
                   Name(1208, to));
}

TEST_P(Ccsid, DoubleByteSetsAgreeOnEveryLeadAndTrailByte) {
    std::string pairs;
    for (int lead = 0; lead < 256; ++lead) {
        for (int trail = 0; trail < 256; ++trail)
            pairs += {static_cast<char>(lead), static_cast<char>(trail), 'z', '\n'};
    }
    for (const WORD from : kDouble) {
        for (const WORD to : std::initializer_list<WORD>{1200, 1202, 1208}) {
            const std::string oracle = OracleTranslate(from, to, pairs);
            ExpectSame(Translate(from, to, pairs).text, oracle, Name(from, to));
            ExpectSame(Translate(from, to, pairs, 7, 5).text, oracle, Name(from, to) + " 7 into 5");
        }
    }
}

TEST_P(Ccsid, RandomTextOfEverySize) {
    std::mt19937 random(20260101);
    const auto below = [&](std::size_t n) {
        return std::uniform_int_distribution<std::size_t>(0, n - 1)(random);
    };
    struct Pair {
        WORD from, to;
    };
    for (const Pair pair :
         {Pair{37, 1252}, Pair{1252, 1208}, Pair{1208, 1252}, Pair{1208, 37}, Pair{1251, 1208},
          Pair{37, 1208}, Pair{1208, 1251}, Pair{932, 1202}, Pair{932, 1200}, Pair{932, 1208},
          Pair{936, 1202}, Pair{1392, 1208}, Pair{954, 1202}, Pair{930, 1208}}) {
        const std::string sample = OracleConverter(pair.from).Encode(SampleText());
        for (int round = 0; round < 600; ++round) {
            // Stretches of plain letters, of real text, and of anything at all; sizes around 32
            // and 64.
            std::string text;
            const std::size_t size = below(4) == 0 ? below(2000) : 24 + below(48);
            while (text.size() < size) {
                const std::size_t stretch = 1 + below(40);
                const std::size_t kind = below(8);
                for (std::size_t i = 0; i < stretch && kind < 3; ++i)
                    text += static_cast<char>(pair.from == 37 ? 0xC1 + below(9) : 'a' + below(26));
                if (kind >= 3 && kind < 7)
                    text.append(sample, below(sample.size()), stretch);
                for (std::size_t i = 0; i < stretch / 8 && kind == 7; ++i)
                    text += static_cast<char>(below(256));
            }
            text.resize(size);
            const std::string oracle = OracleTranslate(pair.from, pair.to, text);
            const Result whole = Translate(pair.from, pair.to, text);
            ExpectSame(whole.text, oracle, Name(pair.from, pair.to));
            const Result sliced = Translate(pair.from, pair.to, text, 1 + below(70), 1 + below(70));
            ExpectSame(sliced.text, oracle, Name(pair.from, pair.to) + " sliced");
            ExpectSameReport(sliced.report, whole.report, Name(pair.from, pair.to));
        }
    }
}

TEST(CcsidTranslation, OnlyKnownPairsTranslate) {
    const std::vector<WORD> sets = AllSets();
    for (const WORD ccsid : sets) {
        EXPECT_TRUE(CanTranslateCCSID(ccsid, 1208)) << ccsid;
        EXPECT_TRUE(CanTranslateCCSID(1252, ccsid)) << ccsid;
        EXPECT_TRUE(CanTranslateCCSID(ccsid, ccsid)) << ccsid;
    }
    for (const WORD unknown : std::initializer_list<WORD>{0, 1, 38, 1259, 4242, 65535}) {
        EXPECT_FALSE(CanTranslateCCSID(unknown, 1208)) << unknown;
        EXPECT_FALSE(CanTranslateCCSID(1208, unknown)) << unknown;
        EXPECT_FALSE(CanTranslateCCSID(unknown, unknown)) << unknown;
        EXPECT_EQ(TranslateBeginEx(1208, unknown), nullptr);
    }
    // The number says what the bytes are, be they broken.
    EXPECT_EQ(Translate(1208, 1208, "a\xFF\xC3", 2, 2).text, "a\xFF\xC3");
}

} // namespace

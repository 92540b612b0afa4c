// CCSID translation against ICU's converters run over the whole text, in slices and output buffers
// of many sizes and with every kernel of the machine.
#include "vnbytstr/Ccsid.h"
#include "src/charset/CodePage.h"
#include "src/os/CpuKernel.h"
#include "tests/charset/CcsidOracle.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

using vnbytstr::AvailableKernels;
using vnbytstr::ForceKernel;
using vnbytstr::Kernel;
using vnbytstr::KernelName;
using vnbytstr::ScopedCodePage;
using vnbytstr::test::OracleConverter;
using vnbytstr::test::OracleTranslate;

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

struct Result {
    std::string text;
    STranslationReport report;
};

/// Translates in slices of `slice` bytes (0: all at once) into buffers of `room` bytes.
Result Translate(WORD from, WORD to, const std::string& text, std::size_t slice = 0,
                 std::size_t room = 32768, UINT options = 0, const SCCSIDLayout* layout = nullptr) {
    Result result;
    CCCSIDTranslation* translation = TranslateBeginEx(from, to, layout, options);
    if (!translation) {
        ADD_FAILURE() << from << " to " << to;
        return result;
    }
    std::string out(room, '\0');
    if (slice == 0)
        slice = std::max<std::size_t>(text.size(), 1);
    bool failed = false;
    for (std::size_t at = 0; !failed && (at < text.size() || at == 0); at += slice) {
        const std::size_t size = std::min(slice, text.size() - at);
        const BOOL last = at + size == text.size();
        std::size_t taken = 0;
        ETranslation status = translationMore;
        while (status == translationMore) {
            DWORD inLength = static_cast<DWORD>(size - taken), outLength = static_cast<DWORD>(room);
            status = TranslateCCSIDEx(
                translation, reinterpret_cast<const BYTE*>(text.data()) + at + taken, &inLength,
                reinterpret_cast<BYTE*>(out.data()), &outLength, last);
            taken += inLength;
            result.text.append(out, 0, outLength);
            if (status == translationMore && outLength != room) {
                ADD_FAILURE() << "asks for room that it has";
                break;
            }
        }
        failed = status == translationFailed;
        EXPECT_TRUE(failed || taken == size);
    }
    EXPECT_EQ(TranslateEndEx(translation, &result.report), failed ? FALSE : TRUE);
    EXPECT_EQ(result.report.ullProduced, result.text.size());
    return result;
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

std::string Name(WORD from, WORD to) { return std::to_string(from) + " to " + std::to_string(to); }

/// Runs the tests below once per kernel of the machine.
class Ccsid : public testing::TestWithParam<Kernel> {
protected:
    void SetUp() override { m_before = ForceKernel(GetParam()); }
    void TearDown() override { ForceKernel(m_before); }
    Kernel m_before = Kernel::Plain;
};
INSTANTIATE_TEST_SUITE_P(Kernels, Ccsid,
                         testing::ValuesIn(AvailableKernels().begin(), AvailableKernels().end()),
                         [](const auto& info) { return std::string(KernelName(info.param)); });

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

std::string Bytes(std::initializer_list<int> bytes) {
    std::string text;
    for (const int byte : bytes)
        text += static_cast<char>(byte);
    return text;
}

TEST_P(Ccsid, SubstitutionIsAsTheHeaderSays) {
    const auto last = [](WORD from, WORD to, const std::string& text) {
        return Translate(from, to, text).text;
    };
    const std::string ideograph = Bytes({'a', 0xE4, 0xB8, 0xAD, 'b'}),
                      face = Bytes({0xF0, 0x9F, 0x98, 0x80});
    EXPECT_EQ(last(1208, 37, ideograph), Bytes({0x81, 0x3F, 0x82}));
    EXPECT_EQ(last(1208, 930, face), Bytes({0x0E, 0xFE, 0xFE, 0x0F}));
    EXPECT_EQ(last(1208, 1252, ideograph), Bytes({'a', 0x1A, 'b'}));
    EXPECT_EQ(last(1208, 819, ideograph), Bytes({'a', 0x1A, 'b'}));
    EXPECT_EQ(last(1208, 874, ideograph), Bytes({'a', 0x3F, 'b'}));
    for (const WORD to : std::initializer_list<WORD>{936, 949, 950})
        EXPECT_EQ(last(1208, to, face), Bytes({0x3F}));
    EXPECT_EQ(last(1208, 932, face), Bytes({0xFC, 0xFC}));
    EXPECT_EQ(last(1208, 943, Bytes({0xC2, 0x81})), Bytes({0x7F}));
    EXPECT_EQ(last(1208, 943, face), Bytes({0xFC, 0xFC}));
    const std::string thorn = Bytes({0xC3, 0xBE}), tibetan = Bytes({0xE0, 0xBC, 0x80});
    for (const WORD to : std::initializer_list<WORD>{930, 935, 937, 939, 1371, 1388})
        EXPECT_EQ(last(1208, to, thorn), Bytes({0x3F})) << to;
    for (const WORD to :
         std::initializer_list<WORD>{930, 933, 935, 937, 939, 1364, 1371, 1390, 1399})
        EXPECT_EQ(last(1208, to, tibetan), Bytes({0x0E, 0xFE, 0xFE, 0x0F})) << to;
    const std::tuple<WORD, std::string, std::string> multi[] = {
        {WORD{954}, "", Bytes({0xF4, 0xFE})},
        {WORD{1375}, Bytes({0xA1, 0x48}), Bytes({0xA1, 0x48})},
        {WORD{943}, Bytes({0x7F}), Bytes({0xFC, 0xFC})},
        {WORD{1386}, Bytes({0x7F}), Bytes({0xA1, 0xA1})},
        {WORD{964}, Bytes({0x1A}), Bytes({0xFD, 0xFE})},
        {WORD{1383}, Bytes({0x1A}), Bytes({0xA1, 0xA1})}};
    for (const auto& [to, low, high] : multi) {
        if (!low.empty()) { // 954 has a thorn
            EXPECT_EQ(last(1208, to, thorn), low) << to;
        }
        EXPECT_EQ(last(1208, to, tibetan), high) << to;
    }
    EXPECT_EQ(last(1208, 970, tibetan), Bytes({0xAF, 0xFE}));
    EXPECT_EQ(last(1208, 1363, tibetan), Bytes({0xA1, 0xE0}));
    EXPECT_EQ(last(1208, 850, ideograph), Bytes({'a', 0x7F, 'b'}));
    EXPECT_EQ(last(1208, 1200, Bytes({0xFF})), Bytes({0xFF, 0xFD}));
    EXPECT_EQ(last(932, 1208, Bytes({0xFD})), Bytes({0x1A}));
    EXPECT_EQ(last(1255, 1208, Bytes({0xD9})), Bytes({0xEF, 0xBF, 0xBD}));
    // Shows nothing and has no form: left out, but counted.
    const Result joiner = Translate(1208, 37, Bytes({'a', 0xE2, 0x80, 0x8D, 'b'}));
    EXPECT_EQ(joiner.text, Bytes({0x81, 0x82}));
    EXPECT_EQ(joiner.report.ullUntranslatable, 1u);
    // The controls.
    EXPECT_EQ(last(1252, 37, "\r\n"), Bytes({0x0D, 0x25}));
    EXPECT_EQ(last(37, 1208, Bytes({0x15})), Bytes({0xC2, 0x85}));
    EXPECT_EQ(Translate(1252, 37, "\r\n", 0, 16, translateSwapNewLine).text, Bytes({0x0D, 0x15}));
    EXPECT_EQ(Translate(930, 819, Bytes({0x15, 0x25}), 0, 16, translateSwapNewLine).text,
              Bytes({0x0A, 0x85}));
    EXPECT_EQ(last(850, 1252, Bytes({0x1A, 0x1C, 0x7F})), Bytes({0x1C, 0x7F, 0x1A}));
}

TEST_P(Ccsid, ReportTellsNumberAndPositionOfWhatWasLost) {
    std::string text(100, 'x');
    text += Bytes({0xE4, 0xB8, 0xAD}); // at 100
    text += std::string(50, 'y');
    text += Bytes({0xC3}); // malformed, at 153
    text += std::string(70, 'z');
    text += Bytes({0xF0, 0x9F, 0x98, 0x80, 0xE2, 0x82}); // at 224, and cut short at 228
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

TEST_P(Ccsid, StopEndsAtTheFirstCharacterThatIsLost) {
    std::string text(1500, 'x');
    text += Bytes({0xE4, 0xB8, 0xAD});
    text += std::string(100, 'y');
    for (const std::size_t slice : {0u, 1u, 7u}) {
        const Result lost = Translate(1208, 1252, text, slice, 100, translateStop);
        EXPECT_EQ(lost.text, std::string(1500, 'x'));
        EXPECT_EQ(lost.report.ullFirstUntranslatable, 1500u);
        const Result broken = Translate(1208, 930,
                                        "ab\xFF"
                                        "cd",
                                        slice, 100, translateStop);
        EXPECT_EQ(broken.text, Bytes({0x62, 0x63}));
        EXPECT_EQ(broken.report.ullFirstMalformed, 2u);
    }
    EXPECT_EQ(Translate(1208, 1252, "ab\xC3\xA4", 1, 1, translateStop).text, "ab\xE4");
    EXPECT_EQ(Translate(1208, 1252, "ab\xC3", 0, 9, translateStop).report.ullFirstMalformed, 2u);
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

TEST(CcsidTranslation, ThreadsTranslateAtTheSameTime) {
    const std::string text = OracleConverter(1208).Encode(SampleText());
    const std::string oracle = OracleTranslate(1208, 939, text),
                      small = OracleTranslate(1208, 1250, text);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 10; ++i)
                wrong += Translate(1208, 939, text, 999).text != oracle ||
                         Translate(1208, 1250, text, 999).text != small;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace

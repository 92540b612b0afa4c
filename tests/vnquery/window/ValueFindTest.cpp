// Finding a text in a value: against a search in one piece.
#include "examples/vnquery/window/ValueFind.h"

#include "tests/vnquery/result/MakeValue.h"

#include <gtest/gtest.h>

#include <random>

namespace vnquery::test {
namespace {

using Hit = ValueFind::Hit;

std::optional<Hit> FindIn(const Value& value, const char* needle, DWORD from, bool forward) {
    ValueFind find(value, QString::fromUtf8(needle), from, forward);
    while (find.Step()) {
    }
    return find.GetHit();
}

TEST(ValueFind, HitsAreFoundAcrossStepsAndPastTheEnds) {
    constexpr DWORD kStep = 1 << 20;
    std::string text(3 * kStep, 'x');
    const std::string word = "Gr\xC3\xB6\xC3\x9F"
                             "e"; // "Größe"
    const DWORD places[] = {5, kStep - 3, 2 * kStep - 1};
    for (const DWORD place : places)
        text.replace(place, word.size(), word);
    text[kStep + 50] = '\xFF'; // bytes that are not UTF-8
    text[2 * kStep - 2] = '\x80';
    const Value value = MakeValue(Value::Type::Text, text);
    for (int i = 0; i < 3; ++i) {
        for (const auto& [from, forward, expected] :
             {std::tuple(places[i], true, places[i]),
              std::tuple(places[i] + 1, true, places[(i + 1) % 3]),
              std::tuple(places[i], false, places[(i + 2) % 3]),
              std::tuple(places[i] + 1, false, places[i])}) {
            const std::optional<Hit> hit = FindIn(value,
                                                  "gr\xC3\x96\xC3\x9F"
                                                  "E",
                                                  from, forward);
            ASSERT_TRUE(hit) << i;
            EXPECT_EQ(hit->begin, expected) << from << forward;
            EXPECT_EQ(hit->end - hit->begin, word.size());
        }
    }
    EXPECT_FALSE(FindIn(value, "Grobe", 7, true));
    EXPECT_FALSE(FindIn(Value(), "x", 0, false));
}

/// Qt and BytesOfUnits agree about every byte, valid or not.
TEST(ValueFind, UnitsAreThoseOfTheDecodedText) {
    std::mt19937 random(7);
    const unsigned char bytes[] = {0x00, 0x41, 0x80, 0x9F, 0xA0, 0xBF, 0xC0, 0xC3, 0xE0, 0xE2, 0xED,
                                   0xEF, 0xBB, 0xF0, 0x90, 0xF4, 0xF8, 0xFE, 0xFF, 0x0D, 0x0A};
    for (int i = 0; i < 20000; ++i) {
        std::string text(random() % 12, '\0');
        for (char& ch : text)
            ch = static_cast<char>(bytes[random() % std::size(bytes)]);
        const QString decoded = DecodeText(text);
        ASSERT_EQ(BytesOfUnits(text, decoded.size()), text.size());
        ASSERT_EQ(decoded.isEmpty(), text.empty());
        if (!decoded.isEmpty() && !decoded.back().isLowSurrogate()) {
            ASSERT_LT(BytesOfUnits(text, decoded.size() - 1), text.size());
        }
    }
}

} // namespace
} // namespace vnquery::test

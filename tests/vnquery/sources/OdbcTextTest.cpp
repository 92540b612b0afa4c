#include "examples/vnquery/sources/OdbcText.h"

#include "vnbytstr/ByteStream.h"

#include <bit>
#include <random>

#include <gtest/gtest.h>

namespace vnquery {
namespace {

std::string Translate(const std::vector<SQLWCHAR>& units) {
    CByteStream stream(reinterpret_cast<const BYTE*>(units.data()),
                       static_cast<DWORD>(units.size() * sizeof(SQLWCHAR)));
    stream.TranslateCCSID(std::endian::native == std::endian::little ? 1202 : 1200, 1208);
    std::string text(stream.GetLength(), '\0');
    if (!text.empty())
        stream.CopyTo(0, reinterpret_cast<BYTE*>(text.data()), stream.GetLength(), 0);
    return text;
}

/// Whole and in pieces, as the library translates it: pairs, halves of pairs in any order, all
/// lengths of characters.
TEST(OdbcText, IsConvertedAsByTheLibrary) {
    std::mt19937 random(8);
    constexpr SQLWCHAR kEdges[] = {0,      'a',    0x7F,   0x80,   0x7FF,  0x800,  0xD7FF, 0xD800,
                                   0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFE, 0xFFFF};
    for (int round = 0; round < 2000; ++round) {
        std::vector<SQLWCHAR> units(1 + random() % 40);
        for (SQLWCHAR& unit : units)
            unit = random() % 3 ? kEdges[random() % std::size(kEdges)]
                                : static_cast<SQLWCHAR>(random() % 128);
        const std::string expected = Translate(units);
        ASSERT_EQ(FromWide(units.data(), units.size()), expected);
        WideTextDecoder decoder;
        std::string inPieces;
        for (std::size_t at = 0, count = 0; at < units.size(); at += count) {
            count = std::min<std::size_t>(random() % 4, units.size() - at);
            const bool isLast = at + count == units.size();
            inPieces += decoder.Decode(units.data() + at, count, isLast);
        }
        ASSERT_EQ(inPieces, expected);
    }
    EXPECT_EQ(FromWide(nullptr, 0), "");
}

} // namespace
} // namespace vnquery

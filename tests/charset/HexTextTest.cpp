#include "src/charset/HexText.h"

#include "tests/support/KernelTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <random>
#include <string>
#include <vector>

using namespace vnbytstr;
using namespace vnbytstr::detail;

namespace {

using Bytes = std::vector<BYTE>;

std::string NaiveHex(const Bytes& bytes, const char* separator, bool lower) {
    std::string text;
    for (BYTE byte : bytes) {
        char pair[8];
        std::snprintf(pair, sizeof pair, lower ? "%02x" : "%02X", static_cast<unsigned>(byte));
        text += (text.empty() ? "" : separator) + std::string(pair);
    }
    return text;
}

// Decodes by looking at each character.
Bytes NaiveDecode(const std::string& text) {
    Bytes bytes;
    for (std::size_t i = 0;; i += 2) {
        i = std::min(text.find_first_not_of(' ', i), text.size());
        if (text.size() - i < 2 || !std::isxdigit(static_cast<BYTE>(text[i])) ||
            !std::isxdigit(static_cast<BYTE>(text[i + 1])))
            return bytes;
        bytes.push_back(static_cast<BYTE>(std::stoul(text.substr(i, 2), nullptr, 16)));
    }
}

// Decodes in pieces of `capacity` bytes until the text ends.
Bytes DecodeInPieces(const std::string& text, std::size_t capacity) {
    Bytes bytes;
    std::size_t at = 0;
    for (;;) {
        Bytes piece(capacity);
        const HexDecoded done =
            DecodeHex(text.data() + at, text.size() - at, piece.data(), capacity);
        EXPECT_LE(done.consumed, text.size() - at);
        bytes.insert(bytes.end(), piece.begin(),
                     piece.begin() + static_cast<std::ptrdiff_t>(done.produced));
        at += done.consumed;
        if (done.ended)
            return bytes;
        EXPECT_EQ(done.produced, capacity);
    }
}

class HexText : public test::KernelTest {
protected:
    Bytes Random(std::size_t size) {
        Bytes bytes(size);
        for (BYTE& byte : bytes)
            byte = static_cast<BYTE>(m_random());
        return bytes;
    }

    std::mt19937 m_random{7};
};
VNBYTSTR_FOR_ALL_KERNELS(HexText);

} // namespace

TEST_P(HexText, EncodesEveryByteAtEverySize) {
    for (std::size_t size = 0; size <= 300; ++size) {
        Bytes bytes(size);
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<BYTE>(i + size);
        for (bool lower : {false, true}) {
            const HexCase digits = lower ? HexCase::Lower : HexCase::Upper;
            std::string text(2 * size + 1, '#');
            EncodeHex(bytes, text.data(), digits);
            ASSERT_EQ(text, NaiveHex(bytes, "", lower) + "#");
            std::string spaced(size == 0 ? 1 : 3 * size, '#');
            EncodeHexSpaced(bytes, spaced.data(), digits);
            ASSERT_EQ(spaced, NaiveHex(bytes, " ", lower) + "#");
        }
    }
}

// As much as goes past the caches, at every kind of address, against the same in small pieces.
TEST_P(HexText, EncodesManyBytesAsItEncodesFew) {
    constexpr std::size_t kSize = (std::size_t{8} << 20) + 77;
    constexpr std::size_t kPiece = 1000;
    Bytes bytes(kSize);
    std::mt19937 random(8);
    for (BYTE& byte : bytes)
        byte = static_cast<BYTE>(random());
    for (const std::size_t offset : {0u, 1u, 2u, 6u, 17u, 31u}) {
        std::string text(offset + 2 * kSize + 1, '#');
        std::string expected = text;
        EncodeHex(bytes, text.data() + offset, HexCase::Lower);
        for (std::size_t at = 0; at < kSize; at += kPiece)
            EncodeHex(std::span(bytes).subspan(at, std::min(kPiece, kSize - at)),
                      expected.data() + offset + 2 * at, HexCase::Lower);
        ASSERT_TRUE(text == expected) << "offset " << offset;
        std::string spaced(offset + 3 * kSize, '#');
        expected.assign(offset + 3 * kSize, '#');
        EncodeHexSpaced(bytes, spaced.data() + offset, HexCase::Upper);
        for (std::size_t at = 0; at < kSize; at += kPiece) {
            const std::size_t count = std::min(kPiece, kSize - at);
            EncodeHexSpaced(std::span(bytes).subspan(at, count), expected.data() + offset + 3 * at,
                            HexCase::Upper);
            if (at + count < kSize)
                expected[offset + 3 * (at + count) - 1] = ' ';
        }
        ASSERT_TRUE(spaced == expected) << "offset " << offset;
    }
}

TEST_P(HexText, DecodesWhatWasEncodedInPiecesOfAnySize) {
    for (std::size_t size : {0u, 1u, 31u, 32u, 33u, 64u, 100u, 1000u}) {
        const Bytes bytes = Random(size);
        for (const char* separator : {"", " ", "   "}) {
            for (bool lower : {false, true}) {
                const std::string text = NaiveHex(bytes, separator, lower);
                for (std::size_t capacity : {1u, 7u, 32u, 65u, 65536u})
                    ASSERT_EQ(DecodeInPieces(text, capacity), bytes) << text;
            }
        }
    }
}

// Every pair of characters, at the start, inside and at the end of what is decoded at once.
TEST_P(HexText, EndsAtTheFirstCharacterThatIsNoDigit) {
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            for (std::size_t at : {0u, 30u, 62u, 126u}) {
                std::string text(140, '5');
                text[at] = static_cast<char>(first);
                text[at + 1] = static_cast<char>(second);
                ASSERT_EQ(DecodeInPieces(text, 200), NaiveDecode(text))
                    << first << ' ' << second << " at " << at;
            }
        }
    }
}

TEST_P(HexText, DecodesRandomText) {
    const std::string alphabet = "0123456789ABCDEFabcdef    g";
    for (int round = 0; round < 20000; ++round) {
        const std::size_t kinds = round % 3 == 0 ? 22 : round % 3 == 1 ? 26 : 27;
        std::string text(m_random() % 200, ' ');
        for (char& digit : text)
            digit = alphabet[m_random() % kinds];
        ASSERT_EQ(DecodeInPieces(text, 1 + m_random() % 100), NaiveDecode(text)) << text;
    }
}

TEST_P(HexText, DropsALoneDigitAndLeavesTheRestAlone) {
    BYTE out[8] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    HexDecoded done = DecodeHex(" 0a1B ff4", 9, out, sizeof out);
    EXPECT_TRUE(done.ended);
    EXPECT_EQ(done.produced, 3u);
    EXPECT_EQ(out[3], 0xEE);
    done = DecodeHex("0x12", 4, out, sizeof out);
    EXPECT_TRUE(done.ended);
    EXPECT_EQ(done.produced, 0u);
    done = DecodeHex("12\0"
                     "34",
                     5, out, sizeof out);
    EXPECT_TRUE(done.ended);
    EXPECT_EQ(done.produced, 1u);
    done = DecodeHex("1234", 4, out, 2);
    EXPECT_FALSE(done.ended);
    EXPECT_EQ(done.consumed, 4u);
    done = DecodeHex("", 0, out, 2);
    EXPECT_TRUE(done.ended);
}

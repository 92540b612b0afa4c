// Marks, the Unicode statistic, byte order and renderings, against independent one-line oracles.
#include "vnbytstr/TextEncoding.h"

#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <bitset>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <numeric>
#include <string>

namespace {

using Bytes = std::string;
using vnbytstr::test::BytesOf;
using vnbytstr::test::StringOf;

int IsUnicode(const Bytes& bytes, int& bigEndian) {
    Bytes padded = bytes + Bytes(4, '\x7F'); // 4 bytes are looked at whatever the length
    return IsUnicodeText(reinterpret_cast<const unsigned char*>(padded.data()),
                         static_cast<DWORD>(bytes.size()), bigEndian);
}

struct Delete {
    void operator()(char* block) const { ::operator delete(block); }
};
using NewBlock = std::unique_ptr<char, Delete>;

NewBlock CopyToBlock(const Bytes& bytes) {
    NewBlock block(static_cast<char*>(::operator new(bytes.size() + 1)));
    std::memcpy(block.get(), bytes.data(), bytes.size());
    return block;
}

} // namespace

TEST(IsUnicodeText, MarksInTheirOrder) {
    struct Case {
        Bytes bytes;
        int unicode, bigEndian;
    };
    using namespace std::string_literals;
    const Case cases[] = {
        {"\xFF\xFE\x41\x00"s, 1, 0},
        {"\xFE\xFF\x00\x41"s, 1, 1},
        {"\xEF\xBB\xBF\x41"s, 1, 0},
        {"\xFF\xFE\x00\x00"s, 1, 0},
        {"\x00\x00\xFE\xFF"s, 1, 1},
        {"\xFF\xFE"s, 1, 0},
        {"\xEF\xBB\x41\x42"s, 0, 0},
        {"\xFF\x41\x42\x43"s, 0, 0},
        {"ABCD"s, 0, 0},
        {""s, 0, 0},
        {"A\0B\0"s, 1, 0},
        {"\x00\x00\xFF\xFE"s, 1, 0},
    };
    for (const Case& one : cases) {
        int bigEndian = 7;
        EXPECT_EQ(IsUnicode(one.bytes, bigEndian), one.unicode)
            << testing::PrintToString(one.bytes);
        EXPECT_EQ(bigEndian, one.bigEndian) << testing::PrintToString(one.bytes);
    }
}

TEST(IsUnicodeText, MoreThanFivePercentZeros) {
    int bigEndian = 0;
    for (int length = 1; length < 300; ++length) {
        for (int zeros = 0; zeros <= length; ++zeros) {
            const Bytes text = Bytes(static_cast<std::size_t>(length - zeros), 'x') +
                               Bytes(static_cast<std::size_t>(zeros), '\0');
            ASSERT_EQ(IsUnicode(text, bigEndian), zeros * 20 > length) << zeros << " of " << length;
        }
    }
}

TEST(ByteOrderMark, IsFoundAndCut) {
    const auto isPresent = [](const char* bytes) {
        return IsBOMPresent(reinterpret_cast<const unsigned char*>(bytes));
    };
    EXPECT_EQ(isPresent("\xFF\xFE"), 1);
    EXPECT_EQ(isPresent("\xFE\xFF"), 0);
    EXPECT_EQ(isPresent("\xEF\xBB\xBF"), 0);

    const auto cut = [](const Bytes& bytes, int expected) {
        auto* block = static_cast<unsigned short*>(std::malloc(bytes.size()));
        std::memcpy(block, bytes.data(), bytes.size());
        auto size = static_cast<DWORD>(bytes.size());
        EXPECT_EQ(CutBOM(block, size), expected);
        EXPECT_EQ(size, bytes.size());
        Bytes after(reinterpret_cast<char*>(block), bytes.size());
        std::free(block);
        return after;
    };
    using namespace std::string_literals;
    EXPECT_EQ(cut("\xFF\xFE\x41\x00\x42\x00"s, 1), "\x41\x00\x42\x00\x00\x00"s);
    EXPECT_EQ(cut("\x41\x00\x42\x00"s, 0), "\x41\x00\x42\x00"s);
    EXPECT_EQ(cut("\xFF\xFE\x41"s, 1), "\x41\x00\x00"s);
    EXPECT_EQ(cut("\xFF\xFE"s, 1), "\x00\x00"s);
}

TEST(ByteOrder, WordIsSwappedAndDoubleWordIsNot) {
    for (unsigned word = 0; word < 0x10000; ++word)
        ASSERT_EQ(WordBE2LE(static_cast<unsigned short>(word)),
                  __builtin_bswap16(static_cast<unsigned short>(word)));
    EXPECT_EQ(DWordBE2LE(0x12345678), 0x07D63412u);
    EXPECT_EQ(DWordBE2LE(0x01020304), 0x00430201u);
    EXPECT_EQ(DWordBE2LE(0xFFFFFFFF), 0x10EFFFFFu);
    EXPECT_EQ(DWordBE2LE(0x000000FF), 0x0FF00000u);
}

TEST(Rendering, HexAndBinaryOfEverySize) {
    for (const std::size_t size : {0u, 1u, 2u, 33u, 300u}) {
        Bytes bytes(size, '\0');
        std::iota(bytes.begin(), bytes.end(), '\x7E');
        for (const bool spaced : {false, true}) {
            std::string hex, bin;
            for (const char byte : bytes) {
                char digits[3];
                std::snprintf(digits, sizeof digits, "%02X",
                              static_cast<unsigned>(static_cast<BYTE>(byte)));
                const char* const blank = spaced && !hex.empty() ? " " : "";
                hex += std::string(blank) + digits;
                bin += blank + std::bitset<8>(static_cast<BYTE>(byte)).to_string();
            }
            CString text = StringOf(bytes);
            const CString copy = text; // shares the characters
            FormatStringAsHex(text, spaced);
            ASSERT_EQ(BytesOf(text), hex);
            ASSERT_EQ(BytesOf(copy), bytes);
            text = copy;
            FormatStringAsHex2(text, spaced, true);
            ASSERT_EQ(BytesOf(text), hex);
            text = copy;
            FormatStringAsBin(text, spaced, true, true);
            ASSERT_EQ(BytesOf(text), bin);
            if (spaced)
                continue;
            NewBlock block = CopyToBlock(bytes);
            char* buffer = block.release();
            DWORD length = 1;
            ASSERT_TRUE(FormatBufferAsHex(buffer, static_cast<DWORD>(size), length));
            block.reset(buffer);
            ASSERT_EQ(length, 2 * size);
            ASSERT_STREQ(buffer, hex.c_str());
        }
    }
}

TEST(FormatBufferAsHex, RefusesWhatPasses32Bits) {
    char byte = 'x';
    char* buffer = &byte;
    DWORD length = 77;
    EXPECT_FALSE(FormatBufferAsHex(buffer, 0x80000000, length));
    EXPECT_EQ(buffer, &byte);
    EXPECT_EQ(length, 77u);
}

TEST(UrlText, EveryCharacterByTheListedSets) {
    const std::string encoded = " !\"#$%&'(),:;<=>?[\\]^`{|}~\x7F";
    std::string source, expected;
    for (int code = 1; code < 256; ++code) {
        char character = static_cast<char>(code);
        char buffer[8];
        std::memset(buffer, 'z', sizeof buffer);
        char* destination = buffer;
        URLEncodeChar(character, destination);
        char wanted[4] = {character, '\0'};
        if (encoded.find(character) != std::string::npos)
            std::snprintf(wanted, sizeof wanted, "%%%x", static_cast<unsigned>(code));
        EXPECT_EQ(destination, buffer);
        EXPECT_STREQ(buffer, wanted);
        EXPECT_EQ(buffer[4], 'z');
        source += character;
        expected += wanted;
    }
    for (const bool last : {true, false}) {
        char* result = nullptr;
        EXPECT_EQ(URLEncodeStr(source.c_str(), result, last), expected.size() + (last ? 0 : 1));
        const NewBlock block(result);
        EXPECT_EQ(std::string(result), expected + (last ? "" : "&"));
        for (std::size_t i = std::strlen(result); i < 6 * source.size() + 1; ++i)
            ASSERT_EQ(result[i], '\0') << i;
    }
}

TEST(UrlText, EmptyAndShortSources) {
    const auto encode = [](const char* source, bool last) {
        char* result = nullptr;
        const DWORD count = URLEncodeStr(source, result, last);
        const NewBlock block(result);
        EXPECT_EQ(std::strlen(result), count);
        return std::string(result);
    };
    EXPECT_EQ(encode("", false), "&");
    EXPECT_EQ(encode("", true), "");
    EXPECT_EQ(encode(nullptr, false), "&");
    EXPECT_EQ(encode(" ", false), "%20&");
    EXPECT_EQ(encode("a b&c", false), "a%20b%26c&");
    EXPECT_EQ(encode("a b&c", true), "a%20b%26c");
}

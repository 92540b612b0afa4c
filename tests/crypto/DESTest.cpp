// CDES and its exception: published answers, OpenSSL, and the rules of lengths, padding and
// segments.
#include "vnbytstr/DES.h"
#include "tests/crypto/DesOracle.h"
#include "tests/support/KernelTest.h"
#include "tests/support/Vectors.h"
#include "vnbytstr/ByteStream.h"
#include "vnbytstr/CryptoException.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

namespace vnbytstr::test {
namespace {

using Bytes = std::vector<BYTE>;

Bytes Hex(const std::string& digits) {
    const std::string bytes = FromHex(digits);
    return {bytes.begin(), bytes.end()};
}

/// OpenSSL over whole blocks, chained when `iv` is given.
Bytes OpenSsl(const Bytes& bytes, const Bytes& key, bool encrypt, const Bytes* iv) {
    Bytes chain = iv ? *iv : Bytes(8);
    return DesOracle(bytes, key, encrypt, iv ? chain.data() : nullptr);
}

/// Runs one call of the cipher, with room as the size query says; the result with all bytes
/// written.
Bytes RunCipher(CDES& cipher, bool encrypt, const Bytes& in, int& length) {
    Bytes padded(in);
    padded.resize(in.size() + 8);
    int room = 0;
    const int size = static_cast<int>(in.size());
    if (encrypt)
        cipher.Encrypt(padded.data(), size, nullptr, room);
    else
        cipher.Decrypt(padded.data(), size, nullptr, room);
    room = (room + 7) / 8 * 8;
    Bytes out(static_cast<std::size_t>(room));
    length = room;
    BYTE nothing[8];
    BYTE* to = out.empty() ? nothing : out.data();
    encrypt ? cipher.Encrypt(padded.data(), size, to, length)
            : cipher.Decrypt(padded.data(), size, to, length);
    return out;
}

class DESTest : public KernelTest {
protected:
    std::mt19937 m_random{11};
};
VNBYTSTR_FOR_ALL_KERNELS(DESTest);

TEST_P(DESTest, GivesThePublishedAnswers) {
    const auto vectors = ReadVectors("crypto/data/des.vec");
    EXPECT_EQ(vectors.size(), 64u + 56 + 32 + 19 + 1);
    for (const auto& vector : vectors) {
        CDES des(Hex(vector[0]).data(), 8);
        int length;
        EXPECT_EQ(RunCipher(des, true, Hex(vector[1]), length), Hex(vector[2])) << vector[0];
        EXPECT_EQ(RunCipher(des, false, Hex(vector[2]), length), Hex(vector[1])) << vector[0];
    }
}

TEST_P(DESTest, PassesRivestsTest) {
    // R. Rivest, Testing Implementations of DES, 1985: every kind of single fault shows in X16.
    Bytes x = Hex("9474B8E8C73BCA7D");
    for (int i = 0; i < 16; ++i) {
        CDES des(x.data(), 8);
        int length;
        x = RunCipher(des, i % 2 == 0, x, length);
    }
    EXPECT_EQ(x, Hex("1B1A2DDB4C642438"));
}

TEST_P(DESTest, AgreesWithOpenSslForAllLengths) {
    const int cases = 50000;
    for (int i = 0; i < cases; ++i) {
        Bytes in(m_random() % (i % 50 == 0 ? 5000 : 90)), key(m_random() % 11), iv(8);
        for (Bytes* bytes : {&in, &key, &iv})
            for (BYTE& byte : *bytes)
                byte = static_cast<BYTE>(m_random());
        CDES des(key.data(), static_cast<int>(key.size()));
        des.SetInitializationVector(iv.data(), 8);
        const bool chained = m_random() % 2, pad = m_random() % 2;
        des.SetMode(chained ? CDES::eCBC : static_cast<CDES::EMode>(m_random() % 2 ? 0 : 7));
        des.SetPad(pad);
        Bytes padded(in);
        if (pad)
            padded.resize(in.size() + 8 - in.size() % 8, static_cast<BYTE>(8 - in.size() % 8));
        int length;
        const Bytes cipher = RunCipher(des, true, in, length);
        ASSERT_EQ(cipher, OpenSsl(padded, key, true, chained ? &iv : nullptr));
        ASSERT_EQ(length, static_cast<int>(padded.size())); // not rounded without padding
        const Bytes back = RunCipher(des, false, cipher, length);
        ASSERT_EQ(Bytes(back.begin(), back.begin() + static_cast<std::ptrdiff_t>(in.size())), in);
        ASSERT_EQ(length, static_cast<int>(pad ? in.size() : cipher.size()));
        const Bytes garbage = RunCipher(des, false, in, length); // what was never enciphered
        des.SetPad(false);
        ASSERT_EQ(garbage, OpenSsl(in, key, false, chained ? &iv : nullptr));
    }
}

TEST_P(DESTest, SegmentsContinueOneChain) {
    Bytes in(64);
    for (BYTE& byte : in)
        byte = static_cast<BYTE>(m_random());
    const Bytes key = Hex("133457799BBCDFF1"), iv = Hex("0011223344556677");
    const Bytes whole = OpenSsl(in, key, true, &iv);
    CDES des(key.data(), 8);
    des.SetInitializationVector(iv.data(), 8);
    des.SetMode(CDES::eCBC);
    des.SetSegmented(true);
    const auto segment = [&](std::size_t from, std::size_t to, bool encrypt, const Bytes& bytes) {
        int length;
        return RunCipher(des, encrypt,
                         Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                               bytes.begin() + static_cast<std::ptrdiff_t>(to)),
                         length);
    };
    Bytes joined = segment(0, 8, true, in);
    // Another vector does not begin a new run; a partial last block does not enter the chain.
    des.SetInitializationVector("other");
    segment(8, 8, true, in);
    Bytes partial = segment(8, 29, true, in);
    joined.insert(joined.end(), partial.begin(), partial.begin() + 16);
    const Bytes rest = segment(24, 64, true, in);
    joined.insert(joined.end(), rest.begin(), rest.end());
    EXPECT_EQ(joined, whole);
    des.SetKey(key.data(), 8); // ends the run, and the flag
    EXPECT_FALSE(des.GetSegmented());
    des.SetInitializationVector(iv.data(), 8);
    des.SetSegmented(true);
    Bytes back = segment(0, 24, false, whole);
    const Bytes more = segment(24, 64, false, whole);
    back.insert(back.end(), more.begin(), more.end());
    EXPECT_EQ(back, in);
    des.SetMode(CDES::eECB); // which has no chain
    EXPECT_EQ(segment(0, 64, true, in), OpenSsl(in, key, true, nullptr));
}

TEST(DES, SizesAndErrors) {
    CDES des("12345678");
    const auto query = [&](int length, bool encrypt, bool pad) {
        des.SetPad(pad);
        int room = -1;
        encrypt ? des.Encrypt(nullptr, length, nullptr, room)
                : des.Decrypt(nullptr, length, nullptr, room);
        return room;
    };
    EXPECT_EQ(query(0, true, false), 0);
    EXPECT_EQ(query(9, true, false), 16);
    EXPECT_EQ(query(0, true, true), 8);
    EXPECT_EQ(query(8, true, true), 16);
    EXPECT_EQ(query(9, false, true), 9);
    EXPECT_EQ(query(0x7FFFFFFF, true, true) % 8, 0);

    Bytes in(13), out(16, 0xEE);
    const auto fails = [&](bool encrypt, int room) -> std::string {
        int length = room;
        try {
            encrypt ? des.Encrypt(in.data(), 13, out.data(), length)
                    : des.Decrypt(in.data(), 8, out.data(), length);
        } catch (CCryptoException* error) {
            char text[60];
            error->GetErrorMessage(text, static_cast<int>(sizeof text));
            error->Delete();
            EXPECT_EQ(length, std::max(room, 0) / 8 * 8);
            return text;
        }
        return "";
    };
    des.SetPad(false);
    EXPECT_EQ(fails(true, -9), "Cryptographic error 0 (DES,767)");
    EXPECT_EQ(fails(true, 15), "Cryptographic error 0 (DES,767)");
    EXPECT_EQ(fails(false, 7), "Cryptographic error 0 (DES,868)");
    EXPECT_EQ(out, Bytes(16, 0xEE));
    EXPECT_EQ(fails(true, 16), "");

    EXPECT_EQ(CDES("123456789").GetKey()[7], '8');
    const CDES copy(des), brief("1234");
    EXPECT_EQ(Bytes(copy.GetKey(), copy.GetKey() + 8),
              Bytes({'1', '2', '3', '4', '5', '6', '7', '8'}));
    EXPECT_EQ(Bytes(brief.GetKey(), brief.GetKey() + 8), Bytes({'1', '2', '3', '4', 0, 0, 0, 0}));
    const CDES negative(reinterpret_cast<const BYTE*>("abcdefgh"), -1);
    EXPECT_EQ(negative.GetKey()[7], 'h');

    CCryptoException nameless(5, 7, ""), path(-2, 3, "a.b/c\\file.x.cpp");
    char text[64];
    nameless.GetErrorMessage(text, 64);
    EXPECT_STREQ(text, "Cryptographic error 5 (?,7)");
    path.GetErrorMessage(text, 64);
    EXPECT_STREQ(text, "Cryptographic error -2 (FILE.X,3)");
    path.GetErrorMessage(text, 8);
    EXPECT_STREQ(text, "Cryptog");
    UINT help = 9;
    CCryptoException odd(0, 1, "{a}.cpp");
    EXPECT_TRUE(std::as_const(odd).GetErrorMessage(text, 64, &help));
    EXPECT_STREQ(text, "Cryptographic error 0 ({A},1)");
    EXPECT_EQ(help, 0u);
    EXPECT_FALSE(odd.GetErrorMessage(text, 0));
    EXPECT_TRUE(path.IsKindOf(RUNTIME_CLASS(CException)));
}

TEST(DES, StreamFormsCountModulo65536) {
    CDES des("secret");
    des.SetPad(true);
    CByteStream stream("00112233445566778899");
    const CByteStream original(stream);
    des.Encrypt(stream);
    EXPECT_EQ(stream.GetLength(), 16u);
    des.Decrypt(stream);
    EXPECT_TRUE(stream == original);
    CByteStream empty;
    des.Encrypt(empty);
    EXPECT_EQ(empty.GetLength(), 8u);
    des.Decrypt(empty);
    EXPECT_EQ(empty.GetLength(), 0u);
    for (const DWORD size : {65528u, 65536u, 70000u}) {
        CByteStream large;
        large.Concat(size);
        try {
            des.Encrypt(large);
            ADD_FAILURE() << size;
        } catch (CCryptoException* error) {
            EXPECT_EQ(error->GetCode(), 0);
            error->Delete();
        }
        EXPECT_EQ(large.GetLength(), size);
    }
    // Without padding a partial last block cannot come back.
    CByteStream partial("00112233445566778899");
    des.SetPad(false);
    des.Encrypt(partial);
    EXPECT_EQ(partial.GetLength(), 10u);
    bool isRefused = false;
    try {
        des.Decrypt(partial);
    } catch (CCryptoException* error) {
        isRefused = true;
        error->Delete();
    }
    EXPECT_TRUE(isRefused);
    des.SetPad(true);
    // A damaged last byte gives a wrong length and no error.
    CByteStream damaged("0011223344556677");
    des.Decrypt(damaged);
    EXPECT_LE(damaged.GetLength(), 8u);
}

} // namespace
} // namespace vnbytstr::test

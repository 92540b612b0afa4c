// Encrypt and Decrypt of the containers over many pages, and Diffie-Hellman.
#include "tests/bytestore/StoreFixture.h"
#include "tests/crypto/DesOracle.h"
#include "vnbytstr/DES.h"
#include "vnbytstr/DiffieHellman.h"
#include "vnbytstr/FixedBinary.h"

#include <openssl/bn.h>

namespace vnbytstr::test {
namespace {

class ContainerCipherTest : public StoreFixture {
protected:
    /// OpenSSL over the whole blocks, chained anew for every page.
    static Bytes Oracle(const Bytes& in, CDES::EMode mode) {
        const std::string key = "12345678";
        Bytes out;
        for (std::size_t at = 0, end = in.size() / 8 * 8; at < end; at += kPage) {
            std::string chain = "ABCDEFGH";
            const auto first = in.begin() + static_cast<std::ptrdiff_t>(at);
            const Bytes page = DesOracle(
                Bytes(first,
                      first + static_cast<std::ptrdiff_t>(std::min<std::size_t>(kPage, end - at))),
                key, true, mode == CDES::eCBC ? reinterpret_cast<BYTE*>(chain.data()) : nullptr);
            out.insert(out.end(), page.begin(), page.end());
        }
        return out;
    }
    const CByteStream m_key{"3132333435363738"}, m_vector{"4142434445464748"}; // as the texts below
};

TEST_F(ContainerCipherTest, WithoutPaddingOverManyPages) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{8}, std::size_t{kPage},
                                   std::size_t{40 * kPage + 16}, std::size_t{2 * kPage + 13}}) {
        for (const auto mode : {CDES::eECB, CDES::eCBC}) {
            const Bytes bytes = Pattern(size);
            const Bytes expected = Oracle(bytes, mode);
            CByteStore store(bytes.data(), static_cast<DWORD>(size)), cipher, back;
            ASSERT_EQ(store.Encrypt(m_key, m_vector, mode, false, cipher), 1);
            EXPECT_EQ(cipher.GetLength(), size);
            Bytes got = Content(cipher);
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), got.begin()));
            ASSERT_EQ(cipher.Decrypt(m_key, m_vector, mode, false, back), 1);
            if (mode == CDES::eECB) { // also of a part of a block, with zeros for what is missing
                Bytes plain = DesOracle(got, std::string("12345678"), false, nullptr);
                plain.resize(size);
                EXPECT_TRUE(Content(back) == plain);
            }
            got = Content(back);
            EXPECT_TRUE(std::equal(bytes.begin(),
                                   bytes.begin() + static_cast<std::ptrdiff_t>(expected.size()),
                                   got.begin()));
            // In memory and spilled, a stream gives the same.
            CByteStream stream(bytes.data(), static_cast<DWORD>(size));
            ASSERT_EQ(stream.Encrypt(m_key, m_vector, mode, false), 1);
            EXPECT_TRUE(cipher == stream);
            ASSERT_EQ(stream.Decrypt(m_key, m_vector, mode, false), 1);
            EXPECT_TRUE(back == stream);
            ASSERT_EQ(store.Encrypt(m_key, m_vector, mode, false, store), 1);
            EXPECT_TRUE(store == cipher);
        }
    }
}

/// Contents of all sizes, with and without discarded bytes before them, in memory and in a store.
TEST_F(ContainerCipherTest, RandomContentsComeBackWhereverTheyStart) {
    std::minstd_rand random(5);
    const auto below = [&](DWORD bound) { return static_cast<DWORD>(random() % bound); };
    const Bytes all = Pattern(5 * kPage);
    for (int round = 0; round < 10000; ++round) {
        const DWORD most = round % 100 == 0 ? 4 * kPage : round % 20 == 0 ? kPage : 100;
        const DWORD size = below(most) / 8 * 8;
        const DWORD start = below(3) == 0 ? 0 : below(round % 50 == 0 ? kPage : 40);
        const CDES::EMode mode = below(2) ? CDES::eCBC : CDES::eECB;
        const bool pad = size + 8 <= kPage && below(3) == 0;
        Bytes plain(all.begin() + start, all.begin() + start + size);
        Bytes padded = plain;
        if (pad)
            padded.resize(size + 8, 8);
        const Bytes expected = Oracle(padded, mode);

        CByteStream stream(all.data(), start + size);
        stream.DiscardUpTo(start);
        CByteStore store(all.data(), start + size), cipher, back;
        store.DiscardUpTo(start);
        ASSERT_EQ(store.Encrypt(m_key, m_vector, mode, pad, cipher), 1);
        ASSERT_EQ(Content(cipher), expected) << "from " << start << ", " << size << " bytes";
        ASSERT_EQ(cipher.Decrypt(m_key, m_vector, mode, pad, back), 1);
        ASSERT_EQ(Content(back), plain);
        ASSERT_EQ(stream.Encrypt(m_key, m_vector, mode, pad), 1);
        ASSERT_EQ(Content(stream), expected);
        // What was enciphered may have bytes before it as well.
        CByteStream moved(all.data(), 13);
        moved.Concat(stream);
        moved.DiscardUpTo(13);
        ASSERT_EQ(moved.Decrypt(m_key, m_vector, mode, pad), 1);
        ASSERT_EQ(Content(moved), plain);
    }
}

TEST_F(ContainerCipherTest, PaddingSuitsLessThanAPage) {
    for (const DWORD size :
         std::initializer_list<DWORD>{0u, 1u, 8u, kPage - 1, kPage, kPage + 1, 20 * kPage + 5}) {
        const Bytes bytes = Pattern(size);
        CByteStore store(bytes.data(), size), cipher("01"), back;
        CByteStream stream(bytes.data(), size);
        const int expected = size < kPage ? 1 : 0;
        EXPECT_EQ(store.Encrypt(m_key, m_vector, CDES::eCBC, true, cipher), expected) << size;
        EXPECT_EQ(stream.Encrypt(m_key, m_vector, CDES::eCBC, true), expected) << size;
        if (!expected) {
            EXPECT_TRUE(cipher.IsEmpty());
            EXPECT_TRUE(store == stream); // the stream as it was
            continue;
        }
        EXPECT_EQ(cipher.GetLength(), size / 8 * 8 + 8);
        EXPECT_TRUE(cipher == stream);
        EXPECT_EQ(cipher.Decrypt(m_key, m_vector, CDES::eCBC, true, back), 1);
        EXPECT_EQ(stream.Decrypt(m_key, m_vector, CDES::eCBC, true), 1);
        EXPECT_EQ(Content(back), bytes);
        EXPECT_EQ(Content(stream), bytes);
    }
}

TEST_F(ContainerCipherTest, MorePaddingThanBytesIsRefused) {
    const CByteStream plain("00112233445566FF");
    CByteStream stream(plain);
    ASSERT_EQ(stream.Encrypt(m_key, m_vector, CDES::eECB, false), 1);
    CByteStore store(stream), target("01");
    const CByteStream enciphered(stream);
    EXPECT_EQ(stream.Decrypt(m_key, m_vector, CDES::eECB, true), 0);
    EXPECT_EQ(store.Decrypt(m_key, m_vector, CDES::eECB, true, target), 0);
    EXPECT_TRUE(target.IsEmpty());
    EXPECT_EQ(store.Decrypt(m_key, m_vector, CDES::eECB, true, store), 0);
    EXPECT_TRUE(stream == enciphered && store == enciphered); // as they were
}

TEST_F(ContainerCipherTest, KeysThatAreTooShortAreFilledWithZeros) {
    const CByteStream none, zeros("0000000000000000");
    CByteStream bytes(Pattern(16).data(), 16), same(bytes);
    ASSERT_EQ(bytes.Encrypt(none, none, CDES::eCBC, false), 1);
    ASSERT_EQ(same.Encrypt(zeros, zeros, CDES::eCBC, false), 1);
    EXPECT_TRUE(bytes == same);
}

TEST_F(ContainerCipherTest, CipherOfAStreamSuitsAnyLimit) {
    const Bytes bytes = Pattern(1024);
    CDES cipher("12345678");
    cipher.SetPad(true);
    CByteStream expected(bytes.data(), 1024);
    cipher.Encrypt(expected);
    for (const DWORD limit : {1u, 1023u, 1024u, 1031u}) {
        CByteStream::m_dwMaxSizeInMemory = limit;
        CByteStream stream(bytes.data(), 1024);
        cipher.Encrypt(stream);
        EXPECT_TRUE(stream == expected) << limit;
        cipher.Decrypt(stream);
        EXPECT_EQ(Content(stream), bytes);
        CByteStream large(Pattern(65536).data(), 65536);
        EXPECT_EQ(CauseOf([&] { cipher.Encrypt(large); }), 2);
    }
}

// --- Diffie-Hellman ------------------------------------------------------------------------------

std::string Hex(const CByteStream& value) {
    CString text;
    value.CopyToHex(0, text, 0);
    return std::string(text);
}

/// base ^ exponent modulo `modulus`, by OpenSSL, in as many bytes.
std::string Power(const CByteStream& base, const CByteStream& exponent, const CByteStream& modulus,
                  DWORD length) {
    const auto number = [](const CByteStream& bytes) {
        return BN_bin2bn(bytes, static_cast<int>(bytes.GetLength()), nullptr);
    };
    BIGNUM *b = number(base), *e = number(exponent), *m = number(modulus), *r = BN_new();
    BN_CTX* context = BN_CTX_new();
    BN_mod_exp(r, b, e, m, context);
    Bytes bytes(length);
    BN_bn2binpad(r, bytes.data(), static_cast<int>(length));
    for (BIGNUM* n : {b, e, m, r})
        BN_free(n);
    BN_CTX_free(context);
    return Hex(CByteStream(bytes.data(), length));
}

/// The modulus of a published group (RFC 2409 and RFC 3526), as OpenSSL has it.
CByteStream Group(BIGNUM* (*get)(BIGNUM*)) {
    BIGNUM* prime = get(nullptr);
    Bytes bytes(static_cast<std::size_t>(BN_num_bytes(prime)));
    BN_bn2bin(prime, bytes.data());
    BN_free(prime);
    return CByteStream(bytes.data(), static_cast<DWORD>(bytes.size()));
}

class DiffieHellmanTest : public StoreFixture {};

TEST_F(DiffieHellmanTest, NothingIsComputedFromLessThanAll) {
    const CByteStream three("00000003"), seven("00000007");
    for (int missing = 0; missing < 4; ++missing) {
        CDiffieHellman side;
        if (missing != 0)
            side.SetG(three);
        if (missing != 1)
            side.SetN(seven);
        side.SetExponentLength(missing == 2 ? 0 : 32);
        EXPECT_EQ(side.GenerateX(), missing == 3 ? 1 : 0) << missing;
        EXPECT_EQ(side.ComputeK(), 0) << missing; // the other side's is missing
        side.SetY(three);
        EXPECT_EQ(side.ComputeK(), missing == 3 ? 1 : 0) << missing;
        side.SetExponentLength(0);
        EXPECT_EQ(side.ComputeK(), 0);
    }
}

TEST_F(DiffieHellmanTest, TwoSidesAgree) {
    const CByteStream two("00000002");
    DWORD time = 1000;
    for (auto get : {&BN_get_rfc2409_prime_768, &BN_get_rfc2409_prime_1024,
                     &BN_get_rfc3526_prime_1536, &BN_get_rfc3526_prime_2048}) {
        const CByteStream prime = Group(get);
        CDiffieHellman sides[2];
        for (CDiffieHellman& side : sides) {
            m_system.SetTime(++time);
            side.SetG(two);
            side.SetN(prime);
            side.SetExponentLength(200);
            ASSERT_EQ(side.ComputeK(), 0); // nothing drawn yet
            ASSERT_EQ(side.GenerateX(), 1);
        }
        EXPECT_NE(Hex(sides[0].GetX(-1)), Hex(sides[1].GetX(-1)));
        sides[0].SetY(sides[1].GetX(-1));
        sides[1].SetY(sides[0].GetX(-1));
        ASSERT_EQ(sides[0].ComputeK(), 1);
        ASSERT_EQ(sides[1].ComputeK(), 1);
        EXPECT_EQ(Hex(sides[0].GetK(-1)), Hex(sides[1].GetK(-1)));
        // The worst values that a peer may send.
        CFixedBinary less(prime), above(prime);
        less -= CFixedBinary("00000001");
        above += CFixedBinary("00000005");
        for (const CByteStream& y : {CByteStream("00000000"), CByteStream("00000001"),
                                     less.GetBytes(-1), above.GetBytes(-1)}) {
            sides[0].SetY(y);
            ASSERT_EQ(sides[0].ComputeK(), 1);
            sides[1].SetY(y);
            ASSERT_EQ(sides[1].ComputeK(), 1);
            EXPECT_LT(CFixedBinary(sides[0].GetK(-1)), CFixedBinary(prime));
        }
    }
}

TEST_F(DiffieHellmanTest, DrawsFromTheSeededGenerator) {
    CDiffieHellman side;
    EXPECT_EQ(side.GenerateX(), 0);
    side.SetG(CByteStream("00000003"));
    side.SetN(CByteStream("7FFFFFFF"));
    EXPECT_EQ(side.GenerateX(), 0);
    EXPECT_EQ(side.GetX(-1).GetLength(), 0u);
    m_system.SetTime(77);
    std::string exponent;
    // 12 bits: two zero bytes, then one of 4 bits, then one of 8; a second call appends.
    for (int call = 0; call < 2; ++call) {
        side.SetExponentLength(12);
        ASSERT_EQ(side.GenerateX(), 1);
        std::srand(77);
        Bytes drawn{0, 0, static_cast<BYTE>(static_cast<BYTE>(std::rand()) >> 4)};
        drawn.push_back(static_cast<BYTE>(std::rand()));
        EXPECT_LT(drawn[2], 16);
        exponent += Hex(CByteStream(drawn.data(), 4));
        EXPECT_EQ(Hex(side.GetX(4)), Power(CByteStream("03"), CByteStream(exponent.c_str()),
                                           CByteStream("7FFFFFFF"), 4));
    }
    EXPECT_EQ(side.GetX(0).GetLength(), 0u);
    EXPECT_EQ(Hex(side.GetX(6)), "0000" + Hex(side.GetX(-1)));
    EXPECT_EQ(Hex(side.GetX(2)), Hex(side.GetX(-1)).substr(0, 4));
    // One byte alone is no block of four: it counts as zero.
    side.SetG(CByteStream("03"));
    ASSERT_EQ(side.GenerateX(), 1);
    EXPECT_EQ(Hex(side.GetX(-1)), "00000000");
    // The bytes may be the stream's own; a part of it, too.
    const CByteStream generator("0000000300000005");
    side.SetG(generator);
    side.SetG(static_cast<const BYTE*>(side.GetG()) + 4, 4);
    EXPECT_EQ(Hex(side.GetG()), "00000005");
    side.SetY(generator, 8);
    EXPECT_EQ(Hex(side.GetY(-1)), Hex(generator));
    side.SetN(static_cast<const BYTE*>(generator), 4);
    EXPECT_EQ(Hex(side.GetN()), "00000003");
    // The longest exponent there is, on a disk that takes none of it: x stays what it was.
    const std::string before = Hex(side.GetX(-1));
    side.SetExponentLength(0x7FFFFFFF);
    m_system.Inject(Fault{.call = Call::Write, .fromThenOn = true});
    EXPECT_EQ(CauseOf([&] { side.GenerateX(); }), 4);
    m_system.Inject(std::nullopt);
    EXPECT_EQ(Hex(side.GetX(-1)), before);
    side.SetExponentLength(12);
    side.SetG(CByteStream("03"));
    // A zero modulus ends with zero.
    side.SetN(CByteStream("00000000"));
    ASSERT_EQ(side.GenerateX(), 1);
    EXPECT_EQ(Hex(side.GetX(-1)), "00000000");
}

} // namespace
} // namespace vnbytstr::test

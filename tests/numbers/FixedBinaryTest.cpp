// CFixedBinary against GMP, value and length, over every kernel of the machine.
#include "vnbytstr/FixedBinary.h"

#include "tests/numbers/GmpOracle.h"
#include "tests/support/KernelTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace vnbytstr::test {
namespace {

using Bytes = std::vector<BYTE>;

/// The model: a number of GMP's and the length in blocks.
class Model : public Oracle {
public:
    explicit Model(int length = 1) : m_length(length) {}

    int Length() const { return m_length; }
    void SetLength(int length) { m_length = length; }
    int Sign() const { return mpz_sgn(Value()); }
    /// Sets the length to that of a trimmed result.
    Model& Trim() {
        m_length = Sign() == 0 ? 1 : static_cast<int>((mpz_sizeinbase(Value(), 2) + 31) / 32);
        return *this;
    }
    Model& Cut(int blocks) {
        mpz_fdiv_r_2exp(Value(), Value(), static_cast<mp_bitcnt_t>(32 * blocks));
        return *this;
    }
    /// Big-endian, in `size` bytes or more.
    Bytes ToBytes(std::size_t size) const {
        Bytes digits(mpz_sizeinbase(Value(), 256) + 1);
        std::size_t count = 0;
        mpz_export(digits.data(), &count, 1, 1, 1, 0, Value());
        Bytes bytes(std::max(size, count) - count);
        bytes.insert(bytes.end(), digits.begin(),
                     digits.begin() + static_cast<std::ptrdiff_t>(count));
        return bytes;
    }

private:
    int m_length;
};

Bytes BytesOf(const CFixedBinary& number) {
    Bytes bytes(static_cast<std::size_t>(number.GetLength()) * 4);
    number.GetBytes(bytes.data());
    return bytes;
}

testing::AssertionResult Agrees(const CFixedBinary& number, const Model& model) {
    if (number.GetLength() != model.Length())
        return testing::AssertionFailure()
               << number.GetLength() << " blocks, expected " << model.Length();
    if (BytesOf(number) != model.ToBytes(static_cast<std::size_t>(model.Length()) * 4))
        return testing::AssertionFailure() << number.Format() << " is the wrong value";
    return testing::AssertionSuccess();
}

struct Pair {
    CFixedBinary number;
    Model model;
};

/// VNBYTSTR_TEST_OPERATIONS sets the number of operations.
long Operations() {
    if (const char* wanted = std::getenv("VNBYTSTR_TEST_OPERATIONS"))
        return std::atol(wanted);
#if defined(NDEBUG)
    return 1000000;
#else
    return 100000;
#endif
}

class FixedBinary : public KernelTest {
protected:
    int Number(int low, int high) {
        return low + static_cast<int>(m_random() % static_cast<unsigned>(high - low + 1));
    }
    /// 1 to 5 blocks mostly; else around the sizes at which the kernels change their ways.
    int Blocks() {
        static constexpr int kEdges[] = {15, 16, 17, 31, 32, 33, 48, 63, 64, 65};
        return Number(0, 19) != 0 ? Number(1, 5) : kEdges[Number(0, 9)];
    }
    /// Values with many runs of ones and zeros, where carries go far, and zero blocks in front.
    Pair Random(int blocks) {
        Bytes bytes(static_cast<std::size_t>(blocks) * 4);
        const int kind = Number(0, 3);
        for (std::size_t at = 0; at < bytes.size(); at += 4) {
            const int choice = kind == 0 ? 0 : Number(0, kind == 1 ? 4 : 2);
            const DWORD block = choice == 1   ? 0
                                : choice == 2 ? 0xFFFFFFFF
                                : choice == 3 ? 1
                                              : static_cast<DWORD>(m_random());
            for (std::size_t i = 0; i < 4; ++i)
                bytes[at + i] = static_cast<BYTE>(block >> (24 - 8 * i));
        }
        if (Number(0, 3) == 0)
            std::fill_n(bytes.begin(), 4 * Number(0, blocks), BYTE{0});
        Pair pair{CFixedBinary(bytes.data(), static_cast<int>(bytes.size())), Model(blocks)};
        mpz_import(pair.model.Value(), bytes.size(), 1, 1, 1, 0, bytes.data());
        return pair;
    }

    void Step();
    void Calculate(const Pair& a, const Pair& b, Pair& result);
    void Raise(const Pair& a, const Pair& b, const Pair& c, Pair& result);
    void Shift(Pair& a);
    void Resize(Pair& a);
    void Compare(const Pair& a, const Pair& b);
    void Write(const Pair& a);

    std::vector<Pair> m_values;
    std::mt19937_64 m_random{7};
};
VNBYTSTR_FOR_ALL_KERNELS(FixedBinary);

void FixedBinary::Calculate(const Pair& a, const Pair& b, Pair& result) {
    const bool assign = Number(0, 1) != 0;
    if (assign)
        result = a;
    // Taken before `result`, which may be `b`, changes.
    const CFixedBinary other = b.number;
    const Model otherModel = b.model;
    switch (Number(0, 3)) {
    case 0:
        result.number = assign ? (result.number += other) : a.number + other;
        mpz_add(result.model.Value(), a.model.Value(), otherModel.Value());
        result.model.Trim();
        break;
    case 1: {
        const int width = a.model.Length();
        result.number = assign ? (result.number -= other) : a.number - other;
        mpz_sub(result.model.Value(), a.model.Value(), otherModel.Value());
        result.model.Cut(width).Trim();
        break;
    }
    case 2:
        result.number = assign ? (result.number *= other) : a.number * other;
        mpz_mul(result.model.Value(), a.model.Value(), otherModel.Value());
        result.model.Trim();
        break;
    default:
        if (otherModel.Sign() == 0) {
            result.number = a.number.Mod(other);
            result.model = Model(1);
        } else if (mpz_cmp(a.model.Value(), otherModel.Value()) < 0) {
            result = {a.number.Mod(other), a.model}; // as it was, not trimmed
        } else {
            result.number = a.number.Mod(other);
            mpz_tdiv_r(result.model.Value(), a.model.Value(), otherModel.Value());
            result.model.Trim();
        }
    }
}

void FixedBinary::Raise(const Pair& a, const Pair& b, const Pair& c, Pair& result) {
    if (b.model.Length() > 5 || c.model.Length() > 20)
        return; // takes long
    Pair power{a.number.ExpMod(b.number, c.number), Model(1)};
    if (b.model.Sign() == 0)
        mpz_set_ui(power.model.Value(), 1);
    else if (c.model.Sign() != 0)
        mpz_powm(power.model.Value(), a.model.Value(), b.model.Value(), c.model.Value());
    power.model.Trim();
    result = power;
}

void FixedBinary::Shift(Pair& a) {
    const int bits = Number(0, 4) == 0 ? 32 * Number(0, 6) : Number(0, 200);
    const auto count = static_cast<mp_bitcnt_t>(bits);
    const int steps = (bits + 31) / 32;
    const int length = a.model.Length();
    if (Number(0, 3) == 0) {
        a.number = a.number.DivideBy2();
        mpz_fdiv_q_2exp(a.model.Value(), a.model.Value(), 1);
        if (length > 0)
            a.model.Trim();
    } else if (Number(0, 1) == 0) {
        a.number.ShiftLeft(bits);
        mpz_mul_2exp(a.model.Value(), a.model.Value(), count);
        a.model.SetLength(length + steps);
    } else {
        a.number.ShiftRight(bits);
        mpz_fdiv_q_2exp(a.model.Value(), a.model.Value(), count);
        // All but the last step drop whole blocks, and the last one does when it is of 32.
        if ((bits % 32 == 0 ? steps : steps - 1) >= length)
            a.model.SetLength(0);
        else if (bits > 0)
            a.model.Trim();
        if (bits == 0)
            a.model.SetLength(length);
    }
}

void FixedBinary::Resize(Pair& a) {
    const int length = Number(0, 6);
    a.number.SetLength(length);
    if (length > a.model.Length())
        a.model = Model(length);
    a.model.Cut(length).SetLength(length);
    if (length == 0)
        return;
    const int at = Number(0, length - 1);
    const auto block = static_cast<DWORD>(m_random());
    a.number.SetBlock(at, block);
    ASSERT_EQ(a.number.GetBlock(at), block);
    for (unsigned bit = 0; bit < 32; ++bit) {
        const auto position = static_cast<mp_bitcnt_t>(32 * at) + bit;
        if ((block >> bit & 1) != 0)
            mpz_setbit(a.model.Value(), position);
        else
            mpz_clrbit(a.model.Value(), position);
    }
}

void FixedBinary::Compare(const Pair& a, const Pair& b) {
    const int order = mpz_cmp(a.model.Value(), b.model.Value());
    ASSERT_EQ(a.number == b.number, order == 0);
    ASSERT_EQ(a.number != b.number, order != 0);
    ASSERT_EQ(a.number < b.number, order < 0);
    ASSERT_EQ(a.number <= b.number, order <= 0);
    ASSERT_EQ(a.number > b.number, order > 0);
    ASSERT_EQ(a.number >= b.number, order >= 0);
}

/// Out and in again, through bytes, a stream and text.
void FixedBinary::Write(const Pair& a) {
    const int size = Number(-5, 40);
    const CByteStream stream = a.number.GetBytes(size);
    const Bytes expected =
        a.model.ToBytes(static_cast<std::size_t>(std::max(size, 4 * a.model.Length())));
    ASSERT_EQ(stream.GetLength(), expected.size());
    const BYTE* bytes = stream;
    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), bytes));
    if (expected.size() % 4 == 0) {
        ASSERT_TRUE(CFixedBinary(stream) == a.number);
    }
    const CString text = a.number.Format();
    ASSERT_EQ(text.GetLength(), 8 * a.model.Length());
    const CFixedBinary back(static_cast<const char*>(text));
    ASSERT_TRUE(Agrees(back, a.model));
}

void FixedBinary::Step() {
    const auto pick = [&]() -> Pair& {
        return m_values[static_cast<std::size_t>(Number(0, static_cast<int>(m_values.size()) - 1))];
    };
    Pair& result = pick();
    Pair before = pick(); // a copy, for a result that is also an operand
    switch (Number(0, 11)) {
    case 0:
    case 1:
        result = Random(Blocks());
        break;
    case 2:
    case 3:
    case 4:
    case 5:
        Calculate(before, Number(0, 9) == 0 ? before : pick(), result);
        break;
    case 6:
        Raise(before, pick(), pick(), result);
        break;
    case 7:
    case 8:
        Shift(result);
        break;
    case 9:
        Resize(result);
        break;
    case 10:
        Compare(before, pick());
        Compare(result, result);
        break;
    default:
        Write(result);
    }
    ASSERT_TRUE(Agrees(result.number, result.model));
    if (result.model.Length() > 80)
        result = Random(Blocks());
}

} // namespace

TEST_P(FixedBinary, RandomOperationsAgreeWithGmp) {
    for (int i = 0; i < 6; ++i)
        m_values.push_back(Random(Blocks()));
    const long operations = Operations();
    for (long step = 0; step < operations; ++step) {
        Step();
        ASSERT_FALSE(HasFatalFailure()) << "step " << step;
    }
}

// A value and operands are the same object.
TEST_P(FixedBinary, OperatesOnItself) {
    for (int round = 0; round < 200; ++round) {
        const Pair a = Random(Blocks());
        Model expected;
        Pair r = a;
        r.number += r.number;
        mpz_add(expected.Value(), a.model.Value(), a.model.Value());
        ASSERT_TRUE(Agrees(r.number, expected.Trim()));
        r = a;
        r.number *= r.number;
        mpz_mul(expected.Value(), a.model.Value(), a.model.Value());
        ASSERT_TRUE(Agrees(r.number, expected.Trim()));
        r = a;
        r.number -= r.number;
        ASSERT_TRUE(Agrees(r.number, Model(1)));
        ASSERT_TRUE(Agrees(a.number.Mod(a.number), Model(1)));
    }
}

namespace {

std::string Text(const CFixedBinary& number) { return static_cast<const char*>(number.Format()); }

CFixedBinary Hex(const char* text) { return CFixedBinary(text); }

} // namespace

TEST(FixedBinaryEdges, BytesBeyondWholeBlocksAreDropped) {
    EXPECT_EQ(Text(Hex("0102030405")), "01020304");
    EXPECT_EQ(Text(Hex("0102030405060708AABBCC")), "0102030405060708");
    const BYTE bytes[] = {1, 2, 3, 4, 5};
    for (int count = -4; count < 4; ++count) {
        CFixedBinary number = Hex("0000000700000007");
        number.SetBytes(bytes, count);
        EXPECT_EQ(number.GetLength(), 0) << count;
        EXPECT_TRUE(number == CFixedBinary(1)) << count;
    }
    CByteStream stream(bytes, 5);
    EXPECT_EQ(Text(CFixedBinary(stream)), "01020304");
}

TEST(FixedBinaryEdges, LengthAndBlocks) {
    EXPECT_EQ(CFixedBinary(-3).GetLength(), 0);
    EXPECT_EQ(Text(CFixedBinary(0)), "");
    EXPECT_EQ(Text(CFixedBinary(2)), "0000000000000000");
    CFixedBinary number(1);
    number.SetBlock(1, 5);
    number.SetBlock(-1, 5);
    EXPECT_EQ(Text(number), "00000000");
    number.SetBlock(0, 5);
    EXPECT_EQ(number.GetBlock(1), 0u);
    EXPECT_EQ(number.GetBlock(-1), 0u);
    EXPECT_EQ(number.GetBlock(0), 5u);
}

TEST(FixedBinaryEdges, BytesAreRightAligned) {
    const CFixedBinary number = Hex("00001234");
    const auto hex = [](const CByteStream& stream) {
        CString text;
        stream.CopyToHex(0, text, stream.GetLength());
        return std::string(static_cast<const char*>(text));
    };
    EXPECT_EQ(hex(number.GetBytes(8)), "0000000000001234");
    for (const int count : {-1, 0, 2, 4})
        EXPECT_EQ(hex(number.GetBytes(count)), "00001234") << count;
    EXPECT_EQ(CFixedBinary().GetBytes(-1).GetLength(), 0u);
    EXPECT_EQ(CFixedBinary().GetBytes(3).GetLength(), 3u);
}

TEST(FixedBinaryEdges, ShiftsKeepOrEmptyTheLength) {
    CFixedBinary number = Hex("80000001");
    for (const int bits : {0, -1, -64}) {
        number.ShiftLeft(bits);
        number.ShiftRight(bits);
        EXPECT_EQ(Text(number), "80000001");
    }
    number = Hex("0000000700000000");
    number.ShiftRight(2147483647);
    EXPECT_EQ(number.GetLength(), 0);
}

TEST(FixedBinaryEdges, RemaindersAndPowersOfZeroAndOne) {
    const CFixedBinary zero(2), one = Hex("0000000000000001"), five = Hex("0000000000000005");
    EXPECT_EQ(Text(five.Mod(zero)), "00000000");
    EXPECT_EQ(Text(five.Mod(CFixedBinary())), "00000000");
    EXPECT_EQ(Text(five.Mod(Hex("00000006"))), "0000000000000005"); // not trimmed
    EXPECT_EQ(Text(five.Mod(Hex("00000005"))), "00000000");
    EXPECT_EQ(Text(five.Mod(one)), "00000000");
    for (const CFixedBinary& modulus : {zero, one, five, CFixedBinary()}) {
        EXPECT_EQ(Text(five.ExpMod(zero, modulus)), "00000001"); // not reduced
        EXPECT_EQ(Text(five.ExpMod(CFixedBinary(), modulus)), "00000001");
        EXPECT_EQ(Text(zero.ExpMod(one, modulus)), "00000000");
    }
    EXPECT_EQ(Text(five.ExpMod(five, zero)), "00000000");
    EXPECT_EQ(Text(five.ExpMod(five, one)), "00000000");
    EXPECT_EQ(Text(five.ExpMod(one, Hex("00000003"))), "00000002");
    EXPECT_EQ(Text(five.ExpMod(Hex("00010000"), Hex("00010000"))), "00000001");
    // A power that is a multiple of the modulus, whatever form the machine computes it in.
    for (const std::size_t digits : {16, 64, 256, 512, 1024}) {
        const CFixedBinary root = Hex(std::string(digits, 'F').c_str());
        CFixedBinary square = root;
        square *= root;
        for (const char* exponent : {"00000002", "00000003"})
            EXPECT_EQ(Text(root.ExpMod(Hex(exponent), square)).find_first_not_of('0'),
                      std::string::npos)
                << digits;
    }
}

} // namespace vnbytstr::test

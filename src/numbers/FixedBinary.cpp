// CFixedBinary: 32-bit blocks for callers, 64-bit words for the arithmetic.
//
// Invariants:
//  1. m_words has (m_nLength + 1) / 2 words; blocks 2i and 2i + 1 are the low and the high half of
//     word i.
//  2. With an odd length the high half of the last word is zero.

#include "vnbytstr/FixedBinary.h"

#include "src/charset/HexText.h"
#include "src/numbers/ModularPower.h"
#include "src/numbers/WordArithmetic.h"

#include <algorithm>
#include <climits>

using vnbytstr::detail::CompareWords;
using vnbytstr::detail::Word64;

namespace {

std::size_t WordsFor(int blocks) { return (static_cast<std::size_t>(blocks) + 1) / 2; }

/// Runs `action`; throws the framework's exception when memory runs out.
template <class Action>
auto Guarded(Action action) {
    return vnbytstr::detail::WithMemoryException(action);
}

} // namespace

CFixedBinary::CFixedBinary(int blocks) { SetLength(blocks); }

CFixedBinary::CFixedBinary(const CByteStream& bytes) { SetBytes(bytes); }

CFixedBinary::CFixedBinary(const BYTE* bytes, int count) { SetBytes(bytes, count); }

CFixedBinary::CFixedBinary(const char* hex) { SetBytes(CByteStream(hex)); }

CFixedBinary CFixedBinary::FromWords(std::vector<std::uint64_t> words) {
    CFixedBinary value;
    value.m_words = std::move(words);
    value.m_nLength = static_cast<int>(value.m_words.size() * 2);
    value.TrimZeros();
    return value;
}

void CFixedBinary::TrimZeros() {
    while (m_nLength > 1 && GetBlock(m_nLength - 1) == 0)
        --m_nLength;
    if (m_nLength == 0) {
        // The result of an operation has at least one block.
        Guarded([&] { m_words.assign(1, 0); });
        m_nLength = 1;
    }
    m_words.resize(WordsFor(m_nLength));
}

/// Makes the half word past the last block zero.
void CFixedBinary::ClearTop() {
    if (m_nLength % 2 != 0)
        m_words.back() &= 0xFFFFFFFF;
}

bool CFixedBinary::IsZero() const {
    return std::all_of(m_words.begin(), m_words.end(), [](Word64 word) { return word == 0; });
}

// --- blocks and bytes ----------------------------------------------------------------------------

void CFixedBinary::SetLength(int blocks) {
    blocks = std::max(blocks, 0);
    if (blocks > m_nLength)
        Guarded([&] { m_words.assign(WordsFor(blocks), 0); });
    else
        m_words.resize(WordsFor(blocks));
    m_nLength = blocks;
    ClearTop();
}

DWORD CFixedBinary::GetBlock(int index) const {
    if (index < 0 || index >= m_nLength)
        return 0;
    return static_cast<DWORD>(m_words[static_cast<std::size_t>(index) / 2] >> (index % 2 * 32));
}

void CFixedBinary::SetBlock(int index, DWORD value) {
    if (index < 0 || index >= m_nLength)
        return;
    Word64& word = m_words[static_cast<std::size_t>(index) / 2];
    const int shift = index % 2 * 32;
    word = (word & ~(Word64{0xFFFFFFFF} << shift)) | Word64{value} << shift;
}

void CFixedBinary::SetBytes(const BYTE* bytes, int count) {
    SetLength(count / 4);
    for (int block = m_nLength - 1; block >= 0; --block, bytes += 4)
        SetBlock(block, DWORD{bytes[0]} << 24 | DWORD{bytes[1]} << 16 | DWORD{bytes[2]} << 8 |
                            DWORD{bytes[3]});
}

void CFixedBinary::SetBytes(const CByteStream& bytes) {
    const BYTE* data = bytes;
    SetBytes(data, static_cast<int>(std::min<DWORD>(bytes.GetLength(), INT_MAX)));
}

void CFixedBinary::GetBytes(BYTE* bytes) const {
    for (int block = m_nLength - 1; block >= 0; --block) {
        const DWORD value = GetBlock(block);
        for (int shift = 24; shift >= 0; shift -= 8)
            *bytes++ = static_cast<BYTE>(value >> shift);
    }
}

CByteStream CFixedBinary::GetBytes(int count) const {
    const int own = 4 * m_nLength;
    const auto length = static_cast<DWORD>(std::max(count, own));
    std::vector<BYTE> bytes(length);
    GetBytes(bytes.data() + (length - static_cast<DWORD>(own)));
    return CByteStream(bytes.data(), length);
}

CString CFixedBinary::Format() const {
    std::vector<BYTE> bytes(static_cast<std::size_t>(m_nLength) * 4);
    GetBytes(bytes.data());
    CString text;
    const int digits = m_nLength * 8;
    vnbytstr::detail::EncodeHex(bytes, text.GetBufferSetLength(digits));
    text.ReleaseBuffer(digits);
    return text;
}

// --- arithmetic ----------------------------------------------------------------------------------

CFixedBinary operator+(const CFixedBinary& a, const CFixedBinary& b) {
    return Guarded([&] {
        std::vector<Word64> sum(std::max(a.m_words.size(), b.m_words.size()) + 1);
        std::copy(a.m_words.begin(), a.m_words.end(), sum.begin());
        const std::size_t common = b.m_words.size();
        const Word64 carry =
            vnbytstr::detail::AddWords(sum.data(), sum.data(), b.m_words.data(), common);
        vnbytstr::detail::AddWord(sum.data() + common, sum.size() - common, carry);
        return CFixedBinary::FromWords(std::move(sum));
    });
}

CFixedBinary operator-(const CFixedBinary& a, const CFixedBinary& b) {
    return Guarded([&] {
        CFixedBinary difference(a);
        const std::size_t size = a.m_words.size();
        const std::size_t common = std::min(size, b.m_words.size());
        Word64* words = difference.m_words.data();
        const Word64 borrow = vnbytstr::detail::SubWords(words, words, b.m_words.data(), common);
        vnbytstr::detail::SubWord(words + common, size - common, borrow);
        difference.ClearTop(); // wraps at the width of the first operand
        difference.TrimZeros();
        return difference;
    });
}

CFixedBinary operator*(const CFixedBinary& a, const CFixedBinary& b) {
    return Guarded([&] {
        std::vector<Word64> product(a.m_words.size() + b.m_words.size());
        if (!a.m_words.empty() && !b.m_words.empty())
            vnbytstr::detail::MultiplyWords(product.data(), a.m_words, b.m_words);
        return CFixedBinary::FromWords(std::move(product));
    });
}

CFixedBinary& CFixedBinary::operator+=(const CFixedBinary& other) { return *this = *this + other; }
CFixedBinary& CFixedBinary::operator-=(const CFixedBinary& other) { return *this = *this - other; }
CFixedBinary& CFixedBinary::operator*=(const CFixedBinary& other) { return *this = *this * other; }

bool operator==(const CFixedBinary& a, const CFixedBinary& b) {
    return CompareWords(a.m_words, b.m_words) == 0;
}

bool operator<(const CFixedBinary& a, const CFixedBinary& b) {
    return CompareWords(a.m_words, b.m_words) < 0;
}

// --- shifts --------------------------------------------------------------------------------------

void CFixedBinary::ShiftLeft(int bits) {
    if (bits <= 0)
        return;
    const int steps = (bits - 1) / 32 + 1;
    const auto wordShift = static_cast<std::size_t>(bits / 64);
    Guarded([&] {
        std::vector<Word64> shifted(
            std::max(WordsFor(m_nLength + steps), wordShift + m_words.size() + 1));
        std::copy(m_words.begin(), m_words.end(),
                  shifted.begin() + static_cast<std::ptrdiff_t>(wordShift));
        Word64* from = shifted.data() + wordShift;
        vnbytstr::detail::ShiftLeftWords(from, from, shifted.size() - wordShift,
                                         static_cast<unsigned>(bits % 64));
        shifted.resize(WordsFor(m_nLength + steps)); // the dropped words are zero
        m_words = std::move(shifted);
    });
    m_nLength += steps;
}

void CFixedBinary::ShiftRight(int bits) {
    if (bits <= 0)
        return;
    if ((bits - 1) / 32 >= m_nLength || (bits % 32 == 0 && bits / 32 >= m_nLength)) {
        m_words.clear();
        m_nLength = 0;
        return;
    }
    m_words.erase(m_words.begin(), m_words.begin() + bits / 64);
    vnbytstr::detail::ShiftRightWords(m_words.data(), m_words.data(), m_words.size(),
                                      static_cast<unsigned>(bits % 64));
    m_nLength -= bits / 32;
    m_words.resize(WordsFor(m_nLength));
    TrimZeros();
}

CFixedBinary CFixedBinary::DivideBy2() const {
    CFixedBinary half(*this);
    half.ShiftRight(1);
    return half;
}

// --- remainders ----------------------------------------------------------------------------------

CFixedBinary CFixedBinary::Mod(const CFixedBinary& modulus) const {
    if (*this < modulus)
        return *this;
    if (modulus.IsZero())
        return CFixedBinary(1);
    return Guarded([&] {
        std::vector<Word64> remainder(modulus.m_words.size());
        vnbytstr::detail::RemainderWords(remainder.data(), m_words, modulus.m_words);
        return FromWords(std::move(remainder));
    });
}

CFixedBinary CFixedBinary::ExpMod(const CFixedBinary& exponent, const CFixedBinary& modulus) const {
    if (exponent.IsZero()) {
        CFixedBinary one(1);
        one.SetBlock(0, 1);
        return one;
    }
    if (modulus.IsZero())
        return CFixedBinary(1);
    return Guarded([&] {
        return FromWords(
            vnbytstr::detail::ModularPower(m_words, exponent.m_words, modulus.m_words));
    });
}

// CFixedBinary: unsigned integers of any size, for modular exponentiation.
#pragma once

#include "vnbytstr/ByteStream.h"

#include <vector>

/// An unsigned integer held as 32-bit blocks, block 0 the least significant. A length is a count of
/// blocks. Values of different lengths compare and calculate by their numbers; a shorter one reads
/// as extended by zeros, an empty one (length 0) as zero.
///
/// Results of arithmetic are trimmed: zero blocks at the most significant end are dropped, but one
/// block remains.
///
/// Caution: SetBytes, and with it every constructor from bytes, takes whole
/// blocks of four bytes and drops the n % 4 bytes at the end. One byte alone is no block, so it
/// counts as zero: pad it in front to four.
///
/// No operation reports an error; memory that runs out throws CMemoryException. Times depend on the
/// values. Threads: one at a time.
class VNBYTSTR_API CFixedBinary {
public:
    /// Empty.
    CFixedBinary() = default;
    /// Zero in `blocks` blocks; empty for 0 or less. Explicit, since in `value + 1` or `value == 1`
    /// the 1 would be a count of blocks.
    explicit CFixedBinary(int blocks);
    /// As SetBytes. A stream whose content lies in a store throws CCacheException(2). Explicit,
    /// since operators between streams (`a < b`, which compares their buffers' addresses) would
    /// become ambiguous, or calculate.
    explicit CFixedBinary(const CByteStream& bytes);
    CFixedBinary(const BYTE* bytes, int count);
    /// From hex text (see CByteStream::CopyFromHex), as SetBytes takes its bytes.
    CFixedBinary(const char* hex);

    /// Blocks of 32 bits.
    int GetLength() const { return m_nLength; }
    /// A smaller length keeps the low blocks. A larger one gives zero: the old value is dropped.
    void SetLength(int blocks);
    /// Block `index`, 0 outside.
    DWORD GetBlock(int index) const;
    /// Sets a block; nothing happens outside.
    void SetBlock(int index, DWORD value);

    /// Takes count / 4 big-endian blocks, the most significant first. The count % 4 bytes at the
    /// end are ignored. A negative count is 0.
    void SetBytes(const BYTE* bytes, int count);
    void SetBytes(const CByteStream& bytes);
    /// Writes 4 * length bytes, big-endian.
    void GetBytes(BYTE* bytes) const;
    /// The value right-aligned in max(count, 4 * length) bytes, zeros in front.
    CByteStream GetBytes(int count) const;
    /// Eight upper-case hex digits a block, the most significant first, leading zeros kept.
    CString Format() const;

    /// As the operators of two values below.
    CFixedBinary& operator+=(const CFixedBinary& other);
    CFixedBinary& operator-=(const CFixedBinary& other);
    CFixedBinary& operator*=(const CFixedBinary& other);

    /// Multiplies by 2 ^ bits. The length grows by one block for every 32 bits or part of them. 0
    /// or less does nothing.
    void ShiftLeft(int bits);
    /// Divides by 2 ^ bits; the result is trimmed, and empty when every block has been shifted out
    /// (so a value of one block by 32). 0 or less does nothing.
    void ShiftRight(int bits);
    /// Half of the value, rounded down.
    CFixedBinary DivideBy2() const;

    /// The remainder by `modulus`. A value below the modulus comes back as it is, not trimmed.
    /// Precondition: the modulus is not zero; for one that is, the result is zero.
    CFixedBinary Mod(const CFixedBinary& modulus) const;
    /// This to the power `exponent`, modulo `modulus`. An exponent of zero gives 1, not reduced,
    /// even for a modulus of 1. Precondition: the modulus is not zero; for one that is, the result
    /// is zero (1 for an exponent of zero). Montgomery multiplication with a sliding window
    /// (Handbook of Applied Cryptography, 14.85); even moduli by their odd part and power of two
    /// apart.
    CFixedBinary ExpMod(const CFixedBinary& exponent, const CFixedBinary& modulus) const;

private:
    friend VNBYTSTR_API CFixedBinary operator+(const CFixedBinary&, const CFixedBinary&);
    friend VNBYTSTR_API CFixedBinary operator-(const CFixedBinary&, const CFixedBinary&);
    friend VNBYTSTR_API CFixedBinary operator*(const CFixedBinary&, const CFixedBinary&);
    friend VNBYTSTR_API bool operator==(const CFixedBinary&, const CFixedBinary&);
    friend VNBYTSTR_API bool operator<(const CFixedBinary&, const CFixedBinary&);

    static CFixedBinary FromWords(std::vector<std::uint64_t> words);
    bool IsZero() const;
    void TrimZeros();
    void ClearTop();

    // Two blocks to a word, which is what the arithmetic works on. A half word past the last block
    // is zero.
    std::vector<std::uint64_t> m_words;
    int m_nLength = 0;
};

/// max(lengths) + 1 blocks, trimmed.
VNBYTSTR_API CFixedBinary operator+(const CFixedBinary& a, const CFixedBinary& b);
/// In as many blocks as `a` has, trimmed; a negative result wraps modulo 2 ^ (32 * a's length).
VNBYTSTR_API CFixedBinary operator-(const CFixedBinary& a, const CFixedBinary& b);
VNBYTSTR_API CFixedBinary operator*(const CFixedBinary& a, const CFixedBinary& b);

/// Compare by value: leading zero blocks do not count.
VNBYTSTR_API bool operator==(const CFixedBinary& a, const CFixedBinary& b);
VNBYTSTR_API bool operator<(const CFixedBinary& a, const CFixedBinary& b);
inline bool operator!=(const CFixedBinary& a, const CFixedBinary& b) { return !(a == b); }
inline bool operator>(const CFixedBinary& a, const CFixedBinary& b) { return b < a; }
inline bool operator<=(const CFixedBinary& a, const CFixedBinary& b) { return !(b < a); }
inline bool operator>=(const CFixedBinary& a, const CFixedBinary& b) { return !(a < b); }

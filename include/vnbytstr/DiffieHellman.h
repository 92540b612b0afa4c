// CDiffieHellman: one side of a Diffie-Hellman key agreement, for existing peers.
//
// Its random numbers come from the C library's rand, seeded with the time in seconds: anybody who
// knows when a key was made knows the key. It serves existing peers; it protects nothing today.
#pragma once

#include "vnbytstr/ByteStream.h"

/// A key agreement (W. Diffie, M. Hellman, New Directions in Cryptography, 1976; RFC 2631) over a
/// modulus N and a generator G that the caller supplies. All numbers are big-endian byte strings.
///
/// The numbers are loaded into CFixedBinary, which takes whole blocks of four bytes: of a length
/// that is no multiple of four the last length % 4 bytes are dropped. A generator of one byte
/// counts as zero; pad it in front to four bytes, and the others likewise.
///
/// The order: SetG, SetN, SetExponentLength, GenerateX; send GetX to the peer; SetY with what the
/// peer sent; ComputeK; GetK. Threads: one at a time.
class VNBYTSTR_API CDiffieHellman {
public:
    /// All empty, exponent length 0.
    CDiffieHellman() = default;

    /// Length of the private exponent in bits.
    int GetExponentLength() const { return m_nExponentLength; }
    void SetExponentLength(int bits) { m_nExponentLength = bits; }

    /// Generator and modulus.
    const CByteStream& GetG() const { return m_G; }
    const CByteStream& GetN() const { return m_N; }
    /// The generator.
    void SetG(const CByteStream& generator) { m_G = generator; }
    void SetG(const BYTE* bytes, WORD length) { Assign(m_G, bytes, length); }
    /// The modulus; a zero one gives a public value and key of zero.
    void SetN(const CByteStream& modulus) { m_N = modulus; }
    void SetN(const BYTE* bytes, WORD length) { Assign(m_N, bytes, length); }
    /// The peer's public value.
    void SetY(const CByteStream& value) { m_Y = value; }
    void SetY(const BYTE* bytes, WORD length) { Assign(m_Y, bytes, length); }

    /// Own public value, the peer's, and the shared key. A `length` of -1 (any negative one) gives
    /// the whole value; one up to the value's length its first bytes; a longer one the value with
    /// zero bytes in front.
    CByteStream GetX(int length) const { return Take(m_X, length); }
    CByteStream GetY(int length) const { return Take(m_Y, length); }
    CByteStream GetK(int length) const { return Take(m_K, length); }

    /// Draws the private exponent x and computes X = G ^ x mod N. 1, or 0 when G or N is empty or
    /// the exponent length is not positive. Seeds rand with the time in seconds on every call, so
    /// two calls in one second draw the same bytes; rand is shared by the process, so a seed that
    /// the program has set is lost. The bytes of a second call are appended to those of the first:
    /// x then is a longer number.
    int GenerateX();
    /// Computes K = Y ^ x mod N. 1, or 0 when Y, N or x is missing or the exponent length is 0.
    int ComputeK();

private:
    static void Assign(CByteStream& stream, const BYTE* bytes, WORD length);
    static CByteStream Take(const CByteStream& value, int length);

    int m_nExponentLength = 0;
    CByteStream m_G;
    CByteStream m_N;
    CByteStream m_x; ///< private exponent
    CByteStream m_X;
    CByteStream m_Y;
    CByteStream m_K;
};

// DES on many blocks at once, bitsliced: word n of the working set holds bit n of every block, so
// that a permutation is a choice of words and an S-box is a circuit of bitwise gates (E. Biham: A
// Fast New DES Implementation in Software, FSE 1997). Written over a type V of one or more 64-bit
// lanes; a source file for each V includes this one after setting the instruction set, by a pragma,
// since templates inherit it in no other way.
//
// What V needs: & | ^ ~, << and >> within the lanes, and V{} + lane to fill all lanes.
#pragma once

#include "src/crypto/DesSboxes.h"
#include "src/crypto/DesTables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vnbytstr::detail {

/// Of each round key bit in the order of use, all ones or all zeros.
using DesKeyMasks = std::uint64_t[16 * 48];

template <class V>
VNBYTSTR_INLINE V Spread(std::uint64_t lane) {
    return V{} + lane; // for one lane the value itself
}

/// Which row of a transposed lane holds each bit of a block after the initial permutation: a lane
/// is loaded as a little-endian word, so bit 1 of the block is bit 7 of the lane.
consteval std::array<unsigned char, 64> MakeDesRows() {
    std::array<unsigned char, 64> rows{};
    for (unsigned i = 0; i < 64; ++i) {
        const unsigned bit = kDesInitialPermutation[i] - 1u;
        rows[i] = static_cast<unsigned char>(bit / 8 * 8 + 7 - bit % 8);
    }
    return rows;
}
inline constexpr std::array<unsigned char, 64> kDesRows = MakeDesRows();

/// Which word of the right half output bit 0 to 3 of S-box 1 to 8 is added to.
consteval std::array<std::array<unsigned char, 4>, 9> MakeDesTargets() {
    std::array<std::array<unsigned char, 4>, 9> targets{};
    for (unsigned char i = 0; i < 32; ++i) {
        const unsigned from = kDesPermutation[i] - 1u;
        targets[from / 4 + 1][from % 4] = i;
    }
    return targets;
}
inline constexpr std::array<std::array<unsigned char, 4>, 9> kDesTargets = MakeDesTargets();

/// Swaps the upper `Width` bits of each 2 * Width of `one` with the lower ones of `other`.
template <unsigned Width, class V>
VNBYTSTR_INLINE void SwapHalves(V& one, V& other) {
    constexpr std::uint64_t kLow = ~std::uint64_t{0} / ((std::uint64_t{1} << Width) + 1);
    const V change = ((one >> Width) ^ other) & Spread<V>(kLow);
    other ^= change;
    one ^= change << Width;
}

/// Three steps of the transposition, of 4, 2 and 1 times `Unit` rows and bits, on eight rows, which
/// fit into registers.
template <unsigned Unit, class V>
VNBYTSTR_INLINE void TransposeEight(V* rows) {
    V r0 = rows[0], r1 = rows[Unit], r2 = rows[2 * Unit], r3 = rows[3 * Unit];
    V r4 = rows[4 * Unit], r5 = rows[5 * Unit], r6 = rows[6 * Unit], r7 = rows[7 * Unit];
    SwapHalves<4 * Unit>(r0, r4);
    SwapHalves<4 * Unit>(r1, r5);
    SwapHalves<4 * Unit>(r2, r6);
    SwapHalves<4 * Unit>(r3, r7);
    SwapHalves<2 * Unit>(r0, r2);
    SwapHalves<2 * Unit>(r1, r3);
    SwapHalves<2 * Unit>(r4, r6);
    SwapHalves<2 * Unit>(r5, r7);
    SwapHalves<Unit>(r0, r1);
    SwapHalves<Unit>(r2, r3);
    SwapHalves<Unit>(r4, r5);
    SwapHalves<Unit>(r6, r7);
    rows[0] = r0, rows[Unit] = r1, rows[2 * Unit] = r2, rows[3 * Unit] = r3;
    rows[4 * Unit] = r4, rows[5 * Unit] = r5, rows[6 * Unit] = r6, rows[7 * Unit] = r7;
}

/// Turns the 64 x 64 bits of each lane over their diagonal, by swaps of ever smaller squares.
template <class V>
VNBYTSTR_INLINE void TransposeBits(V (&rows)[64]) {
    for (unsigned i = 0; i < 8; ++i)
        TransposeEight<8>(rows + i);
    for (unsigned i = 0; i < 64; i += 8)
        TransposeEight<1>(rows + i);
}

template <unsigned Box, class V>
VNBYTSTR_INLINE V DesBoxInput(const V* right, const std::uint64_t* key, unsigned bit) {
    return right[(Box * 4 + bit + 27) % 32] ^ Spread<V>(key[(Box - 1) * 6 + bit]);
}

/// S-box 1 to 8 of a round.
template <unsigned Box, class V>
VNBYTSTR_INLINE void DesBox(const V* right, V* left, const std::uint64_t* key) {
    DesSbox(DesBoxTag<Box, DesVector<V>::kTernary>{}, DesBoxInput<Box>(right, key, 0),
            DesBoxInput<Box>(right, key, 1), DesBoxInput<Box>(right, key, 2),
            DesBoxInput<Box>(right, key, 3), DesBoxInput<Box>(right, key, 4),
            DesBoxInput<Box>(right, key, 5), left[kDesTargets[Box][0]], left[kDesTargets[Box][1]],
            left[kDesTargets[Box][2]], left[kDesTargets[Box][3]]);
}

/// left ^= f(right, round key).
template <class V>
VNBYTSTR_INLINE void DesRound(const V* right, V* left, const std::uint64_t* key) {
    DesBox<1>(right, left, key);
    DesBox<2>(right, left, key);
    DesBox<3>(right, left, key);
    DesBox<4>(right, left, key);
    DesBox<5>(right, left, key);
    DesBox<6>(right, left, key);
    DesBox<7>(right, left, key);
    DesBox<8>(right, left, key);
}

/// Enciphers or deciphers the 64 blocks of each lane, row by row in memory order, in place.
template <class V>
VNBYTSTR_INLINE void DesSliced(V (&rows)[64], const DesKeyMasks& masks) {
    TransposeBits(rows);
    V halves[64]; // left, then right
    for (unsigned i = 0; i < 64; ++i)
        halves[i] = rows[kDesRows[i]];
    for (unsigned round = 0; round < 16; round += 2) {
        DesRound(halves + 32, halves, masks + round * 48);
        DesRound(halves, halves + 32, masks + round * 48 + 48);
    }
    for (unsigned i = 0; i < 64; ++i) // the halves change places at the end
        rows[kDesRows[i]] = halves[(i + 32) % 64];
    TransposeBits(rows);
}

/// How many blocks DesSliced<V> takes at once.
template <class V>
inline constexpr std::size_t kDesSlicedBlocks = sizeof(V) * 8;

/// As DesEcb and DesCbcDecrypt, for `groups` times kDesSlicedBlocks<V> blocks. `previous`, the
/// block before the first one in memory order, becomes the last cipher block; null for electronic
/// code book.
template <class V>
VNBYTSTR_INLINE void DesRun(const std::uint8_t* in, std::uint8_t* out, std::size_t groups,
                            const DesKeyMasks& masks, std::uint8_t* previous) {
    constexpr std::size_t kRow = sizeof(V);
    for (; groups > 0; --groups, in += 64 * kRow, out += 64 * kRow) {
        V rows[64];
        for (std::size_t i = 0; i < 64; ++i)
            std::memcpy(&rows[i], in + i * kRow, kRow);
        DesSliced(rows, masks);
        if (previous) {
            std::uint8_t first[kRow]; // the cipher blocks before those of the first row
            std::memcpy(first, previous, 8);
            std::memcpy(first + 8, in, kRow - 8);
            std::memcpy(previous, in + 64 * kRow - 8, 8);
            for (std::size_t i = 63; i > 0; --i) { // backwards: `out` may be `in`
                V chained;
                std::memcpy(&chained, in + i * kRow - 8, kRow);
                chained ^= rows[i];
                std::memcpy(out + i * kRow, &chained, kRow);
            }
            V chained;
            std::memcpy(&chained, first, kRow);
            rows[0] ^= chained;
            std::memcpy(out, &rows[0], kRow);
        } else {
            for (std::size_t i = 0; i < 64; ++i)
                std::memcpy(out + i * kRow, &rows[i], kRow);
        }
    }
}

} // namespace vnbytstr::detail

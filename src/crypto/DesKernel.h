// DES (FIPS 46-3) on blocks in memory: key schedule, one block, and runs of blocks in the two
// chaining modes. Single DES has a key of 56 bits and serves existing peers; it protects nothing
// today.
//
// A schedule holds the 16 round keys in the order of use, two words for each: the eight 6-bit
// groups of a round key lie in a byte each, groups 1, 3, 5, 7 in the first word from its most
// significant byte on, groups 2, 4, 6, 8 in the second.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vnbytstr::detail {

using DesSchedule = std::span<DWORD, 32>;
using ConstDesSchedule = std::span<const DWORD, 32>;

/// A chaining value, or a block: two words in big-endian order of the eight bytes.
using DesBlock = std::array<DWORD, 2>;

/// Derives the schedule from a key (parity bits ignored), for enciphering or for deciphering.
void BuildDesSchedule(std::span<const BYTE, 8> key, bool encrypt, DesSchedule schedule) noexcept;

/// Of each bit of the round keys in the order of use, all ones or all zeros; for the bitsliced
/// kernels.
void MakeDesKeyMasks(ConstDesSchedule schedule, std::uint64_t (&masks)[16 * 48]) noexcept;

/// One block, in place, in the direction of the schedule.
void ComputeDesBlock(DWORD block[2], ConstDesSchedule schedule) noexcept;

/// Loads and stores the eight bytes of a block.
inline DesBlock LoadDesBlock(const BYTE* from) noexcept {
    const auto word = [=](int at) {
        return DWORD{from[at]} << 24 | DWORD{from[at + 1]} << 16 | DWORD{from[at + 2]} << 8 |
               DWORD{from[at + 3]};
    };
    return {word(0), word(4)};
}
inline void StoreDesBlock(BYTE* to, const DesBlock& block) noexcept {
    const auto store = [=](int at, DWORD word) {
        to[at] = static_cast<BYTE>(word >> 24);
        to[at + 1] = static_cast<BYTE>(word >> 16);
        to[at + 2] = static_cast<BYTE>(word >> 8);
        to[at + 3] = static_cast<BYTE>(word);
    };
    store(0, block[0]);
    store(4, block[1]);
}

// Runs of `count` whole blocks. `in` and `out` are the same place or do not overlap.

/// Electronic code book, in the direction of the schedule.
void DesEcb(const BYTE* in, BYTE* out, std::size_t count, ConstDesSchedule schedule) noexcept;
/// Cipher block chaining; `chain` is the first chaining value and becomes the last cipher block.
void DesCbcEncrypt(const BYTE* in, BYTE* out, std::size_t count, ConstDesSchedule encrypting,
                   DesBlock& chain) noexcept;
void DesCbcDecrypt(const BYTE* in, BYTE* out, std::size_t count, ConstDesSchedule decrypting,
                   DesBlock& chain) noexcept;

} // namespace vnbytstr::detail

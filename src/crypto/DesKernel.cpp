#include "src/crypto/DesKernel.h"

#include "src/crypto/DesBitslice.h"
#include "src/crypto/DesKernelVector.h"
#include "src/os/CpuKernel.h"

#include <bit>
#include <cstring>

namespace vnbytstr::detail {

namespace {

// --- one block
// ------------------------------------------------------------------------------------ A half of a
// block is kept rotated left by one and spread: the eight groups of six bits that the expansion E
// makes of it, in a byte each, in the arrangement of a round key. E is linear, so the tables give
// the round function's result spread alike, and a round is eight look-ups and no shift but those
// that take the bytes apart.

constexpr std::uint64_t Spread32(DWORD half) {
    return std::uint64_t{std::rotr(half, 4) & 0x3F3F3F3Fu} << 32 | (half & 0x3F3F3F3Fu);
}

/// Neighbouring groups share two bits, so each word lacks only what the other has.
constexpr DWORD Gather32(std::uint64_t spread) {
    return static_cast<DWORD>(spread) | std::rotl(static_cast<DWORD>(spread >> 32), 4);
}

constexpr DWORD MergedEntry(unsigned box, unsigned input) {
    const unsigned row = (input >> 4 & 2) | (input & 1);
    const unsigned value = kDesSboxes[box][row * 16 + (input >> 1 & 15)];
    DWORD result = 0;
    for (unsigned i = 0; i < 32; ++i) {
        const unsigned from = kDesPermutation[i] - 1u; // bit of all boxes' output
        if (from / 4 == box && (value >> (3 - from % 4) & 1u) != 0)
            result |= 0x80000000u >> i;
    }
    return std::rotl(result, 1);
}

using MergedTables = std::array<std::array<std::uint64_t, 64>, 8>;

constexpr MergedTables MakeMergedTables() {
    MergedTables tables{};
    for (unsigned box = 0; box < 8; ++box) {
        for (unsigned input = 0; input < 64; ++input)
            tables[box][input] = Spread32(MergedEntry(box, input));
    }
    return tables;
}
alignas(64) constexpr MergedTables kMerged = MakeMergedTables();
static_assert(MergedEntry(0, 0) == 0x01010400 && MergedEntry(0, 3) == 0x01010404);

using SpreadKeys = std::array<std::uint64_t, 16>;

SpreadKeys SpreadSchedule(ConstDesSchedule schedule) noexcept {
    SpreadKeys keys;
    for (std::size_t i = 0; i < 16; ++i)
        keys[i] = std::uint64_t{schedule[2 * i]} << 32 | schedule[2 * i + 1];
    return keys;
}

struct Halves {
    std::uint64_t left;
    std::uint64_t right;
};

/// Hides from the compiler where a value comes from, so that it keeps the shape of a sum.
VNBYTSTR_INLINE std::uint64_t Opaque(std::uint64_t value) noexcept {
    __asm__("" : "+r"(value));
    return value;
}

/// Adds up in a tree: each round waits for the one before, so what counts is the length of the
/// path.
VNBYTSTR_INLINE std::uint64_t AddRound(std::uint64_t half, std::uint64_t keyed) noexcept {
    const auto low = static_cast<DWORD>(keyed);
    const auto high = static_cast<DWORD>(keyed >> 32);
    const auto group = [](DWORD word, unsigned byte) {
        return static_cast<BYTE>(word >> byte * 8);
    };
    const std::uint64_t a = Opaque(kMerged[7][group(low, 0)] ^ kMerged[5][group(low, 1)]);
    const std::uint64_t b = Opaque(kMerged[3][group(low, 2)] ^ kMerged[1][group(low, 3)]);
    const std::uint64_t c = Opaque(kMerged[6][group(high, 0)] ^ kMerged[4][group(high, 1)]);
    const std::uint64_t d = Opaque(kMerged[2][group(high, 2)] ^ kMerged[0][group(high, 3)]);
    return Opaque(half ^ a ^ c) ^ Opaque(b ^ d);
}

/// The 16 rounds and the exchange of the halves.
VNBYTSTR_INLINE Halves Rounds(Halves block, const SpreadKeys& keys) noexcept {
    // Each half with the key of its next use already in it, which keeps the key off the chain from
    // look-up to look-up.
    std::uint64_t left = block.left ^ keys[1];
    std::uint64_t right = block.right ^ keys[0];
#pragma GCC unroll 8 // no branches: their cost depends on the alignment of the code
    for (std::size_t i = 0; i < 16; i += 2) {
        const std::uint64_t nextRight = i < 14 ? keys[i] ^ keys[i + 2] : keys[i];
        const std::uint64_t nextLeft = i < 14 ? keys[i + 1] ^ keys[i + 3] : keys[i + 1];
        left = AddRound(left, right);
        right ^= nextRight;
        right = AddRound(right, left);
        left ^= nextLeft;
    }
    return {right, left};
}

/// Swaps the bits of `high` under mask << shift with those of `low` under the mask.
VNBYTSTR_INLINE void SwapBits(DWORD& high, DWORD& low, int shift, DWORD mask) noexcept {
    const DWORD change = ((high >> shift) ^ low) & mask;
    low ^= change;
    high ^= change << shift;
}

VNBYTSTR_INLINE Halves InitialPermutation(DesBlock block) noexcept {
    auto& [left, right] = block;
    SwapBits(left, right, 4, 0x0F0F0F0F);
    SwapBits(left, right, 16, 0x0000FFFF);
    SwapBits(right, left, 2, 0x33333333);
    SwapBits(right, left, 8, 0x00FF00FF);
    SwapBits(left, right, 1, 0x55555555);
    return {Spread32(std::rotl(left, 1)), Spread32(std::rotl(right, 1))};
}

VNBYTSTR_INLINE DesBlock FinalPermutation(Halves halves) noexcept {
    DesBlock block = {std::rotr(Gather32(halves.left), 1), std::rotr(Gather32(halves.right), 1)};
    auto& [left, right] = block;
    SwapBits(left, right, 1, 0x55555555);
    SwapBits(right, left, 8, 0x00FF00FF);
    SwapBits(right, left, 2, 0x33333333);
    SwapBits(left, right, 16, 0x0000FFFF);
    SwapBits(left, right, 4, 0x0F0F0F0F);
    return block;
}

// --- many blocks
// ----------------------------------------------------------------------------------

struct Sliced {
    std::size_t blocks; // at once
    void (*run)(const BYTE* in, BYTE* out, std::size_t groups, const DesKeyMasks& masks,
                BYTE* previous);
};

void RunPlain(const BYTE* in, BYTE* out, std::size_t groups, const DesKeyMasks& masks,
              BYTE* previous) {
    DesRun<std::uint64_t>(in, out, groups, masks, previous);
}

Sliced ChooseSliced() noexcept {
#if defined(__x86_64__)
    switch (ActiveKernel()) {
    case Kernel::Avx512:
        return {512, DesRunAvx512};
    case Kernel::Avx2:
        return {256, DesRunAvx2};
    case Kernel::Plain:
        break;
    }
#endif
    return {64, RunPlain};
}

/// From an eighth of a full group on, a group filled up with arbitrary bytes is faster
/// than block after block.
constexpr std::size_t kWorthSlicing = 8;

/// Runs the blocks that slicing pays for; returns the number of blocks done. `previous` as for
/// DesRun.
std::size_t RunSliced(const BYTE* in, BYTE* out, std::size_t count, ConstDesSchedule schedule,
                      BYTE* previous) noexcept {
    const Sliced sliced = ChooseSliced();
    if (count < sliced.blocks / kWorthSlicing)
        return 0;
    DesKeyMasks masks;
    MakeDesKeyMasks(schedule, masks);
    std::size_t done = count / sliced.blocks * sliced.blocks;
    sliced.run(in, out, count / sliced.blocks, masks, previous);
    const std::size_t rest = count - done;
    if (rest >= sliced.blocks / kWorthSlicing) {
        alignas(64) BYTE group[512 * 8] = {};
        std::memcpy(group, in + done * 8, rest * 8);
        BYTE last[8];
        std::memcpy(last, in + (count - 1) * 8, 8);
        sliced.run(group, group, 1, masks, previous);
        std::memcpy(out + done * 8, group, rest * 8);
        if (previous)
            std::memcpy(previous, last, 8);
        done = count;
    }
    return done;
}

} // namespace

void BuildDesSchedule(std::span<const BYTE, 8> key, bool encrypt, DesSchedule schedule) noexcept {
    std::array<BYTE, 56> chosen;
    for (std::size_t i = 0; i < 56; ++i) {
        const unsigned bit = kDesPermutedChoice1[i] - 1u;
        chosen[i] = key[bit / 8] >> (7 - bit % 8) & 1;
    }
    for (std::size_t round = 0; round < 16; ++round) {
        const unsigned turn = kDesRotations[encrypt ? round : 15 - round];
        DWORD words[2] = {0, 0};
        for (unsigned i = 0; i < 48; ++i) {
            const unsigned from = kDesPermutedChoice2[i] - 1u;
            const unsigned half = from < 28 ? 0 : 28;
            const DWORD bit = chosen[half + (from - half + turn) % 28];
            const unsigned group = i / 6;
            words[group % 2] |= bit << ((3 - group / 2) * 8 + 5 - i % 6);
        }
        schedule[2 * round] = words[0];
        schedule[2 * round + 1] = words[1];
    }
}

void MakeDesKeyMasks(ConstDesSchedule schedule, std::uint64_t (&masks)[16 * 48]) noexcept {
    for (std::size_t round = 0; round < 16; ++round) {
        for (std::size_t bit = 0; bit < 48; ++bit) {
            const std::size_t group = bit / 6;
            const DWORD word = schedule[2 * round + group % 2];
            const auto shift = static_cast<int>((3 - group / 2) * 8 + 5 - bit % 6);
            masks[round * 48 + bit] = 0 - std::uint64_t{word >> shift & 1u};
        }
    }
}

void ComputeDesBlock(DWORD block[2], ConstDesSchedule schedule) noexcept {
    const Halves halves =
        Rounds(InitialPermutation({block[0], block[1]}), SpreadSchedule(schedule));
    const DesBlock result = FinalPermutation(halves);
    block[0] = result[0];
    block[1] = result[1];
}

void DesEcb(const BYTE* in, BYTE* out, std::size_t count, ConstDesSchedule schedule) noexcept {
    std::size_t done = RunSliced(in, out, count, schedule, nullptr);
    const SpreadKeys keys = SpreadSchedule(schedule);
    for (; done < count; ++done) {
        const Halves halves = InitialPermutation(LoadDesBlock(in + done * 8));
        StoreDesBlock(out + done * 8, FinalPermutation(Rounds(halves, keys)));
    }
}

/// The initial permutation is linear and undoes the final one, so the chain need not leave the
/// permuted and spread form; both permutations are off the critical path.
void DesCbcEncrypt(const BYTE* in, BYTE* out, std::size_t count, ConstDesSchedule encrypting,
                   DesBlock& chain) noexcept {
    const SpreadKeys keys = SpreadSchedule(encrypting);
    Halves state = InitialPermutation(chain);
    for (std::size_t i = 0; i < count; ++i) {
        const Halves plain = InitialPermutation(LoadDesBlock(in + i * 8));
        state = Rounds({state.left ^ plain.left, state.right ^ plain.right}, keys);
        StoreDesBlock(out + i * 8, FinalPermutation(state));
    }
    chain = FinalPermutation(state);
}

void DesCbcDecrypt(const BYTE* in, BYTE* out, std::size_t count, ConstDesSchedule decrypting,
                   DesBlock& chain) noexcept {
    BYTE previous[8];
    StoreDesBlock(previous, chain);
    std::size_t done = RunSliced(in, out, count, decrypting, previous);
    chain = LoadDesBlock(previous);
    const SpreadKeys keys = SpreadSchedule(decrypting);
    for (; done < count; ++done) {
        const DesBlock cipher = LoadDesBlock(in + done * 8);
        const DesBlock plain = FinalPermutation(Rounds(InitialPermutation(cipher), keys));
        StoreDesBlock(out + done * 8, {plain[0] ^ chain[0], plain[1] ^ chain[1]});
        chain = cipher;
    }
}

} // namespace vnbytstr::detail

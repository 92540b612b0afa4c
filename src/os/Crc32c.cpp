#include "src/os/Crc32c.h"

#include "src/os/CpuKernel.h"

#include <array>
#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace vnbytstr {

namespace {

constexpr DWORD kPolynomial = 0x82F63B78; // reflected

using Table = std::array<DWORD, 256>;

/// Table k: what a byte does to the checksum when k more bytes follow it at once.
constexpr std::array<Table, 8> MakeTables() {
    std::array<Table, 8> tables{};
    for (DWORD byte = 0; byte < 256; ++byte) {
        DWORD crc = byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1) ? kPolynomial : 0);
        tables[0][byte] = crc;
    }
    for (std::size_t k = 1; k < tables.size(); ++k)
        for (std::size_t byte = 0; byte < 256; ++byte)
            tables[k][byte] = (tables[k - 1][byte] >> 8) ^ tables[0][tables[k - 1][byte] & 0xFF];
    return tables;
}
constexpr std::array<Table, 8> kTables = MakeTables();

// Both forms below work on the state, the checksum with all bits turned round.

DWORD UpdatePlain(DWORD state, const BYTE* bytes, std::size_t count) noexcept {
    for (; count >= 8; bytes += 8, count -= 8) {
        DWORD low;
        std::memcpy(&low, bytes, 4);
        if constexpr (std::endian::native == std::endian::big)
            low = __builtin_bswap32(low);
        low ^= state;
        state = kTables[7][low & 0xFF] ^ kTables[6][(low >> 8) & 0xFF] ^
                kTables[5][(low >> 16) & 0xFF] ^ kTables[4][low >> 24] ^ kTables[3][bytes[4]] ^
                kTables[2][bytes[5]] ^ kTables[1][bytes[6]] ^ kTables[0][bytes[7]];
    }
    for (; count > 0; ++bytes, --count)
        state = (state >> 8) ^ kTables[0][(state ^ *bytes) & 0xFF];
    return state;
}

#if defined(__x86_64__)

/// Bytes in each of three lanes. The instruction takes three cycles and starts every cycle, so
/// three independent checksums cost what one does; 3 lanes are nearly a store's page.
constexpr std::size_t kLane = 10880;

/// What kLane zero bytes make of a state: linear, so a table per byte of it will do.
std::array<Table, 4> MakeLaneTables() noexcept {
    std::array<DWORD, 32> image; // of each bit of the state
    for (std::size_t bit = 0; bit < image.size(); ++bit) {
        DWORD state = DWORD{1} << bit;
        for (std::size_t i = 0; i < kLane; ++i)
            state = (state >> 8) ^ kTables[0][state & 0xFF];
        image[bit] = state;
    }
    std::array<Table, 4> tables{};
    for (std::size_t k = 0; k < tables.size(); ++k)
        for (std::size_t byte = 0; byte < 256; ++byte)
            for (std::size_t bit = 0; bit < 8; ++bit)
                if ((byte >> bit) & 1)
                    tables[k][byte] ^= image[8 * k + bit];
    return tables;
}

DWORD AppendLane(DWORD state, DWORD lane) noexcept {
    static const std::array<Table, 4> kShift = MakeLaneTables();
    return kShift[0][state & 0xFF] ^ kShift[1][(state >> 8) & 0xFF] ^
           kShift[2][(state >> 16) & 0xFF] ^ kShift[3][state >> 24] ^ lane;
}

__attribute__((target("sse4.2"))) std::uint64_t Step(std::uint64_t state,
                                                     const BYTE* bytes) noexcept {
    std::uint64_t word;
    std::memcpy(&word, bytes, 8);
    return _mm_crc32_u64(state, word);
}

__attribute__((target("sse4.2"))) DWORD UpdateFast(DWORD state, const BYTE* bytes,
                                                   std::size_t count) noexcept {
    for (; count >= 3 * kLane; bytes += 3 * kLane, count -= 3 * kLane) {
        std::uint64_t a = state, b = 0, c = 0;
        for (std::size_t i = 0; i < kLane; i += 8) {
            a = Step(a, bytes + i);
            b = Step(b, bytes + kLane + i);
            c = Step(c, bytes + 2 * kLane + i);
        }
        state = AppendLane(static_cast<DWORD>(a), static_cast<DWORD>(b));
        state = AppendLane(state, static_cast<DWORD>(c));
    }
    std::uint64_t wide = state;
    for (; count >= 8; bytes += 8, count -= 8)
        wide = Step(wide, bytes);
    state = static_cast<DWORD>(wide);
    for (; count > 0; ++bytes, --count)
        state = _mm_crc32_u8(state, *bytes);
    return state;
}

/// x^exponent modulo the polynomial, bit 31 standing for x^0.
constexpr DWORD PowerOfX(unsigned exponent) {
    DWORD power = 0x80000000;
    for (; exponent > 0; --exponent)
        power = (power >> 1) ^ ((power & 1) ? kPolynomial : 0);
    return power;
}

/// Carry-less multiplication folds 256 bytes into the 256 that follow them (V. Gopal and others,
/// "Fast CRC Computation for Generic Polynomials Using PCLMULQDQ Instruction", Intel 2009); what is
/// left of them all has the checksum that they have.
__attribute__((target("avx512f,vpclmulqdq,sse4.2"))) DWORD
UpdateWide(DWORD state, const BYTE* bytes, std::size_t count) noexcept {
    constexpr std::size_t kFold = 256;
    constexpr std::uint64_t kLow = std::uint64_t{PowerOfX(8 * kFold + 32)} << 1;
    constexpr std::uint64_t kHigh = std::uint64_t{PowerOfX(8 * kFold - 32)} << 1;
    if (count < 2 * kFold)
        return UpdateFast(state, bytes, count);
    const auto low64 = static_cast<long long>(kLow), high64 = static_cast<long long>(kHigh);
    const __m512i by = _mm512_set_epi64(high64, low64, high64, low64, high64, low64, high64, low64);
    __m512i part[4];
    for (std::size_t i = 0; i < 4; ++i)
        part[i] = _mm512_loadu_si512(bytes + 64 * i);
    part[0] = _mm512_xor_si512(part[0],
                               _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(state))));
    for (bytes += kFold, count -= kFold; count >= kFold; bytes += kFold, count -= kFold) {
        for (std::size_t i = 0; i < 4; ++i) {
            const __m512i low = _mm512_clmulepi64_epi128(part[i], by, 0x00);
            const __m512i high = _mm512_clmulepi64_epi128(part[i], by, 0x11);
            const __m512i next = _mm512_loadu_si512(bytes + 64 * i);
            part[i] = _mm512_ternarylogic_epi64(low, high, next, 0x96); // all three, exclusive or
        }
    }
    std::array<BYTE, kFold> rest;
    for (std::size_t i = 0; i < 4; ++i)
        _mm512_storeu_si512(rest.data() + 64 * i, part[i]);
    state = UpdateFast(0, rest.data(), rest.size());
    return UpdateFast(state, bytes, count);
}

bool HasWide() noexcept {
    static const bool has = __builtin_cpu_supports("vpclmulqdq") != 0;
    return has;
}

#endif

} // namespace

DWORD Crc32c(std::span<const BYTE> bytes, DWORD before) noexcept {
#if defined(__x86_64__)
    if (ActiveKernel() == Kernel::Avx512 && HasWide())
        return ~UpdateWide(~before, bytes.data(), bytes.size());
    if (ActiveKernel() != Kernel::Plain) // every processor with AVX2 has the instruction
        return ~UpdateFast(~before, bytes.data(), bytes.size());
#endif
    return ~UpdatePlain(~before, bytes.data(), bytes.size());
}

} // namespace vnbytstr

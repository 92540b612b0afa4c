// The inner loops of CCSID translation. A kernel translates the characters that it knows, each by
// itself, and stops before anything else (a character the target lacks, a broken or incomplete
// one); ICU's converters take over there, so that the kernels never decide how such input is
// translated. Their tables are composed from ICU's converters, and their output is ICU's byte for
// byte.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string>

struct UConverter;

namespace vnbytstr::detail {

/// What one run of a kernel did, in bytes.
struct KernelStep {
    std::size_t consumed = 0;
    std::size_t produced = 0;
};

/// Immutable; used by several threads at a time.
class CcsidKernel {
public:
    virtual ~CcsidKernel() = default;
    /// Translates from the beginning of `in` until it meets something unknown, `in` ends, or
    /// `out` has no room for the next character. Both stop at a character's boundary. Bytes of
    /// `out` past those produced may be overwritten.
    virtual KernelStep Run(std::span<const BYTE> in, std::span<BYTE> out) const noexcept = 0;
};

/// The kernel for a pair of converters: there are kernels between single-byte sets, between these
/// and UTF-8, and from the stateless double-byte sets to UTF-16 and UTF-8; null for other pairs.
/// The converters are used to compose the tables; their callbacks are changed.
std::unique_ptr<CcsidKernel> MakeCcsidKernel(UConverter* from, UConverter* to);
/// The kernel for a set and itself: copies.
std::unique_ptr<CcsidKernel> MakeCopyKernel();

// --- tables -----------------------------------------------------------------------------------

/// Single byte to single byte. Inputs without a counterpart map to `gap`, a value no other input
/// maps to.
struct ByteTable {
    alignas(64) std::array<BYTE, 256> to{};
    bool hasGaps = false;
    BYTE gap = 0;
};

/// Single byte to UTF-8.
struct ByteToUtf8Table {
    std::array<std::array<BYTE, 4>, 256> bytes{}; ///< the sequence; [3] is its length, 0 for none
    bool asciiIsAscii = false;                    ///< bytes 00 to 7F are themselves
    bool latin1IsLatin1 = false;                  ///< and bytes A0 to FF are U+00A0 to U+00FF
    /// First and second byte of the sequences of at most two; `second` is 0 where there is none,
    /// and 1 for a sequence of three or none at all.
    alignas(64) std::array<BYTE, 256> first{}, second{};
};

/// UTF-8 to single byte. Values are a byte, or kNone.
struct Utf8ToByteTable {
    static constexpr WORD kNone = 0x100;
    std::array<WORD, 0x800> below800{}; ///< by code point
    std::array<BYTE, 1024> block{};     ///< by code point / 64: index into `blocks`, 0 for none
    std::unique_ptr<std::array<WORD, 64>[]> blocks;
    bool asciiIsAscii = false;
    bool latin1IsLatin1 = false; ///< U+00A0 to U+00FF are the bytes A0 to FF
    ByteTable latin1;            ///< U+0000 to U+00FF, gaps and all
};

/// Double-byte set to UTF-16: by lead * 256 + trail, and by single byte.
struct DoubleByteTable {
    static constexpr char16_t kNone = 0xFFFF; ///< never a character
    std::array<char16_t, 256> single{};
    std::array<BYTE, 256> isLead{};
    std::array<char16_t, 0x10000> pair{};
    bool asciiIsAscii = false;
};

/// Where the double-byte kernel puts its UTF-16.
enum class WideForm : unsigned char { LittleEndian, BigEndian, Utf8 };

// --- the loops: the plain ones, and those for AVX2 and AVX-512 ----------------------------------

std::size_t MapBytesPlain(const ByteTable& table, const BYTE* in, BYTE* out,
                          std::size_t size) noexcept;
KernelStep BytesToUtf8Plain(const ByteToUtf8Table& table, std::span<const BYTE> in,
                            std::span<BYTE> out) noexcept;
KernelStep Utf8ToBytesPlain(const Utf8ToByteTable& table, std::span<const BYTE> in,
                            std::span<BYTE> out) noexcept;
KernelStep DoubleBytesPlain(const DoubleByteTable& table, WideForm form, std::span<const BYTE> in,
                            std::span<BYTE> out) noexcept;

#if defined(__x86_64__)
std::size_t MapBytesAvx2(const ByteTable& table, const BYTE* in, BYTE* out,
                         std::size_t size) noexcept;
std::size_t MapBytesAvx512(const ByteTable& table, const BYTE* in, BYTE* out,
                           std::size_t size) noexcept;
KernelStep BytesToUtf8Avx2(const ByteToUtf8Table& table, std::span<const BYTE> in,
                           std::span<BYTE> out) noexcept;
KernelStep Utf8ToBytesAvx2(const Utf8ToByteTable& table, std::span<const BYTE> in,
                           std::span<BYTE> out) noexcept;
KernelStep BytesToUtf8Avx512(const ByteToUtf8Table& table, std::span<const BYTE> in,
                             std::span<BYTE> out) noexcept;
KernelStep Utf8ToBytesAvx512(const Utf8ToByteTable& table, std::span<const BYTE> in,
                             std::span<BYTE> out) noexcept;
KernelStep DoubleBytesAvx2(const DoubleByteTable& table, WideForm form, std::span<const BYTE> in,
                           std::span<BYTE> out) noexcept;
#endif

} // namespace vnbytstr::detail

// Finds the first occurrence of a byte pattern, in memory or in data that arrives in pieces.
//
// The time is linear in the bytes searched whatever pattern and data are: a filter on two of the
// pattern's bytes runs as long as it pays, and the two-way algorithm takes over when too much work
// goes into places that turn out not to match (M. Crochemore, D. Perrin: Two-way string-matching,
// Journal of the ACM 38(3), 1991). Long patterns begin with a search that skips most of the data,
// as long as that pays (LongPattern.h).
#pragma once

#include "src/bytestore/LongPattern.h"
#include "src/os/CpuKernel.h"
#include "vnbytstr/framework/Types.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vnbytstr::detail {

/// What is known about a pattern, and how far a search has come. Knows nothing of pieces.
class PatternScanner {
public:
    /// `pattern` (not empty) stays the caller's and must outlive the scanner.
    explicit PatternScanner(std::span<const BYTE> pattern) noexcept;

    /// Moves `position` to the first occurrence in `text` that starts there or later, and returns
    /// true; or moves it past every start that `text` alone excludes, and returns false. An
    /// occurrence lies wholly in `text`. On return false, `position + pattern length > text size`,
    /// and position may lie beyond the text's end. The next call must go on at the same place of
    /// the same data, more of which may have come.
    bool Scan(std::span<const BYTE> text, std::size_t& position) noexcept;

    /// Forgets the position, not what is known about the pattern.
    void Restart() noexcept { m_known = 0; }

private:
    bool ScanAll(std::span<const BYTE> text, std::size_t& position) noexcept;
    void ChooseFilter() noexcept;
    void Factorize() noexcept;
    bool Verify(const BYTE* start) noexcept;
    bool FilterPlain(std::span<const BYTE> text, std::size_t& position) noexcept;
    bool FilterAvx2(std::span<const BYTE> text, std::size_t& position) noexcept;
    bool TwoWayPlain(std::span<const BYTE> text, std::size_t& position) noexcept;
    bool TwoWayAvx2(std::span<const BYTE> text, std::size_t& position) noexcept;
    template <class Machine>
    bool TwoWay(std::span<const BYTE> text, std::size_t& position) noexcept;

    /// In units of the time the filter takes for one byte.
    static constexpr std::uint64_t kPriceOfCandidate = 64;
    static constexpr std::uint64_t kFirstAllowance = 32768;
    static constexpr std::uint64_t kAllowancePerByte = 8;

    std::span<const BYTE> m_pattern;
    Kernel m_kernel;
    std::unique_ptr<LongPattern> m_long;
    bool m_maySkip;             // not tried yet
    std::uint64_t m_looked = 0; // bytes searched before, to see whether preparing it is worth it
    bool m_twoWay = false;      // the filter has given up
    std::size_t m_first = 0;    // the filter's two offsets, m_first rarer or equal
    std::size_t m_second = 0;
    std::uint64_t m_wasted = 0;
    std::uint64_t m_allowance = kFirstAllowance;
    std::size_t m_cut = 0;   // two-way: start of the right half
    std::size_t m_shift = 0; // two-way: the period, or a lower bound of it
    bool m_periodic = false; // two-way: m_shift is the pattern's period
    std::size_t m_known = 0; // two-way: so many bytes at the position equal the pattern's
};

/// Searches data that is fed piece by piece. Keeps fewer bytes of what was fed than the pattern has
/// (in a buffer of at most twice that).
class ByteSearcher {
public:
    /// `pattern` may be empty; it stays the caller's and must outlive the searcher.
    explicit ByteSearcher(std::span<const BYTE> pattern);

    /// Takes the next piece (of any size, 0 included; not kept). Returns the offset, counted from
    /// the first byte ever fed, of the first occurrence as soon as its last byte has come; an empty
    /// pattern occurs at 0. After that, or to search other data, call Restart.
    std::optional<std::uint64_t> Feed(std::span<const BYTE> piece);

    /// Forgets what was fed.
    void Restart() noexcept;

private:
    bool FeedCarry(std::span<const BYTE>& piece);
    void KeepFrom(std::span<const BYTE> piece, std::size_t position);

    std::span<const BYTE> m_pattern;
    PatternScanner m_scanner;
    std::uint64_t m_position = 0; // no occurrence starts before this offset
    std::size_t m_skip = 0;       // so many bytes of the next piece lie before m_position
    std::vector<BYTE> m_carry;    // from m_carryHead: the data from m_position on
    std::size_t m_carryHead = 0;
};

/// Offset in `haystack` of the first occurrence of `pattern` that starts at `from` or later; none
/// when `from` lies beyond the end. An empty pattern occurs at `from`.
std::optional<std::size_t> FindBytes(std::span<const BYTE> haystack, std::span<const BYTE> pattern,
                                     std::size_t from = 0) noexcept;

} // namespace vnbytstr::detail

#include "src/bytestore/ByteSearch.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#define VNBYTSTR_AVX2 __attribute__((target("avx2,bmi,bmi2,lzcnt")))
#endif

namespace vnbytstr::detail {

namespace {

std::uint64_t LoadWord(const BYTE* from) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, from, sizeof word);
    return word;
}

/// How common a byte is in the values that go through stores (text in several encodings, integers,
/// records), 0 the rarest. Only the order matters: it decides which bytes the filter looks for.
constexpr std::array<BYTE, 256> MakeCommonness() {
    std::array<BYTE, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte)
        table[byte] = byte < 0x20 ? 40 : byte < 0x7F ? 60 : byte < 0xC0 ? 50 : 30;
    for (unsigned byte = 1; byte < 10; ++byte)
        table[byte] = 80;
    for (unsigned byte = '0'; byte <= '9'; ++byte)
        table[byte] = 150;
    for (unsigned byte = 'A'; byte <= 'Z'; ++byte)
        table[byte] = 110;
    constexpr char kByFrequency[] = "zqxjkvbpygfwmucldrhsnioate"; // of letters, rising
    for (unsigned i = 0; i < 26; ++i)
        table[static_cast<BYTE>(kByFrequency[i])] = static_cast<BYTE>(130 + i * 4);
    for (char byte : {'.', ',', '-', '"', '/', ':', '=', '<', '>'})
        table[static_cast<BYTE>(byte)] = 140;
    table['\n'] = table['\r'] = table['\t'] = 145;
    table[0x40] = 120; // the EBCDIC blank
    table[0xFF] = 160;
    table[' '] = 250;
    table[0] = 255;
    return table;
}
constexpr std::array<BYTE, 256> kCommonness = MakeCommonness();

struct Suffix {
    std::size_t start;
    std::size_t period;
};

/// The greatest suffix of the pattern in the order `before` of its bytes, and that suffix's period
/// (Crochemore and Perrin, section 3).
template <class Before>
Suffix GreatestSuffix(std::span<const BYTE> pattern, Before before) noexcept {
    Suffix best{0, 1};
    std::size_t rival = 1;
    std::size_t same = 0;
    while (rival + same < pattern.size()) {
        const BYTE mine = pattern[best.start + same];
        const BYTE its = pattern[rival + same];
        if (its == mine) {
            if (++same == best.period) {
                rival += same;
                same = 0;
            }
        } else if (before(its, mine)) {
            rival += same + 1;
            same = 0;
            best.period = rival - best.start;
        } else {
            best = {rival, 1};
            ++rival;
            same = 0;
        }
    }
    return best;
}

} // namespace

/// What the two-way search asks of the machine. Mismatch, MismatchBack: index of the first, of the
/// last of `count` bytes that differ; count when none does. Next: the first start from `position`
/// to `last` where the data looks like the beginning of the probe, last + 1 when there is none.
struct PlainScan {
    explicit PlainScan(std::span<const BYTE> probe) noexcept : m_probe(probe[0]) {}

    static std::size_t Mismatch(const BYTE* a, const BYTE* b, std::size_t count) noexcept {
        std::size_t i = 0;
        for (; count - i >= 8; i += 8) {
            if (const std::uint64_t diff = LoadWord(a + i) ^ LoadWord(b + i)) {
                if constexpr (std::endian::native == std::endian::little)
                    return i + static_cast<std::size_t>(std::countr_zero(diff)) / 8;
                break;
            }
        }
        while (i < count && a[i] == b[i])
            ++i;
        return i;
    }
    static std::size_t MismatchBack(const BYTE* a, const BYTE* b, std::size_t count) noexcept {
        for (std::size_t i = count; i > 0; --i) {
            if (a[i - 1] != b[i - 1])
                return i - 1;
        }
        return count;
    }
    std::size_t Next(const BYTE* text, std::size_t position, std::size_t last) const noexcept {
        const void* hit = std::memchr(text + position, m_probe, last + 1 - position);
        return hit ? static_cast<std::size_t>(static_cast<const BYTE*>(hit) - text) : last + 1;
    }

private:
    BYTE m_probe;
};

#if defined(__x86_64__)
struct Avx2Scan {
    VNBYTSTR_AVX2 explicit Avx2Scan(std::span<const BYTE> probe) noexcept : m_probe(probe.data()) {
        for (std::size_t i = 0; i < 4; ++i) {
            m_at[i] = i < probe.size() ? i : 0;
            m_byte[i] = _mm256_set1_epi8(static_cast<char>(probe[m_at[i]]));
        }
    }
    VNBYTSTR_AVX2 static __m256i Load(const BYTE* from) noexcept {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    }
    VNBYTSTR_AVX2 static std::uint32_t Bits(__m256i mask) noexcept {
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(mask));
    }
    VNBYTSTR_AVX2 static std::uint32_t Equal(const BYTE* a, const BYTE* b) noexcept {
        return Bits(_mm256_cmpeq_epi8(Load(a), Load(b)));
    }
    VNBYTSTR_AVX2 static std::uint32_t EqualHalf(const BYTE* a, const BYTE* b) noexcept {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a));
        const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
        return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(x, y)));
    }
    VNBYTSTR_AVX2 static std::size_t Mismatch(const BYTE* a, const BYTE* b,
                                              std::size_t count) noexcept {
        std::size_t i = 0;
        for (; count - i >= 32; i += 32) {
            if (const std::uint32_t diff = ~Equal(a + i, b + i))
                return i + static_cast<std::size_t>(std::countr_zero(diff));
        }
        if (count - i >= 16) {
            if (const std::uint32_t diff = EqualHalf(a + i, b + i) ^ 0xFFFF)
                return i + static_cast<std::size_t>(std::countr_zero(diff));
            i += 16;
        }
        if (count - i >= 8) {
            if (const std::uint64_t diff = LoadWord(a + i) ^ LoadWord(b + i))
                return i + static_cast<std::size_t>(std::countr_zero(diff)) / 8;
            i += 8;
        }
        while (i < count && a[i] == b[i])
            ++i;
        return i;
    }
    VNBYTSTR_AVX2 static std::size_t MismatchBack(const BYTE* a, const BYTE* b,
                                                  std::size_t count) noexcept {
        std::size_t i = count;
        for (; i >= 32; i -= 32) {
            if (const std::uint32_t diff = ~Equal(a + i - 32, b + i - 32))
                return i - 1 - static_cast<std::size_t>(std::countl_zero(diff));
        }
        for (; i >= 8; i -= 8) {
            if (const std::uint64_t diff = LoadWord(a + i - 8) ^ LoadWord(b + i - 8))
                return i - 1 - static_cast<std::size_t>(std::countl_zero(diff)) / 8;
        }
        for (; i > 0; --i) {
            if (a[i - 1] != b[i - 1])
                return i - 1;
        }
        return count;
    }
    /// Up to four bytes of the probe are compared at once, so that a start that passes and still
    /// fails moves the search on by more than four.
    VNBYTSTR_AVX2 std::size_t Next(const BYTE* text, std::size_t position,
                                   std::size_t last) const noexcept {
        // After a start at `last` comes all of the probe, after one at last - 31 a whole register.
        for (; last + 1 - position >= 32; position += 32) {
            const BYTE* from = text + position;
            const __m256i hit01 =
                _mm256_and_si256(_mm256_cmpeq_epi8(Load(from), m_byte[0]),
                                 _mm256_cmpeq_epi8(Load(from + m_at[1]), m_byte[1]));
            const __m256i hit23 =
                _mm256_and_si256(_mm256_cmpeq_epi8(Load(from + m_at[2]), m_byte[2]),
                                 _mm256_cmpeq_epi8(Load(from + m_at[3]), m_byte[3]));
            const std::uint32_t hits = Bits(_mm256_and_si256(hit01, hit23));
            if ((hits & 1) != 0) // a branch is predicted; the sum below would have to be waited for
                return position;
            if (hits != 0)
                return position + static_cast<std::size_t>(std::countr_zero(hits));
        }
        for (; position <= last; ++position) {
            const BYTE* from = text + position;
            if (from[0] == m_probe[0] && from[m_at[1]] == m_probe[m_at[1]] &&
                from[m_at[2]] == m_probe[m_at[2]] && from[m_at[3]] == m_probe[m_at[3]])
                break;
        }
        return position;
    }

private:
    const BYTE* m_probe;
    std::size_t m_at[4];
    __m256i m_byte[4];
};
#endif

PatternScanner::PatternScanner(std::span<const BYTE> pattern) noexcept
    : m_pattern(pattern), m_kernel(ActiveKernel()),
      m_maySkip(pattern.size() >= LongPattern::kShortest) {
    if (pattern.size() > 1)
        ChooseFilter();
}

/// The two rarest bytes of the pattern's beginning, of different values if there are any.
void PatternScanner::ChooseFilter() noexcept {
    constexpr std::size_t kLookedAt = 512;
    const std::size_t count = std::min(m_pattern.size(), kLookedAt);
    for (std::size_t i = 1; i < count; ++i) {
        if (kCommonness[m_pattern[i]] < kCommonness[m_pattern[m_first]])
            m_first = i;
    }
    m_second = m_first == 0 ? count - 1 : 0;
    for (std::size_t i = 0; i < count; ++i) {
        const bool better = kCommonness[m_pattern[i]] < kCommonness[m_pattern[m_second]] ||
                            m_pattern[m_second] == m_pattern[m_first];
        if (m_pattern[i] != m_pattern[m_first] && better)
            m_second = i;
    }
}

void PatternScanner::Factorize() noexcept {
    const Suffix up = GreatestSuffix(m_pattern, [](BYTE a, BYTE b) { return a < b; });
    const Suffix down = GreatestSuffix(m_pattern, [](BYTE a, BYTE b) { return b < a; });
    const Suffix cut = up.start > down.start ? up : down;
    m_cut = cut.start;
    m_shift = cut.period;
    const std::size_t size = m_pattern.size();
    m_periodic = // the greatest suffix is at least as long as its period
        std::memcmp(m_pattern.data(), m_pattern.data() + cut.period, cut.start) == 0;
    if (!m_periodic)
        m_shift = std::max(m_cut, size - m_cut) + 1;
    m_known = 0;
    m_twoWay = true;
}

bool PatternScanner::Scan(std::span<const BYTE> text, std::size_t& position) noexcept {
    if (position > text.size() || text.size() - position < m_pattern.size())
        return false;
    if (m_pattern.size() == 1) {
        const void* hit = std::memchr(text.data() + position, m_pattern[0], text.size() - position);
        position = hit ? static_cast<std::size_t>(static_cast<const BYTE*>(hit) - text.data())
                       : text.size();
        return hit != nullptr;
    }
    if (m_maySkip && !m_twoWay) {
        m_looked += text.size() - position;
        if (m_looked >= 8 * m_pattern.size()) {
            m_long = LongPattern::Make(m_pattern);
            m_maySkip = false;
        }
    }
    if (m_long) {
        if (m_long->Scan(text, position))
            return true;
        if (!m_long->HasGivenUp())
            return false;
        m_long.reset();
        if (position > text.size() || text.size() - position < m_pattern.size())
            return false;
    }
    return ScanAll(text, position);
}

/// The filter, or what takes over from it.
bool PatternScanner::ScanAll(std::span<const BYTE> text, std::size_t& position) noexcept {
#if defined(__x86_64__)
    if (m_kernel >= Kernel::Avx2) {
        if (!m_twoWay && FilterAvx2(text, position))
            return true;
        return m_twoWay && TwoWayAvx2(text, position);
    }
#endif
    if (!m_twoWay && FilterPlain(text, position))
        return true;
    return m_twoWay && TwoWayPlain(text, position);
}

/// True when the pattern stands at `start`. Otherwise the filter's budget is charged; once that is
/// used up, the two-way algorithm is prepared.
inline bool PatternScanner::Verify(const BYTE* start) noexcept {
    const std::size_t same = PlainScan::Mismatch(start, m_pattern.data(), m_pattern.size());
    if (same == m_pattern.size())
        return true;
    m_wasted += kPriceOfCandidate + same;
    if (m_wasted > m_allowance)
        Factorize();
    return false;
}

bool PatternScanner::FilterPlain(std::span<const BYTE> text, std::size_t& position) noexcept {
    const std::size_t last = text.size() - m_pattern.size();
    const BYTE first = m_pattern[m_first];
    const BYTE second = m_pattern[m_second];
    const BYTE* const base = text.data();
    while (position <= last && !m_twoWay) {
        const std::size_t from = position;
        const void* hit = std::memchr(base + position + m_first, first, last + 1 - position);
        position = hit ? static_cast<std::size_t>(static_cast<const BYTE*>(hit) - base) - m_first
                       : last + 1;
        m_allowance += (position - from) * kAllowancePerByte;
        if (!hit)
            break;
        m_wasted += kPriceOfCandidate / 4;
        if (base[position + m_second] == second && Verify(base + position))
            return true;
        ++position;
    }
    return false;
}

/// The two-way search proper. In the right half a start fails at its first unequal byte and the
/// search moves on by one more than what was equal; in the left half by the period, and when the
/// pattern is periodic all but a period of it is then known to match.
template <class Machine>
inline bool PatternScanner::TwoWay(std::span<const BYTE> text, std::size_t& position) noexcept {
    const BYTE* const pattern = m_pattern.data();
    const BYTE* const base = text.data();
    const std::size_t size = m_pattern.size();
    const std::size_t last = text.size() - size;
    const std::size_t cut = m_cut;
    const Machine machine(m_pattern.subspan(cut));
    std::size_t known = m_known;
    std::size_t start = position;
    bool found = false;
    while (start <= last) {
        if (known == 0) {
            start = machine.Next(base + cut, start, last);
            if (start > last)
                break;
        }
        const std::size_t from = std::max(cut, known);
        const std::size_t same =
            Machine::Mismatch(base + start + from, pattern + from, size - from);
        if (same < size - from) {
            start += from - cut + same + 1;
            known = 0;
            continue;
        }
        const std::size_t low = std::min(known, cut);
        if (Machine::MismatchBack(base + start + low, pattern + low, cut - low) == cut - low) {
            found = true;
            break;
        }
        start += m_shift;
        known = m_periodic ? size - m_shift : 0;
    }
    m_known = found ? 0 : known;
    position = start;
    return found;
}

bool PatternScanner::TwoWayPlain(std::span<const BYTE> text, std::size_t& position) noexcept {
    return TwoWay<PlainScan>(text, position);
}

#if defined(__x86_64__)
VNBYTSTR_AVX2 __attribute__((flatten)) bool
PatternScanner::TwoWayAvx2(std::span<const BYTE> text, std::size_t& position) noexcept {
    return TwoWay<Avx2Scan>(text, position);
}

/// Tests 128 starts at a time, then 32, and the rest one by one.
VNBYTSTR_AVX2 bool PatternScanner::FilterAvx2(std::span<const BYTE> text,
                                              std::size_t& position) noexcept {
    const std::size_t last = text.size() - m_pattern.size();
    const __m256i first = _mm256_set1_epi8(static_cast<char>(m_pattern[m_first]));
    const __m256i second = _mm256_set1_epi8(static_cast<char>(m_pattern[m_second]));
    const BYTE* const base = text.data();
    const BYTE* const base1 = base + m_first;
    const BYTE* const base2 = base + m_second;
    const auto hitsAt = [=](std::size_t start) VNBYTSTR_AVX2 {
        return _mm256_and_si256(_mm256_cmpeq_epi8(Avx2Scan::Load(base1 + start), first),
                                _mm256_cmpeq_epi8(Avx2Scan::Load(base2 + start), second));
    };
    std::size_t at = position;
    while (at <= last) {
        const std::size_t left = last + 1 - at;
        std::size_t width = 1;
        std::uint64_t low = 0;
        std::uint64_t high = 0;
        if (left >= 128) {
            width = 128;
            const __m256i h0 = hitsAt(at);
            const __m256i h1 = hitsAt(at + 32);
            const __m256i h2 = hitsAt(at + 64);
            const __m256i h3 = hitsAt(at + 96);
            const __m256i any = _mm256_or_si256(_mm256_or_si256(h0, h1), _mm256_or_si256(h2, h3));
            if (_mm256_testz_si256(any, any)) {
                at += 128;
                m_allowance += 128 * kAllowancePerByte;
                continue;
            }
            low = Avx2Scan::Bits(h0) | std::uint64_t{Avx2Scan::Bits(h1)} << 32;
            high = Avx2Scan::Bits(h2) | std::uint64_t{Avx2Scan::Bits(h3)} << 32;
        } else if (left >= 32) {
            width = 32;
            low = Avx2Scan::Bits(hitsAt(at));
        } else {
            low = base1[at] == m_pattern[m_first] && base2[at] == m_pattern[m_second];
        }
        m_allowance += width * kAllowancePerByte;
        for (std::size_t half = 0; half < 2; ++half, low = high) {
            for (; low != 0; low &= low - 1) {
                position = at + half * 64 + static_cast<std::size_t>(std::countr_zero(low));
                if (Verify(base + position))
                    return true;
                if (m_twoWay) {
                    ++position;
                    return false;
                }
            }
        }
        at += width;
    }
    position = at;
    return false;
}
#endif

ByteSearcher::ByteSearcher(std::span<const BYTE> pattern)
    : m_pattern(pattern), m_scanner(pattern) {}

void ByteSearcher::Restart() noexcept {
    m_scanner.Restart();
    m_position = 0;
    m_skip = 0;
    m_carry.clear();
    m_carryHead = 0;
}

std::optional<std::uint64_t> ByteSearcher::Feed(std::span<const BYTE> piece) {
    if (m_pattern.empty())
        return 0;
    if (m_carry.size() > m_carryHead) {
        if (FeedCarry(piece))
            return m_position;
        if (m_carry.size() > m_carryHead) // it took all of the piece
            return std::nullopt;
    }
    std::size_t position = m_skip;
    const bool found = m_scanner.Scan(piece, position);
    m_position += position - m_skip;
    m_skip = 0;
    if (found)
        return m_position;
    KeepFrom(piece, position);
    return std::nullopt;
}

/// Looks where the pieces meet. Ends with an empty carry when all further starts lie in `piece`
/// (then m_skip says where), else with all of the piece in the carry.
bool ByteSearcher::FeedCarry(std::span<const BYTE>& piece) {
    const std::size_t before = m_carry.size() - m_carryHead;
    const std::size_t taken = std::min(piece.size(), m_pattern.size() - 1);
    m_carry.insert(m_carry.end(), piece.begin(),
                   piece.begin() + static_cast<std::ptrdiff_t>(taken));
    std::size_t position = 0;
    const bool found = m_scanner.Scan(std::span(m_carry).subspan(m_carryHead), position);
    m_position += position;
    if (found)
        return true;
    if (position >= before) {
        m_skip = position - before;
        m_carry.clear();
        m_carryHead = 0;
        return false;
    }
    m_carryHead += position;
    if (m_carryHead > m_carry.size() / 2) { // so that moving costs no more than a copy per byte
        m_carry.erase(m_carry.begin(), m_carry.begin() + static_cast<std::ptrdiff_t>(m_carryHead));
        m_carryHead = 0;
    }
    return false;
}

void ByteSearcher::KeepFrom(std::span<const BYTE> piece, std::size_t position) {
    if (position < piece.size())
        m_carry.assign(piece.begin() + static_cast<std::ptrdiff_t>(position), piece.end());
    else
        m_skip = position - piece.size();
}

std::optional<std::size_t> FindBytes(std::span<const BYTE> haystack, std::span<const BYTE> pattern,
                                     std::size_t from) noexcept {
    if (from > haystack.size())
        return std::nullopt;
    if (pattern.empty())
        return from;
    PatternScanner scanner(pattern);
    return scanner.Scan(haystack, from) ? std::optional(from) : std::nullopt;
}

} // namespace vnbytstr::detail

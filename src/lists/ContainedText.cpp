#include "src/lists/ContainedText.h"

#include "src/charset/CodePage.h"
#include "src/framework/AsciiCase.h"

#include <algorithm>
#include <bit>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vnbytstr::detail {
namespace {

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char ch) { return static_cast<unsigned char>(ch) < 0x80; });
}

#if defined(__SSE2__)
/// Copies a text of less than 16 bytes, in pieces of fixed sizes that overlap.
void CopyShort(std::string_view text, char* to) {
    const std::size_t size = text.size();
    if (size >= 8) {
        std::memcpy(to, text.data(), 8);
        std::memcpy(to + size - 8, text.data() + size - 8, 8);
    } else if (size >= 4) {
        std::memcpy(to, text.data(), 4);
        std::memcpy(to + size - 4, text.data() + size - 4, 4);
    } else {
        for (std::size_t i = 0; i < size; ++i)
            to[i] = text[i];
    }
}
#endif

/// Texts in lower case, for the slow way.
thread_local std::string lowerBuffer;
constexpr std::size_t kMaxKeptBuffer = 64 * 1024;

} // namespace

ContainedText::ContainedText(std::string_view text) : m_lower(text), m_ascii(IsAscii(text)) {
    const CodePage& page = CodePage::Ansi();
    page.MakeLower(m_lower);
    m_fast = m_ascii && (page.IsUtf8() || page.IsSingleByte());
}

/// Whether the rest of the text stands at `at`, where its first letter does.
bool ContainedText::IsAt(const char* at) const {
    std::size_t same = 1;
    while (same < m_lower.size() && AsciiLower(at[same]) == m_lower[same])
        ++same;
    return same == m_lower.size();
}

#if defined(__SSE2__)

/// Compares 16 places at a time with the first two letters; a cell of a list is seldom longer, and
/// a place that is no match is seldom looked at any closer.
std::size_t ContainedText::FindFast(std::string_view in, std::size_t from) const {
    constexpr std::size_t kBlock = sizeof(__m128i);
    const std::size_t size = m_lower.size();
    if (from > in.size() || in.size() - from < size)
        return std::string_view::npos;
    if (size == 0)
        return from;
    const auto isEither = [](__m128i bytes, char lower) {
        const char upper =
            lower >= 'a' && lower <= 'z' ? static_cast<char>(lower - 'a' + 'A') : lower;
        return _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(lower)),
                            _mm_cmpeq_epi8(bytes, _mm_set1_epi8(upper)));
    };
    // Bit i: the text may begin at byte i. The second letter of the last byte is not known.
    const auto candidates = [&](__m128i bytes) {
        auto mask = static_cast<unsigned>(_mm_movemask_epi8(isEither(bytes, m_lower[0])));
        if (size > 1)
            mask &= 0x8000u | static_cast<unsigned>(_mm_movemask_epi8(
                                  isEither(_mm_srli_si128(bytes, 1), m_lower[1])));
        return mask;
    };
    const std::size_t places = in.size() - size + 1;
    alignas(kBlock) char copy[kBlock] = {};
    for (std::size_t at = from; at < places;) {
        // The last block ends with the text; a shorter text is copied.
        const std::size_t block = in.size() < kBlock ? 0 : std::min(at, in.size() - kBlock);
        __m128i bytes;
        if (in.size() < kBlock) {
            CopyShort(in, copy);
            bytes = _mm_load_si128(reinterpret_cast<const __m128i*>(copy));
        } else {
            bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in.data() + block));
        }
        unsigned mask = candidates(bytes) & (~0u << (at - block));
        for (; mask != 0; mask &= mask - 1) {
            const std::size_t place = block + static_cast<std::size_t>(std::countr_zero(mask));
            if (place >= places)
                return std::string_view::npos;
            if (IsAt(in.data() + place))
                return place;
        }
        at = block + kBlock;
    }
    return std::string_view::npos;
}

#else

std::size_t ContainedText::FindFast(std::string_view in, std::size_t from) const {
    const std::size_t size = m_lower.size();
    if (from > in.size() || in.size() - from < size)
        return std::string_view::npos;
    if (size == 0)
        return from;
    for (std::size_t at = from; at <= in.size() - size; ++at)
        if (AsciiLower(in[at]) == m_lower.front() && IsAt(in.data() + at))
            return at;
    return std::string_view::npos;
}

#endif

std::size_t ContainedText::FindSlowly(std::string_view in, std::size_t from) const {
    if (m_ascii && IsAscii(in))
        return FindFast(in, from);
    if (from > in.size() || in.size() - from < m_lower.size())
        return std::string_view::npos;
    const CodePage& page = CodePage::Ansi();
    lowerBuffer.assign(in);
    page.MakeLower(lowerBuffer);
    std::size_t at = lowerBuffer.find(m_lower, from);
    if (!page.IsSingleByte())
        while (at != std::string::npos && at < in.size() && page.CharStart(in, at) != at)
            at = lowerBuffer.find(m_lower, at + 1);
    if (lowerBuffer.capacity() > kMaxKeptBuffer)
        std::string().swap(lowerBuffer);
    return at;
}

} // namespace vnbytstr::detail

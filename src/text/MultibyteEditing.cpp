#include "vnbytstr/MultibyteText.h"

#include "src/charset/CodePage.h"
#include "vnbytstr/framework/Exception.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

using vnbytstr::CodePage;

namespace {

std::string_view ViewOf(const CString& text) noexcept {
    return {text, static_cast<std::size_t>(text.GetLength())};
}

template <class Iterator>
void SortRange(Iterator begin, Iterator end, bool ascending) {
    vnbytstr::detail::WithMemoryException([&] {
        std::stable_sort(begin, end, [ascending](const CString& left, const CString& right) {
            return ascending ? ViewOf(left) < ViewOf(right) : ViewOf(right) < ViewOf(left);
        });
    });
}

/// Places of `from` in `text`, each where a character begins, none within the one before.
std::vector<std::size_t> FindAll(std::string_view text, std::string_view from) {
    const CodePage& page = CodePage::Ansi();
    // In UTF-8 only a continuation byte does not begin a character.
    const bool everyByteMayBegin =
        page.IsSingleByte() || (page.IsUtf8() && (static_cast<BYTE>(from.front()) & 0xC0) != 0x80);
    const char* const end = text.data() + text.size();
    std::vector<std::size_t> places;
    std::size_t begin = 0; // of a character
    for (std::size_t at = text.find(from); at != std::string_view::npos; at = text.find(from, at)) {
        if (everyByteMayBegin)
            begin = at;
        while (begin < at)
            begin += page.CharLength(text.data() + begin, end);
        if (begin == at) {
            places.push_back(at);
            begin = at = at + from.size();
        } else {
            ++at; // its first byte is a trail byte
        }
    }
    return places;
}

} // namespace

void Sort(CStringArray& strings, bool ascending) {
    CString* const first = strings.GetData();
    SortRange(first, first + strings.GetSize(), ascending);
}

void Sort(CStringList& strings, bool ascending) {
    std::vector<CString> sorted;
    vnbytstr::detail::WithMemoryException(
        [&] { sorted.reserve(static_cast<std::size_t>(strings.GetCount())); });
    for (POSITION at = strings.GetHeadPosition(); at != nullptr;)
        sorted.push_back(strings.GetNext(at));
    SortRange(sorted.begin(), sorted.end(), ascending);
    POSITION at = strings.GetHeadPosition();
    for (CString& text : sorted)
        strings.GetNext(at) = std::move(text);
}

int Exchange(CString& text, const CString& from, const CString& to) {
    if (from.IsEmpty())
        return -1;
    const std::string_view old = ViewOf(text), wanted = ViewOf(from), other = ViewOf(to);
    const std::vector<std::size_t> places =
        vnbytstr::detail::WithMemoryException([&] { return FindAll(old, wanted); });
    if (places.empty())
        return 0;
    const std::size_t length =
        old.size() - places.size() * wanted.size() + places.size() * other.size();
    if (length > INT_MAX)
        AfxThrowMemoryException();
    CString result;
    char* out = result.GetBufferSetLength(static_cast<int>(length));
    std::size_t copied = 0;
    for (const std::size_t place : places) {
        out = std::copy(old.begin() + static_cast<std::ptrdiff_t>(copied),
                        old.begin() + static_cast<std::ptrdiff_t>(place), out);
        out = std::copy(other.begin(), other.end(), out);
        copied = place + wanted.size();
    }
    std::copy(old.begin() + static_cast<std::ptrdiff_t>(copied), old.end(), out);
    text = std::move(result);
    return static_cast<int>(places.size());
}

void Pad(CString& pattern, int length) {
    if (length <= pattern.GetLength())
        return;
    const std::string_view text = ViewOf(pattern);
    const CodePage& page = CodePage::Ansi();
    const bool hasWildcard = page.SpanWithout(text, "%_") < text.size();
    // No character has % for its trail byte, but a broken one may.
    if (!hasWildcard)
        pattern += CString(' ', length - pattern.GetLength());
    else if (text.back() != '%' || page.CharStart(text, text.size() - 1) != text.size() - 1)
        pattern += '%';
}

// Invariants of a string outside GetBuffer ... ReleaseBuffer:
//  1. m_data points at the characters of a block: its header stands before them.
//  2. 0 <= length <= capacity, and the byte at index length is NUL.
//  3. The one empty block has length and capacity 0; it is not counted and never written.
//  4. Every other block was allocated with malloc and has a count of at least 1; it is written only
//     while the count is 1.
#include "vnbytstr/framework/String.h"

#include "vnbytstr/framework/Exception.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string_view>

using vnbytstr::detail::StringHeader;

namespace vnbytstr::detail {
constinit EmptyStringBlock emptyString = {{1, 0, 0}, '\0'};
}

namespace {

constexpr std::size_t kMaxLength = INT_MAX;
constexpr std::size_t kOverhead = sizeof(StringHeader) + 1;

// The room for `length` bytes, rounded up to what the allocator hands out anyway.
std::size_t RoundCapacity(std::size_t length) {
    const std::size_t whole = (length + kOverhead + 7) / 16 * 16 + 8;
    return std::min(whole - kOverhead, kMaxLength);
}

StringHeader* AllocateBlock(StringHeader* old, std::size_t capacity) {
    void* block = std::realloc(old, kOverhead + capacity);
    if (block == nullptr)
        AfxThrowMemoryException();
    auto* header = static_cast<StringHeader*>(block);
    header->m_capacity = static_cast<int>(capacity);
    return header;
}

constexpr char Upper(char ch) {
    return ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
}
constexpr char Lower(char ch) {
    return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch - 'A' + 'a') : ch;
}

} // namespace

static_assert(sizeof(CString) == sizeof(char*));
static_assert(offsetof(vnbytstr::detail::EmptyStringBlock, m_nul) == sizeof(StringHeader));

void CString::Check() const noexcept {
#ifndef NDEBUG
    const StringHeader* header = Header();
    assert(header->m_length >= 0 && header->m_length <= header->m_capacity);
    assert(m_data[header->m_length] == '\0');
    assert(m_data != Nothing() || header->m_capacity == 0);
    assert(Header()->Refs().load(std::memory_order_relaxed) >= 1);
#endif
}

CString::CString(char ch, int repeat) : m_data(Nothing()) {
    if (repeat < 1)
        return;
    const auto length = static_cast<std::size_t>(repeat);
    Reserve(length, true);
    std::memset(m_data, ch, length);
    SetLength(length);
}

void CString::FreeBlock() noexcept { std::free(Header()); }

void CString::SetLength(std::size_t length) noexcept {
    Header()->m_length = static_cast<int>(length);
    m_data[length] = '\0';
    Check();
}

// Makes the block this string's own, with room for `length` bytes, and keeps the content. `exact`
// is for strings that are not expected to grow.
void CString::Reserve(std::size_t length, bool exact) {
    StringHeader* old = Header();
    const auto kept = static_cast<std::size_t>(old->m_length);
    const auto capacity = static_cast<std::size_t>(old->m_capacity);
    if (length > kMaxLength)
        AfxThrowMemoryException();
    const bool unique = IsUnique();
    if (unique && length <= capacity)
        return;
    const std::size_t wanted = exact || !unique ? length : std::max(length, 2 * capacity);
    const std::size_t room = RoundCapacity(std::max(wanted, kept));
    if (unique) {
        m_data = AllocateBlock(old, room)->Chars();
        return;
    }
    StringHeader* fresh = AllocateBlock(nullptr, room);
    fresh->m_refs = 1;
    fresh->m_length = old->m_length;
    std::memcpy(fresh->Chars(), m_data, kept + 1);
    Release();
    m_data = fresh->Chars();
}

void CString::Assign(const char* text, std::size_t length) {
    if (length == 0 && !IsUnique()) {
        Empty();
        return;
    }
    // The text may lie within this very string: a unique block is large enough for any part of it
    // and is written in place; a shared one stays alive until the copy is made.
    if (IsUnique() && length <= static_cast<std::size_t>(Header()->m_capacity)) {
        if (length > 0)
            std::memmove(m_data, text, length);
        SetLength(length);
        return;
    }
    CString fresh;
    fresh.Reserve(length, true);
    std::memcpy(fresh.m_data, text, length);
    fresh.SetLength(length);
    std::swap(m_data, fresh.m_data);
}

void CString::Append(const char* text, std::size_t length) {
    const StringHeader* header = Header();
    const auto oldLength = static_cast<std::size_t>(header->m_length);
    // The common case; a text that lies within this string ends before the place it is copied to.
    if (length <= static_cast<std::size_t>(header->m_capacity) - oldLength && IsUnique()) {
        if (length > 0)
            std::memcpy(m_data + oldLength, text, length);
        SetLength(oldLength + length);
        return;
    }
    Splice(GetLength(), 0, text, length);
}

// Replaces `removed` bytes at `index` (both in range) by `length` bytes of `text`.
void CString::Splice(int index, int removed, const char* text, std::size_t length) {
    if (removed == 0 && length == 0)
        return;
    const auto at = static_cast<std::size_t>(index);
    const auto cut = static_cast<std::size_t>(removed);
    const auto oldLength = static_cast<std::size_t>(GetLength());
    const std::size_t newLength = oldLength - cut + length;
    if (newLength == 0 && !IsUnique()) {
        Empty();
        return;
    }
    // A text that lies within this string moves with it. Integers, since unrelated pointers have no
    // order.
    const auto begin = reinterpret_cast<std::uintptr_t>(m_data);
    const auto from = reinterpret_cast<std::uintptr_t>(text);
    const bool inside = length > 0 && from >= begin && from <= begin + oldLength;
    CString keep;
    if (inside && at + cut < oldLength) {
        keep.Assign(text, length);
        text = keep.m_data;
    }
    Reserve(newLength, false);
    if (inside && at + cut == oldLength)
        text = m_data + (from - begin);
    std::memmove(m_data + at + length, m_data + at + cut, oldLength - at - cut);
    if (length > 0)
        std::memmove(m_data + at, text, length);
    SetLength(newLength);
}

void CString::SetAt(int index, char ch) {
    if (index < 0 || index >= GetLength())
        AfxThrowInvalidArgException();
    MakeUnique();
    m_data[index] = ch;
}

int CString::CompareNoCase(const char* text) const noexcept {
    if (text == nullptr)
        text = "";
    for (const char* own = m_data;; ++own, ++text) {
        const int difference =
            static_cast<unsigned char>(Lower(*own)) - static_cast<unsigned char>(Lower(*text));
        if (difference != 0 || *own == '\0')
            return difference;
    }
}

CString CString::Mid(int first, int count) const {
    first = std::clamp(first, 0, GetLength());
    count = std::clamp(count, 0, GetLength() - first);
    if (count == GetLength())
        return *this;
    return CString(m_data + first, count);
}

CString CString::Right(int count) const {
    count = std::clamp(count, 0, GetLength());
    return Mid(GetLength() - count, count);
}

CString CString::SpanIncluding(const char* set) const {
    return Left(static_cast<int>(std::strspn(m_data, set != nullptr ? set : "")));
}

CString CString::SpanExcluding(const char* set) const {
    return Left(static_cast<int>(std::strcspn(m_data, set != nullptr ? set : "")));
}

void CString::MakeUpper() {
    if (IsEmpty())
        return;
    MakeUnique();
    std::transform(m_data, m_data + GetLength(), m_data, Upper);
}

void CString::MakeLower() {
    if (IsEmpty())
        return;
    MakeUnique();
    std::transform(m_data, m_data + GetLength(), m_data, Lower);
}

void CString::MakeReverse() {
    if (IsEmpty())
        return;
    MakeUnique();
    std::reverse(m_data, m_data + GetLength());
}

void CString::TrimLeft(char ch) {
    const char set[] = {ch, '\0'};
    TrimLeft(set);
}

void CString::TrimLeft(const char* set) {
    const std::string_view whole(m_data, static_cast<std::size_t>(GetLength()));
    const std::size_t first = set != nullptr ? whole.find_first_not_of(set) : 0;
    const std::size_t cut = std::min(first, whole.size());
    if (cut > 0)
        Splice(0, static_cast<int>(cut), nullptr, 0);
}

void CString::TrimRight(char ch) {
    const char set[] = {ch, '\0'};
    TrimRight(set);
}

void CString::TrimRight(const char* set) {
    const std::string_view whole(m_data, static_cast<std::size_t>(GetLength()));
    const std::size_t last = set != nullptr ? whole.find_last_not_of(set) : whole.size() - 1;
    const std::size_t kept = last + 1; // npos + 1 is 0: nothing is left
    if (kept < whole.size())
        Splice(static_cast<int>(kept), static_cast<int>(whole.size() - kept), nullptr, 0);
}

int CString::Find(char ch, int from) const noexcept {
    if (from > GetLength())
        return -1;
    const char* found = std::strchr(m_data + std::max(from, 0), ch);
    return found != nullptr ? static_cast<int>(found - m_data) : -1;
}

int CString::Find(const char* text, int from) const noexcept {
    if (from > GetLength())
        return -1;
    const char* found = std::strstr(m_data + std::max(from, 0), text != nullptr ? text : "");
    return found != nullptr ? static_cast<int>(found - m_data) : -1;
}

int CString::ReverseFind(char ch) const noexcept {
    const char* found = std::strrchr(m_data, ch);
    return found != nullptr ? static_cast<int>(found - m_data) : -1;
}

int CString::FindOneOf(const char* set) const noexcept {
    const char* found = std::strpbrk(m_data, set != nullptr ? set : "");
    return found != nullptr ? static_cast<int>(found - m_data) : -1;
}

int CString::Replace(char from, char to) {
    const auto count = static_cast<int>(std::count(m_data, m_data + GetLength(), from));
    if (count == 0 || from == to)
        return 0;
    MakeUnique();
    std::replace(m_data, m_data + GetLength(), from, to);
    return count;
}

int CString::Replace(const char* from, const char* to) {
    const std::string_view whole(m_data, static_cast<std::size_t>(GetLength()));
    const std::string_view wanted(from != nullptr ? from : "");
    const std::string_view with(to != nullptr ? to : "");
    if (wanted.empty())
        return 0;
    std::size_t count = 0;
    for (std::size_t at = whole.find(wanted); at != whole.npos;
         at = whole.find(wanted, at + wanted.size()))
        ++count;
    if (count == 0)
        return 0;

    if (with.size() > kMaxLength)
        AfxThrowMemoryException(); // and the product below cannot overflow
    CString result;
    result.Reserve(whole.size() - count * wanted.size() + count * with.size(), true);
    char* out = result.m_data;
    std::size_t done = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = whole.find(wanted, done);
        out = std::copy(whole.begin() + static_cast<std::ptrdiff_t>(done),
                        whole.begin() + static_cast<std::ptrdiff_t>(at), out);
        out = std::copy(with.begin(), with.end(), out);
        done = at + wanted.size();
    }
    out = std::copy(whole.begin() + static_cast<std::ptrdiff_t>(done), whole.end(), out);
    result.SetLength(static_cast<std::size_t>(out - result.m_data));
    std::swap(m_data, result.m_data);
    return static_cast<int>(count);
}

int CString::Remove(char ch) {
    const auto count = std::count(m_data, m_data + GetLength(), ch);
    if (count > 0) {
        MakeUnique();
        const char* end = std::remove(m_data, m_data + GetLength(), ch);
        SetLength(static_cast<std::size_t>(end - m_data));
    }
    return static_cast<int>(count);
}

int CString::Insert(int index, char ch) {
    Splice(std::clamp(index, 0, GetLength()), 0, &ch, 1);
    return GetLength();
}

int CString::Insert(int index, const char* text) {
    Splice(std::clamp(index, 0, GetLength()), 0, text, TextLength(text));
    return GetLength();
}

int CString::Delete(int index, int count) {
    index = std::clamp(index, 0, GetLength());
    count = std::clamp(count, 0, GetLength() - index);
    Splice(index, count, nullptr, 0);
    return GetLength();
}

void CString::Format(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    try {
        FormatV(format, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
}

void CString::FormatV(const char* format, std::va_list arguments) {
    if (format == nullptr) {
        Empty();
        return;
    }
    // Formatted aside, since the arguments may point into this string.
    char small[256];
    std::va_list again;
    va_copy(again, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has started it
    const int length = std::vsnprintf(small, sizeof small, format, arguments);
    const int error = errno;
    CString result;
    try {
        if (length < 0 && error != EILSEQ)
            AfxThrowMemoryException();
        if (length >= static_cast<int>(sizeof small)) {
            result.Reserve(static_cast<std::size_t>(length), true);
            std::vsnprintf(result.m_data, static_cast<std::size_t>(length) + 1, format, again);
            result.SetLength(static_cast<std::size_t>(length));
        } else if (length > 0) {
            result.Assign(small, static_cast<std::size_t>(length));
        }
    } catch (...) {
        va_end(again);
        throw;
    }
    va_end(again);
    std::swap(m_data, result.m_data);
}

char* CString::GetBuffer(int minLength) {
    // The empty block is never handed out for writing.
    const int length = std::max({minLength, GetLength(), 1});
    Reserve(static_cast<std::size_t>(length), true);
    return m_data;
}

char* CString::GetBufferSetLength(int length) {
    GetBuffer(length);
    SetLength(static_cast<std::size_t>(std::max(length, 0)));
    return m_data;
}

void CString::ReleaseBuffer(int length) {
    if (m_data == Nothing())
        return;
    const int room = Header()->m_capacity;
    if (length < 0) {
        const auto* nul =
            static_cast<const char*>(std::memchr(m_data, '\0', static_cast<std::size_t>(room)));
        length = nul != nullptr ? static_cast<int>(nul - m_data) : room;
    }
    length = std::min(length, room);
    if (!IsUnique()) {
        // A copy taken meanwhile keeps the characters; what was written past its length comes
        // along.
        CString own;
        own.Reserve(static_cast<std::size_t>(room), true);
        std::memcpy(own.m_data, m_data, static_cast<std::size_t>(length));
        own.SetLength(static_cast<std::size_t>(length));
        std::swap(m_data, own.m_data);
        return;
    }
    SetLength(static_cast<std::size_t>(length));
}

void CString::FreeExtra() {
    const auto length = static_cast<std::size_t>(GetLength());
    if (length == 0) {
        Empty();
        return;
    }
    const std::size_t room = RoundCapacity(length);
    if (IsUnique() && room < static_cast<std::size_t>(Header()->m_capacity))
        m_data = AllocateBlock(Header(), room)->Chars();
    Check();
}

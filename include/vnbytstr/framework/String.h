// CString, the framework's string: bytes in the process's ANSI code page.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Types.h"

#include <atomic>
#include <compare>
#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <utility>

namespace vnbytstr::detail {

/// What stands before the characters of a string. Shared between copies, counted by m_refs.
struct StringHeader {
    int m_refs;
    int m_length;   ///< bytes, without the terminating NUL
    int m_capacity; ///< bytes there is room for, without the terminating NUL

    char* Chars() { return reinterpret_cast<char*>(this + 1); }
    std::atomic_ref<int> Refs() { return std::atomic_ref<int>(m_refs); }
};

/// The block of every empty string. It is never counted and never written.
struct EmptyStringBlock {
    StringHeader m_header;
    char m_nul;
};
VNBYTSTR_API extern EmptyStringBlock emptyString;

} // namespace vnbytstr::detail

/// A string of bytes, one pointer wide. A copy shares the characters of its source (an atomic
/// count) until one of the two changes. Distinct objects may be used from distinct threads, copies
/// of each other included; one object from one thread at a time.
///
/// Lengths, counts and indexes are in bytes; an index counts from 0. A string may hold NUL bytes:
/// they survive copying, joining and cutting out. Comparisons and searches (Compare..., Find...,
/// Span..., the relational operators) read text as C does, up to the first NUL; the functions that
/// change a string work on its whole length. A null `const char*` is the same as an empty text.
///
/// Upper and lower case, and white space, are those of ASCII here, whatever the code page; other
/// bytes are left as they are. A character of several bytes is several bytes to all functions.
///
/// Errors: a length that would pass INT_MAX, or a lack of memory, throws CMemoryException
/// and leaves the string as it was. Indexes and counts out of range are defined for each function;
/// none reads or writes out of bounds.
///
/// A text argument may point into the string it is given to.
class VNBYTSTR_API CString {
public:
    CString() noexcept : m_data(Nothing()) {}
    CString(const CString& other) noexcept : m_data(other.m_data) { AddRef(); }
    CString(CString&& other) noexcept : m_data(std::exchange(other.m_data, Nothing())) {}
    /// A copy of the text up to its NUL.
    CString(const char* text) : m_data(Nothing()) { Assign(text, TextLength(text)); }
    CString(const unsigned char* text) : CString(reinterpret_cast<const char*>(text)) {}
    CString(std::nullptr_t) noexcept : CString() {}
    /// Takes exactly `length` bytes, NUL bytes included. A negative length, or a null text, is
    /// empty.
    CString(const char* text, int length) : m_data(Nothing()) {
        if (text != nullptr && length > 0)
            Assign(text, static_cast<std::size_t>(length));
    }
    /// `repeat` times `ch`; empty when `repeat` is less than 1.
    explicit CString(char ch, int repeat = 1);
    ~CString() { Release(); }

    CString& operator=(const CString& other) noexcept {
        if (this != &other) {
            Release();
            m_data = other.m_data;
            AddRef();
        }
        return *this;
    }
    CString& operator=(CString&& other) noexcept {
        std::swap(m_data, other.m_data);
        return *this;
    }
    /// Replaces the content by the text up to its NUL, or by one byte.
    CString& operator=(const char* text) {
        Assign(text, TextLength(text));
        return *this;
    }
    /// Replaces the content by one byte.
    CString& operator=(char ch) {
        Assign(&ch, 1);
        return *this;
    }

    /// Bytes, without the terminating NUL.
    int GetLength() const noexcept { return Header()->m_length; }
    bool IsEmpty() const noexcept { return GetLength() == 0; }
    /// Makes the string empty and gives its memory back.
    void Empty() noexcept {
        Release();
        m_data = Nothing();
    }

    /// The characters with a terminating NUL; valid until the string changes or ends.
    operator const char*() const noexcept { return m_data; }
    /// The byte at `index`; NUL past the end.
    char GetAt(int index) const noexcept {
        return static_cast<UINT>(index) < static_cast<UINT>(GetLength()) ? m_data[index] : '\0';
    }
    char operator[](int index) const noexcept { return GetAt(index); }
    /// Changes the byte at `index`; CInvalidArgException past the end.
    void SetAt(int index, char ch);

    /// Appends a text.
    CString& operator+=(const CString& other) {
        Append(other.m_data, static_cast<std::size_t>(other.GetLength()));
        return *this;
    }
    /// Appends a text up to its NUL.
    CString& operator+=(const char* text) {
        Append(text, TextLength(text));
        return *this;
    }
    /// The room grows to twice what it was, so that a string built byte by byte costs linear time.
    CString& operator+=(char ch) {
        vnbytstr::detail::StringHeader* header = Header();
        if (header->m_length < header->m_capacity && IsUnique()) {
            m_data[header->m_length] = ch;
            m_data[++header->m_length] = '\0';
        } else {
            Append(&ch, 1);
        }
        return *this;
    }

    /// Less than 0, 0 or greater than 0, by unsigned bytes.
    int Compare(const char* text) const noexcept {
        return std::strcmp(m_data, text != nullptr ? text : "");
    }
    /// As Compare, with the ASCII letters in lower case.
    int CompareNoCase(const char* text) const noexcept;

    /// The bytes from `first` on. A negative `first` counts as 0, one past the end gives nothing.
    CString Mid(int first) const { return Mid(first, GetLength()); }
    /// At most `count` bytes from `first` on; nothing when `count` is negative.
    CString Mid(int first, int count) const;
    /// The first `count` bytes, or all; nothing when `count` is negative.
    CString Left(int count) const { return Mid(0, count); }
    /// The last `count` bytes, or all; nothing when `count` is negative.
    CString Right(int count) const;
    /// The longest beginning whose bytes are all in `set`.
    CString SpanIncluding(const char* set) const;
    /// The longest beginning none of whose bytes is in `set`.
    CString SpanExcluding(const char* set) const;

    /// Makes ASCII letters upper or lower case.
    void MakeUpper();
    void MakeLower();
    /// Reverses the bytes.
    void MakeReverse();
    /// Removes white space (blank, tab, line feed, vertical tab, form feed, carriage return), `ch`,
    /// or all bytes of `set`, at the beginning.
    void TrimLeft() { TrimLeft(" \t\n\v\f\r"); }
    void TrimLeft(char ch);
    void TrimLeft(const char* set);
    /// As TrimLeft, at the end.
    void TrimRight() { TrimRight(" \t\n\v\f\r"); }
    void TrimRight(char ch);
    void TrimRight(const char* set);

    /// Index of the first `ch` at or after `from`; -1 when it is not found. A negative `from`
    /// counts as 0; past the end nothing is found. NUL is found where the text ends.
    int Find(char ch, int from = 0) const noexcept;
    /// As above for a text; an empty one is found at `from`.
    int Find(const char* text, int from = 0) const noexcept;
    /// Index of the last `ch`, or -1.
    int ReverseFind(char ch) const noexcept;
    /// Index of the first byte that is in `set`, or -1.
    int FindOneOf(const char* set) const noexcept;

    /// Replaces every `from` by `to`. Returns how many were found, 0 when the two are equal.
    int Replace(char from, char to);
    /// Replaces every `from`, left to right and not looking again at what was put in. Returns how
    /// many; 0 when `from` is empty.
    int Replace(const char* from, const char* to);
    /// Removes every `ch`. Returns how many.
    int Remove(char ch);
    /// Puts text in before `index` (below 0: at the beginning; past the end: at the end). Returns
    /// the new length.
    int Insert(int index, char ch);
    int Insert(int index, const char* text);
    /// Removes up to `count` bytes from `index` on (a negative index counts as 0). Returns the new
    /// length.
    int Delete(int index, int count = 1);

    /// Formats as printf does, with the widths of this platform's types (`%ld` is 64 bits on 64-bit
    /// Linux and 32 on Windows). The text may be of any length. An argument that cannot be
    /// converted (a wide character the C locale cannot express) gives an empty string.
    VNBYTSTR_FORMAT(2, 3) void Format(const char* format, ...);
    VNBYTSTR_FORMAT(2, 0) void FormatV(const char* format, std::va_list arguments);

    /// A buffer of at least `minLength` bytes and a NUL that holds the string, for the caller to
    /// change; no other string shares it. New bytes are not set. The length stays as it is until
    /// ReleaseBuffer, which must come before any other use of the string. Negative counts as 0.
    char* GetBuffer(int minLength);
    /// As GetBuffer, and sets the length to `length` at once.
    char* GetBufferSetLength(int length);
    /// Ends the use of the buffer and sets the length; -1 (or any negative value): up to the first
    /// NUL. A length that passes the buffer is cut to it.
    void ReleaseBuffer(int length = -1);
    /// Frees memory that the string does not need.
    void FreeExtra();

private:
    static char* Nothing() noexcept { return &vnbytstr::detail::emptyString.m_nul; }
    static std::size_t TextLength(const char* text) noexcept {
        return text != nullptr ? std::strlen(text) : 0;
    }
    vnbytstr::detail::StringHeader* Header() const noexcept {
        return reinterpret_cast<vnbytstr::detail::StringHeader*>(m_data) - 1;
    }
    bool IsUnique() const noexcept {
        return m_data != Nothing() && Header()->Refs().load(std::memory_order_acquire) == 1;
    }
    void AddRef() const noexcept {
        if (m_data != Nothing())
            Header()->Refs().fetch_add(1, std::memory_order_relaxed);
    }
    void Release() noexcept {
        if (m_data != Nothing() && Header()->Refs().fetch_sub(1, std::memory_order_acq_rel) == 1)
            FreeBlock();
    }
    void FreeBlock() noexcept;
    void Assign(const char* text, std::size_t length);
    void Append(const char* text, std::size_t length);
    void Splice(int index, int removed, const char* text, std::size_t length);
    void Reserve(std::size_t length, bool exact);
    void MakeUnique() { Reserve(static_cast<std::size_t>(GetLength()), true); }
    void SetLength(std::size_t length) noexcept;
    void Check() const noexcept;

    char* m_data;
};

/// `left` and `right` joined.
inline CString operator+(CString left, const CString& right) {
    left += right;
    return left;
}
inline CString operator+(CString left, const char* right) {
    left += right;
    return left;
}
inline CString operator+(CString left, char right) {
    left += right;
    return left;
}
inline CString operator+(const char* left, const CString& right) {
    CString joined(left);
    joined += right;
    return joined;
}
inline CString operator+(char left, const CString& right) {
    CString joined(left);
    joined += right;
    return joined;
}

/// All six relations, between two strings and between a string and a text on either side.
inline bool operator==(const CString& left, const CString& right) noexcept {
    return left.Compare(right) == 0;
}
inline bool operator==(const CString& left, const char* right) noexcept {
    return left.Compare(right) == 0;
}
inline std::strong_ordering operator<=>(const CString& left, const CString& right) noexcept {
    return left.Compare(right) <=> 0;
}
inline std::strong_ordering operator<=>(const CString& left, const char* right) noexcept {
    return left.Compare(right) <=> 0;
}

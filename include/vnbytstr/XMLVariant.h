// A value on its way into or out of an XML document.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <concepts>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace vnbytstr::detail {

template <class T>
concept VariantCharacter = std::same_as<T, char> || std::same_as<T, wchar_t> ||
    std::same_as<T, char8_t> || std::same_as<T, char16_t> || std::same_as<T, char32_t>;
/// Integers and reals; a BYTE is a number.
template <class T>
concept VariantNumber = std::is_arithmetic_v<T> && !std::same_as<T, bool> && !VariantCharacter<T>;
/// What a text of another kind than char's is made of.
template <class T>
concept VariantForeignText =
    !std::same_as<std::remove_cv_t<T>, char> &&
    (VariantCharacter<std::remove_cv_t<T>> || std::same_as<std::remove_cv_t<T>, unsigned char> ||
     std::same_as<std::remove_cv_t<T>, signed char>);
template <class T>
concept VariantTarget = std::same_as<T, int> || std::same_as<T, DWORD> || std::same_as<T, long> ||
    std::same_as<T, unsigned long> || std::same_as<T, long long> ||
    std::same_as<T, unsigned long long> || std::same_as<T, float> || std::same_as<T, double> ||
    std::same_as<T, bool> || std::same_as<T, void*>;

} // namespace vnbytstr::detail

/// A value that is held as its text, with a tag that says what kind of value the text came from.
///
/// | kind    | text                                         | read back by      |
/// |---------|----------------------------------------------|-------------------|
/// | string  | its bytes                                    | operator CString  |
/// | integer | decimal digits                               | operator int      |
/// | double  | printf's "%f" with "." in every locale       | operator double   |
/// | boolean | "true" or "false"                            | operator bool     |
/// | raw     | the bytes given                              | GetRawData        |
/// | pointer | "0x" and hexadecimal digits, in lower case   | operator void*    |
///
/// Every conversion reads the text, whatever the kind. A value of no bytes is empty: an empty
/// string, too. What cannot be allocated throws CMemoryException (RedistributeMemory: returns
/// false) and leaves the variant empty.
class VNBYTSTR_API CXMLVariant {
public:
    /// What was put in.
    enum Kind : int { kString = 0, kInteger, kDouble, kBoolean, kRaw, kPointer };

    /// Empty.
    CXMLVariant() noexcept = default;
    CXMLVariant(const CXMLVariant& other);
    CXMLVariant(CXMLVariant&& other) noexcept;
    CXMLVariant(const CString& value) { Set(value); }
    /// A text, null for an empty one. (A literal would else count as a bool.)
    CXMLVariant(const char* value) { Set(CString(value)); }
    CXMLVariant(int value) { Set(value); } // enumerations, too
    template <vnbytstr::detail::VariantNumber T>
    CXMLVariant(T value) {
        SetNumber(value);
    }
    template <std::same_as<bool> T>
    CXMLVariant(T value) {
        Set(value);
    }
    CXMLVariant(void* value) { Set(value); }
    CXMLVariant(std::nullptr_t) { Set(static_cast<void*>(nullptr)); }
    /// Deleted, lest it silently become a number, "true" or an address: pass a CString or an int.
    template <vnbytstr::detail::VariantCharacter T>
    CXMLVariant(T character) = delete;
    template <vnbytstr::detail::VariantForeignText T>
    CXMLVariant(T* text) = delete;
    virtual ~CXMLVariant();

    /// Take a value as the constructors do.
    CXMLVariant& operator=(const CXMLVariant& other);
    CXMLVariant& operator=(CXMLVariant&& other) noexcept;
    CXMLVariant& operator=(const CString& value) {
        Set(value);
        return *this;
    }
    CXMLVariant& operator=(const char* value) {
        Set(CString(value));
        return *this;
    }
    CXMLVariant& operator=(int value) {
        Set(value);
        return *this;
    }
    template <vnbytstr::detail::VariantNumber T>
    CXMLVariant& operator=(T value) {
        SetNumber(value);
        return *this;
    }
    template <std::same_as<bool> T>
    CXMLVariant& operator=(T value) {
        Set(value);
        return *this;
    }
    template <vnbytstr::detail::VariantCharacter T>
    CXMLVariant& operator=(T character) = delete;
    template <vnbytstr::detail::VariantForeignText T>
    CXMLVariant& operator=(T* text) = delete;
    CXMLVariant& operator=(void* value) {
        Set(value);
        return *this;
    }
    CXMLVariant& operator=(std::nullptr_t) {
        Set(static_cast<void*>(nullptr));
        return *this;
    }

    /// Whether it has no bytes.
    bool IsEmpty() const noexcept { return m_data == nullptr; }
    /// Frees the text. The kind stays.
    void Clear() noexcept;
    /// Makes room for `n` bytes and a terminator and sets the length to `n`; bytes that were not
    /// there before are zero. Less than 1 clears. False, and empty, when memory runs out.
    bool RedistributeMemory(LONG n) noexcept;
    /// Takes `n` bytes (none when it is negative, or `bytes` null). They may be the variant's own.
    void SetRawData(const char* bytes, LONG n);
    /// The same as a string.
    void SetText(const char* bytes, LONG n) {
        SetRawData(bytes, n);
        m_type = kString;
    }
    /// The bytes with a terminator after them, null when empty; valid until the variant changes.
    char* GetRawData() noexcept { return m_data; }
    const char* GetRawData() const noexcept { return m_data; }
    /// Bytes without the terminator.
    LONG GetLength() const noexcept { return m_length; }
    /// What the last assignment was made from.
    Kind GetType() const noexcept { return static_cast<Kind>(m_type); }

    /// The text; it may hold NUL bytes.
    operator CString() const { return {m_data, m_length}; }
    /// The text as exactly the type asked for, so that no other one comes between:
    ///
    /// - int: by strtol in base 10: leading blanks, a sign and the digits that follow; 0 without
    ///   any. A number past the 32 bits becomes the nearest one. The 64-bit types likewise.
    /// - DWORD: as above by strtoul: what fits 32 bits as an unsigned number, "-1" too.
    /// - double, float: by strtod in the thread's C locale, "." standing for its decimal separator;
    ///   0 when empty.
    /// - bool: false for an empty text, "false" and "0"; case counts.
    /// - void*: by hexadecimal digits with or without "0x"; null when empty.
    template <vnbytstr::detail::VariantTarget T>
    operator T() const {
        if constexpr (std::same_as<T, int>)
            return ToInt();
        else if constexpr (std::same_as<T, DWORD>)
            return ToDWord();
        else if constexpr (std::is_floating_point_v<T>)
            return static_cast<T>(ToDouble());
        else if constexpr (std::same_as<T, bool>)
            return ToBool();
        else if constexpr (std::same_as<T, void*>)
            return ToPointer();
        else if constexpr (std::is_signed_v<T>)
            return static_cast<T>(ToLongLong());
        else
            return static_cast<T>(ToULongLong());
    }

    /// Whether the bytes are those of the text.
    friend bool operator==(const CXMLVariant& left, const CString& right) noexcept {
        return left.IsText(right, right.GetLength());
    }
    friend bool operator==(const CXMLVariant& left, const char* right) noexcept {
        return left.IsText(right, right != nullptr ? static_cast<LONG>(std::strlen(right)) : 0);
    }
    /// Whether the whole text is a number of that value ("1.50" is 1.5), or is what a variant made
    /// of the number holds.
    template <vnbytstr::detail::VariantNumber T>
    friend bool operator==(const CXMLVariant& left, T right) {
        if constexpr (std::is_floating_point_v<T>)
            return left.IsNumber(static_cast<double>(right));
        else if constexpr (std::is_signed_v<T>)
            return left.IsNumber(static_cast<long long>(right));
        else
            return left.IsNumber(static_cast<unsigned long long>(right));
    }
    /// Whether it reads as that.
    template <std::same_as<bool> T>
    friend bool operator==(const CXMLVariant& left, T right) {
        return left.ToBool() == right;
    }
    template <vnbytstr::detail::VariantCharacter T>
    friend bool operator==(const CXMLVariant& left, T right) = delete;
    template <vnbytstr::detail::VariantForeignText T>
    friend bool operator==(const CXMLVariant& left, T* right) = delete;

protected:
    /// What constructors and assignments do.
    void Set(const CXMLVariant& value);
    void Set(const CString& value);
    void Set(int value);
    void Set(double value);
    void Set(bool value);
    void Set(void* value);

private:
    template <class T>
    void SetNumber(T value) {
        if constexpr (std::is_floating_point_v<T>)
            Set(static_cast<double>(value));
        else if constexpr (std::is_signed_v<T>)
            SetInteger(static_cast<long long>(value));
        else
            SetInteger(static_cast<unsigned long long>(value));
    }
    void SetInteger(long long value);
    void SetInteger(unsigned long long value);
    int ToInt() const noexcept;
    DWORD ToDWord() const noexcept;
    long long ToLongLong() const noexcept;
    unsigned long long ToULongLong() const noexcept;
    double ToDouble() const;
    bool ToBool() const noexcept;
    void* ToPointer() const noexcept;
    bool IsText(const char* text, LONG length) const noexcept;
    bool IsNumber(long long number) const noexcept;
    bool IsNumber(unsigned long long number) const noexcept;
    bool IsNumber(double number) const;
    void Check() const noexcept;

    char* m_data = nullptr;
    LONG m_length = 0;
    int m_type = kString;
};

/// Whether the bytes are the same; kinds do not count.
VNBYTSTR_API bool operator==(const CXMLVariant& left, const CXMLVariant& right) noexcept;

// A value on its way into or out of an XML document.
#pragma once

#include "platform/framework/Export.h"
#include "platform/framework/String.h"
#include "platform/framework/Types.h"

#include <cstddef>

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
    enum Kind : int { kString = 0, kInteger, kDouble, kBoolean, kRaw, kPointer };

    /// Empty.
    CXMLVariant() noexcept = default;
    CXMLVariant(const CXMLVariant& other);
    CXMLVariant(CXMLVariant&& other) noexcept;
    CXMLVariant(const CString& value) { Set(value); }
    /// A text, null for an empty one. (A literal would else count as a bool.)
    CXMLVariant(const char* value) { Set(CString(value)); }
    CXMLVariant(int value) { Set(value); }
    CXMLVariant(double value) { Set(value); }
    CXMLVariant(bool value) { Set(value); }
    CXMLVariant(void* value) { Set(value); }
    CXMLVariant(std::nullptr_t) { Set(static_cast<void*>(nullptr)); }
    virtual ~CXMLVariant();

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
    CXMLVariant& operator=(double value) {
        Set(value);
        return *this;
    }
    CXMLVariant& operator=(bool value) {
        Set(value);
        return *this;
    }
    CXMLVariant& operator=(void* value) {
        Set(value);
        return *this;
    }
    CXMLVariant& operator=(std::nullptr_t) {
        Set(static_cast<void*>(nullptr));
        return *this;
    }

    /// Whether there is no byte.
    bool IsEmpty() const noexcept { return m_data == nullptr; }
    /// Frees the text. The kind stays.
    void Clear() noexcept;
    /// Makes room for `n` bytes and a terminator and takes `n` for the length; bytes that were not
    /// there before are zero. Less than 1 clears. False, and empty, when memory cannot be had.
    bool RedistributeMemory(LONG n) noexcept;
    /// Takes `n` bytes (none when it is negative, or `bytes` null). They may be the variant's own.
    void SetRawData(const char* bytes, LONG n);
    /// The same as a string.
    void SetText(const char* bytes, LONG n) {
        SetRawData(bytes, n);
        m_type = kString;
    }
    /// The bytes with a terminator behind them, null when empty; good until the variant changes.
    char* GetRawData() noexcept { return m_data; }
    const char* GetRawData() const noexcept { return m_data; }
    /// Bytes without the terminator.
    LONG GetLength() const noexcept { return m_length; }
    /// What the last assignment was made from.
    Kind GetType() const noexcept { return static_cast<Kind>(m_type); }

    /// The text; it may hold NUL bytes.
    operator CString() const { return {m_data, m_length}; }
    /// By strtol in base 10: leading blanks, a sign and the digits that follow; 0 without any. A
    /// number past the 32 bits becomes the nearest one.
    operator int() const noexcept;
    /// As above by strtoul: what fits 32 bits as an unsigned number, "-1" too.
    operator DWORD() const noexcept;
    /// By strtod in the thread's C locale, "." standing for its decimal separator; 0 when empty.
    operator double() const;
    /// False for an empty text, "false" and "0"; case counts.
    operator bool() const noexcept;
    /// By hexadecimal digits with or without "0x"; null when empty.
    operator void*() const noexcept;

protected:
    void Set(const CXMLVariant& value);
    void Set(const CString& value);
    void Set(int value);
    void Set(double value);
    void Set(bool value);
    void Set(void* value);

private:
    void Check() const noexcept;

    char* m_data = nullptr;
    LONG m_length = 0;
    int m_type = kString;
};

/// Whether the bytes are the same; kinds do not count.
VNBYTSTR_API bool operator==(const CXMLVariant& left, const CXMLVariant& right) noexcept;
inline bool operator!=(const CXMLVariant& left, const CXMLVariant& right) noexcept {
    return !(left == right);
}

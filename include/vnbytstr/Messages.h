// Texts with insertion points, message boxes, numbers as text, and what stands for a large object
// in a list.
//
// Nothing here throws to its caller. Message boxes go through vnbytstr::Interaction::Current().
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/MessageBoxTypes.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <cstdarg>
#include <cstddef>
#include <span>
#include <type_traits>
#include <utility>

// --- insertion points ----------------------------------------------------------------------------
// `%1` to `%9` of the format stand for the texts given, in any order and any number; one without a
// text gives "?", a null text nothing. All return the length of `out` in bytes, -1 on failure.

VNBYTSTR_API int FormatStringEx(CString& out, const char* format, const char* a1);
VNBYTSTR_API int FormatStringEx(CString& out, const char* format, const char* a1, const char* a2);
VNBYTSTR_API int FormatStringEx(CString& out, const char* format, const char* a1, const char* a2,
                                const char* a3, const char* a4, const char* a5, const char* a6,
                                const char* a7, const char* a8, const char* a9);
/// With a string resource for a format, loaded by LoadStringA(text, id, module). Returns -1 and
/// leaves `out` unchanged when there is no such string.
VNBYTSTR_API int FormatStringEx(CString& out, UINT id, HINSTANCE module, const char* a1);
VNBYTSTR_API int FormatStringEx(CString& out, UINT id, HINSTANCE module, const char* a1,
                                const char* a2);
VNBYTSTR_API int FormatStringEx(CString& out, UINT id, HINSTANCE module, const char* a1,
                                const char* a2, const char* a3, const char* a4, const char* a5,
                                const char* a6, const char* a7, const char* a8, const char* a9);

// --- message boxes -------------------------------------------------------------------------------

/// Shows the resource form of FormatStringEx in a framework message box of that type (MB_ values);
/// the string's id is the help context. Returns the ID value of the button, 0 when there could be
/// no box. A string that is missing shows an empty box.
VNBYTSTR_API int FormattedMessageBox(UINT id, HINSTANCE module, UINT type, const char* a1);
VNBYTSTR_API int FormattedMessageBox(UINT id, HINSTANCE module, UINT type, const char* a1,
                                     const char* a2);
VNBYTSTR_API int FormattedMessageBox(UINT id, HINSTANCE module, UINT type, const char* a1,
                                     const char* a2, const char* a3, const char* a4, const char* a5,
                                     const char* a6, const char* a7, const char* a8,
                                     const char* a9);
/// Shows a string resource in a framework message box; the id is the help context. Returns as
/// above, or -1 and shows nothing when there is no such string. The last argument is not used.
VNBYTSTR_API int DisplayMessageBox(UINT textId, HINSTANCE module, UINT type, UINT unused);
/// Shows a string resource under a caption that is one, too: the system's own message box, without
/// a help context. With right-to-left resources (ResourcesAreBiDi) MB_RIGHT and MB_RTLREADING are
/// added to the type. Returns -1 and shows nothing when either string is missing. The last argument
/// is not used.
VNBYTSTR_API int DisplayMessageBox(UINT textId, UINT captionId, HINSTANCE module, UINT type,
                                   UINT unused);

// --- printf-style formats ------------------------------------------------------------------------

namespace vnbytstr {

/// One argument of FormatString, with its type.
class FormatArgument {
public:
    /// How the argument is passed.
    enum class Kind : unsigned char { Signed, Unsigned, Floating, Text, Pointer };

    /// An integer or an enumeration.
    template <typename T>
    requires std::is_integral_v<T> || std::is_enum_v<T> FormatArgument(T value)
        : m_kind(std::is_signed_v<T> ? Kind::Signed : Kind::Unsigned), m_size(sizeof(T)),
          m_integer(static_cast<ULONGLONG>(static_cast<LONGLONG>(value))) {
        if constexpr (std::is_enum_v<T>)
            *this = FormatArgument(static_cast<std::underlying_type_t<T>>(value));
    }
    /// A number, a text (null: an empty one) or an address.
    FormatArgument(double value) : m_kind(Kind::Floating), m_floating(value) {}
    FormatArgument(const char* text) : m_kind(Kind::Text), m_pointer(text) {}
    FormatArgument(char* text) : FormatArgument(static_cast<const char*>(text)) {}
    FormatArgument(const CString& text) : FormatArgument(static_cast<const char*>(text)) {}
    FormatArgument(const void* pointer) : m_kind(Kind::Pointer), m_pointer(pointer) {}
    FormatArgument(std::nullptr_t) : m_kind(Kind::Text), m_pointer(nullptr) {}

    /// What it is.
    Kind GetKind() const { return m_kind; }
    /// Bytes of an integer's type.
    unsigned GetSize() const { return m_size; }
    ULONGLONG GetInteger() const { return m_integer; } ///< a negative one as its bits
    double GetFloating() const { return m_floating; }
    const char* GetText() const { return static_cast<const char*>(m_pointer); }
    const void* GetPointer() const { return m_pointer; }

private:
    Kind m_kind;
    unsigned m_size = 8;
    ULONGLONG m_integer = 0;
    double m_floating = 0;
    const void* m_pointer = nullptr;
};

namespace detail {
// Declared only: which one a call chooses tells what an argument pointer is.
std::true_type IsText(char* text);
std::false_type IsText(const volatile void* other);
std::false_type IsText(...);
inline constexpr bool kIsArgumentPointerText =
    decltype(IsText(std::declval<std::va_list&>()))::value;
} // namespace detail

/// What FormatString does.
VNBYTSTR_API int FormatArguments(CString& out, const char* format,
                                 std::span<const FormatArgument> arguments);

} // namespace vnbytstr

/// Puts `format` with its conversions, as those of printf, into `out`. The text may be of any
/// length. Arguments are integers (and enumerations), floating-point numbers, texts (char pointers
/// and CString; a null one is "(null)") and pointers.
///
/// The format need not be trusted: its conversions are checked against the arguments. It is
/// refused, with -1 and `out` unchanged, when it asks for more arguments than there are or for one
/// of another kind, when a conversion is unknown (`%n` is), incomplete or a wide one (`%S`, `%C`,
/// `%ls`), and when a width or a precision passes 16,384 (of a text: 16,777,216). Arguments left
/// over do not count.
///
/// Flags, width and precision (`*` too) are printf's. h and hh cut an integer to 16 or 8 bits; l,
/// ll, I32, I64, j, t, z and w change nothing, since the argument's own type says how wide it is.
/// Returns the length of the result in bytes.
template <typename... Arguments>
int FormatString(CString& out, const char* format, const Arguments&... arguments) {
    if constexpr (sizeof...(Arguments) == 0) {
        return vnbytstr::FormatArguments(out, format, {});
    } else {
        const vnbytstr::FormatArgument list[] = {vnbytstr::FormatArgument(arguments)...};
        return vnbytstr::FormatArguments(out, format, list);
    }
}
/// As above with an argument pointer, which cannot be checked: `format` must be trusted. Refused
/// are unknown conversions, `%n`, wide ones, and widths and precisions that are too large. The
/// widths of integers are this platform's (`%ld` has 64 bits); I64 is ll. A long double is printed
/// as a double. Where the platform passes `arguments` by value, it is unchanged afterwards.
VNBYTSTR_API int FormatStringV(CString& out, const char* format, std::va_list arguments);
/// The same under the other name, where the argument pointer is a distinct type. Where it is a
/// char*, this name takes a text, and FormatStringV takes argument pointers.
template <bool isText = vnbytstr::detail::kIsArgumentPointerText>
requires(!isText) int FormatString(CString& out, const char* format, std::va_list arguments) {
    return FormatStringV(out, format, arguments);
}

/// Sets the string to the decimal digits of the value, with a minus sign. When memory runs out the
/// string is empty or unchanged.
VNBYTSTR_API void FormatShort(CString& out, short value);
VNBYTSTR_API void FormatLong(CString& out, LONG value);
VNBYTSTR_API void FormatWORD(CString& out, WORD value);
VNBYTSTR_API void FormatDWORD(CString& out, DWORD value);

// --- large objects -------------------------------------------------------------------------------
// What a list shows in place of a large value, in the language of the resources; empty when the
// string is missing.

VNBYTSTR_API CString GetBlobDisplayString();
VNBYTSTR_API CString GetBlobLocatorDisplayString();
VNBYTSTR_API CString GetClobDisplayString();
VNBYTSTR_API CString GetClobLocatorDisplayString();
VNBYTSTR_API CString GetDBClobDisplayString();
VNBYTSTR_API CString GetDBClobLocatorDisplayString();
VNBYTSTR_API CString GetLongVarBlobDisplayString();
VNBYTSTR_API CString GetLongVarClobDisplayString();
VNBYTSTR_API CString GetLongVarDBClobDisplayString();

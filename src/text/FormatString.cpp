// FormatString: printf-style formats, checked against the arguments before these are used.
#include "vnbytstr/Messages.h"

#include "vnbytstr/framework/Exception.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

using vnbytstr::FormatArgument;
using vnbytstr::detail::WithoutExceptions;

namespace {

constexpr int kMaxWidth = 1 << 24; // of a text
// Of a number: some C libraries format it on the stack, which may be small.
constexpr int kMaxNumberWidth = 16384;
using Kind = FormatArgument::Kind;

/// One conversion of a format, between its percent sign and its letter.
struct Conversion {
    std::string flags;
    std::optional<int> width, precision;
    bool isStarWidth = false, isStarPrecision = false;
    std::string modifier; // h, l, ...; as glibc has them
    char letter = '\0';

    bool Is(const char* letters) const {
        return letter != '\0' && std::strchr(letters, letter) != nullptr;
    }
};

/// Reads decimal digits at `p`; false when they pass kMaxWidth.
bool ReadNumber(const char*& p, std::optional<int>& number) {
    while (*p >= '0' && *p <= '9') {
        number = number.value_or(0) * 10 + (*p++ - '0');
        if (*number > kMaxWidth)
            return false;
    }
    return true;
}

std::string ReadModifier(const char*& p) {
    for (const std::string_view each :
         {"hh", "ll", "I64", "I32", "h", "l", "L", "j", "z", "t", "w", "I"}) {
        if (std::strncmp(p, each.data(), each.size()) != 0)
            continue;
        p += each.size();
        if (each == "I64")
            return "ll";
        return each == "I32" || each == "w" ? "" : each == "I" ? "z" : std::string(each);
    }
    return {};
}

/// Reads the conversion after the percent sign; false for an unknown one.
bool ReadConversion(const char*& p, Conversion& conversion) {
    while (*p != '\0' && std::strchr("-+ #0", *p) != nullptr)
        conversion.flags += *p++;
    if (*p == '*') {
        conversion.isStarWidth = true;
        ++p;
    } else if (!ReadNumber(p, conversion.width)) {
        return false;
    }
    if (*p == '.') {
        ++p;
        if (*p == '*') {
            conversion.isStarPrecision = true;
            ++p;
        } else {
            conversion.precision = 0;
            if (!ReadNumber(p, conversion.precision))
                return false;
        }
    }
    conversion.modifier = ReadModifier(p);
    conversion.letter = *p;
    if (!conversion.Is("diouxXcspeEfFgGaA"))
        return false; // unknown, wide, %n, a position, or the format ends
    ++p;
    if (conversion.Is("cs") && conversion.modifier[0] == 'l')
        return false; // wide
    if (conversion.Is("csp"))
        conversion.modifier.clear();
    return true;
}

/// Formats conversions one after the other.
class Formatter {
public:
    explicit Formatter(std::span<const FormatArgument> arguments) : m_arguments(arguments) {}

    /// False when the format asks for an argument that is missing.
    bool Run(const char* format) {
        for (const char* p = format; *p != '\0';) {
            const char* percent = std::strchr(p, '%');
            if (percent == nullptr)
                percent = p + std::strlen(p);
            m_text.append(p, percent);
            p = percent;
            if (*p == '\0')
                break;
            if (*++p == '%') {
                m_text += *p++;
                continue;
            }
            Conversion conversion;
            if (!ReadConversion(p, conversion) || !Append(conversion))
                return false;
        }
        return true;
    }

    const std::string& GetText() const { return m_text; }

private:
    const FormatArgument* Next() {
        return m_next < m_arguments.size() ? &m_arguments[m_next++] : nullptr;
    }

    static bool IsInteger(const FormatArgument* argument) {
        return argument != nullptr &&
               (argument->GetKind() == Kind::Signed || argument->GetKind() == Kind::Unsigned);
    }

    /// The number that a `*` stands for.
    bool ReadStar(int& number) {
        const FormatArgument* argument = Next();
        if (!IsInteger(argument))
            return false;
        const auto value = static_cast<LONGLONG>(argument->GetInteger());
        if (value > kMaxWidth || value < -kMaxWidth)
            return false;
        number = static_cast<int>(value);
        return true;
    }

    bool Append(Conversion& conversion) {
        int number = 0;
        if (conversion.isStarWidth) {
            if (!ReadStar(number))
                return false;
            if (number < 0)
                conversion.flags += '-';
            conversion.width = number < 0 ? -number : number;
        }
        if (conversion.isStarPrecision) {
            if (!ReadStar(number))
                return false;
            if (number >= 0) // a negative one is ignored
                conversion.precision = number;
        }
        const FormatArgument* argument = Next();
        if (argument == nullptr)
            return false;
        switch (argument->GetKind()) {
        case Kind::Signed:
        case Kind::Unsigned:
            return conversion.Is("diouxXc") && AppendInteger(conversion, *argument);
        case Kind::Floating:
            return conversion.Is("eEfFgGaA") && Print(conversion, "", argument->GetFloating());
        case Kind::Text:
            if (conversion.Is("s"))
                return AppendText(conversion, argument->GetText());
            [[fallthrough]];
        case Kind::Pointer:
            return conversion.Is("p") && Print(conversion, "", argument->GetPointer());
        }
        return false;
    }

    bool AppendInteger(const Conversion& conversion, const FormatArgument& argument) {
        const ULONGLONG bits = argument.GetInteger();
        if (conversion.letter == 'c')
            return Print(conversion, "", static_cast<int>(static_cast<BYTE>(bits)));
        unsigned size = argument.GetSize();
        if (conversion.modifier == "h")
            size = 2;
        else if (conversion.modifier == "hh")
            size = 1;
        // Smaller ones are passed as int in C, too.
        else if (size < 4)
            size = 4;
        const unsigned shift = 64 - 8 * size;
        if (conversion.Is("di"))
            return Print(conversion, "ll", static_cast<long long>(bits << shift) >> shift);
        return Print(conversion, "ll", static_cast<unsigned long long>(bits << shift >> shift));
    }

    bool AppendText(const Conversion& conversion, const char* text) {
        if (text == nullptr)
            text = "(null)";
        const std::size_t limit = static_cast<std::size_t>(conversion.precision.value_or(INT_MAX));
        const std::size_t length = ::strnlen(text, limit);
        const auto width = static_cast<std::size_t>(conversion.width.value_or(0));
        const std::size_t padding = width > length ? width - length : 0;
        const bool isLeft = conversion.flags.find('-') != std::string::npos;
        m_text.append(isLeft ? 0 : padding, ' ');
        m_text.append(text, length);
        m_text.append(isLeft ? padding : 0, ' ');
        return true;
    }

    /// Prints one value with the C library.
    template <typename Value>
    bool Print(const Conversion& conversion, const char* modifier, Value value) {
        if (conversion.width.value_or(0) > kMaxNumberWidth ||
            conversion.precision.value_or(0) > kMaxNumberWidth)
            return false;
        std::string format = "%" + conversion.flags;
        if (conversion.width)
            format += std::to_string(*conversion.width);
        if (conversion.precision)
            format += "." + std::to_string(*conversion.precision);
        format = format + modifier + conversion.letter;
        const int length = std::snprintf(nullptr, 0, format.c_str(), value);
        if (length < 0)
            return false;
        const std::size_t old = m_text.size();
        m_text.resize(old + static_cast<std::size_t>(length) + 1);
        std::snprintf(&m_text[old], static_cast<std::size_t>(length) + 1, format.c_str(), value);
        m_text.pop_back();
        return true;
    }

    std::span<const FormatArgument> m_arguments;
    std::size_t m_next = 0;
    std::string m_text;
};

/// The argument pointer of a caller, advanced as a format says. An object, since platforms differ
/// in how an argument pointer may be passed to a function.
class ArgumentPointer {
public:
    explicit ArgumentPointer(std::va_list arguments) { va_copy(m_arguments, arguments); }
    ~ArgumentPointer() { va_end(m_arguments); }
    ArgumentPointer(const ArgumentPointer&) = delete;
    ArgumentPointer& operator=(const ArgumentPointer&) = delete;

    int Star() { return va_arg(m_arguments, int); }

    FormatArgument Next(const Conversion& conversion) {
        const std::string& modifier = conversion.modifier;
        if (conversion.Is("s"))
            return va_arg(m_arguments, const char*);
        if (conversion.Is("p"))
            return static_cast<const void*>(va_arg(m_arguments, void*));
        if (conversion.Is("eEfFgGaA"))
            return modifier == "L" ? static_cast<double>(va_arg(m_arguments, long double))
                                   : va_arg(m_arguments, double);
        const bool isSigned = conversion.Is("dic");
        if (modifier == "l")
            return Integer<long>(isSigned);
        if (modifier == "z" || modifier == "t")
            return Integer<std::ptrdiff_t>(isSigned);
        if (modifier == "ll" || modifier == "j" || modifier == "L")
            return Integer<long long>(isSigned);
        return Integer<int>(isSigned);
    }

private:
    template <typename Type>
    FormatArgument Integer(bool isSigned) {
        static_assert(sizeof(std::size_t) == sizeof(std::ptrdiff_t));
        if (isSigned)
            return va_arg(m_arguments, Type);
        return va_arg(m_arguments, std::make_unsigned_t<Type>);
    }

    std::va_list m_arguments;
};

/// The arguments that a format asks for; false when a conversion of it is refused.
bool Collect(const char* format, ArgumentPointer& pointer, std::vector<FormatArgument>& list) {
    while ((format = std::strchr(format, '%')) != nullptr) {
        if (*++format == '%') {
            ++format;
            continue;
        }
        Conversion conversion;
        if (!ReadConversion(format, conversion))
            return false;
        if (conversion.isStarWidth)
            list.emplace_back(pointer.Star());
        if (conversion.isStarPrecision)
            list.emplace_back(pointer.Star());
        list.push_back(pointer.Next(conversion));
    }
    return true;
}

int Assign(CString& out, const std::string& text) {
    if (text.size() > INT_MAX)
        return -1;
    out = CString(text.data(), static_cast<int>(text.size()));
    return out.GetLength();
}

} // namespace

int vnbytstr::FormatArguments(CString& out, const char* format,
                              std::span<const FormatArgument> arguments) {
    return WithoutExceptions(
        [&] {
            Formatter formatter(arguments);
            return formatter.Run(format != nullptr ? format : "") ? Assign(out, formatter.GetText())
                                                                  : -1;
        },
        -1);
}

int FormatStringV(CString& out, const char* format, std::va_list arguments) {
    return WithoutExceptions(
        [&] {
            ArgumentPointer pointer(arguments);
            std::vector<FormatArgument> list;
            if (!Collect(format != nullptr ? format : "", pointer, list))
                return -1;
            return vnbytstr::FormatArguments(out, format, list);
        },
        -1);
}

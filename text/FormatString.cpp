// FormatString: printf-style formats that are compared with the arguments before these are touched.
#include "vnbytstr/Messages.h"

#include "platform/framework/Exception.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

using vnbytstr::FormatArgument;
using vnbytstr::detail::WithoutExceptions;

namespace {

constexpr int kMaxWidth = 1 << 24;
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

/// Reads the conversion behind the percent sign; false when there is no such conversion.
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

/// Makes text of conversions, one after the other.
class Formatter {
public:
    explicit Formatter(std::span<const FormatArgument> arguments) : m_arguments(arguments) {}

    /// False when the format asks for what there is not.
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
            if (number >= 0) // a negative one counts as none
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

/// The format as glibc reads it, with the conversions that have been checked; false when one is
/// refused.
bool Rewrite(const char* format, std::string& rewritten) {
    for (const char* p = format; *p != '\0';) {
        rewritten += *p;
        if (*p++ != '%')
            continue;
        if (*p == '%') {
            rewritten += *p++;
            continue;
        }
        Conversion conversion;
        if (!ReadConversion(p, conversion))
            return false;
        rewritten += conversion.flags;
        if (conversion.isStarWidth)
            rewritten += '*';
        else if (conversion.width)
            rewritten += std::to_string(*conversion.width);
        if (conversion.isStarPrecision)
            rewritten += ".*";
        else if (conversion.precision)
            rewritten += "." + std::to_string(*conversion.precision);
        rewritten += conversion.modifier;
        rewritten += conversion.letter;
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

int FormatString(CString& out, const char* format, std::va_list arguments) {
    return WithoutExceptions(
        [&] {
            std::string rewritten;
            if (!Rewrite(format != nullptr ? format : "", rewritten))
                return -1;
            std::va_list again;
            va_copy(again, arguments);
            const int length = std::vsnprintf(nullptr, 0, rewritten.c_str(), again);
            va_end(again);
            if (length < 0)
                return -1;
            std::string text(static_cast<std::size_t>(length) + 1, '\0');
            // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it is the caller's
            std::vsnprintf(text.data(), text.size(), rewritten.c_str(), arguments);
            text.pop_back();
            return Assign(out, text);
        },
        -1);
}

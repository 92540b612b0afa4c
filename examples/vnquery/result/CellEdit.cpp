#include "vnquery/result/CellEdit.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>

namespace vnquery {

namespace {

bool IsNumber(std::string_view text, bool isInteger) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-'))
            return false;
    }
    const char* const end = text.data() + text.size();
    if (text.empty() || text[0] == '+' || text == "-")
        return false;
    if (isInteger)
        return text.find_first_not_of("0123456789", text[0] == '-' ? 1 : 0) ==
               std::string_view::npos;
    double number = 0;
    const auto [read, error] = std::from_chars(text.data(), end, number);
    return read == end && error == std::errc() && number - number == 0; // neither "inf" nor "nan"
}

std::string_view Trim(std::string_view text) {
    constexpr std::string_view kBlanks = " \t";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Bytes as SQL has them: x'00FF'.
std::optional<std::string> ReadBytes(std::string_view text) {
    if (text.size() % 2 == 0 || !(text.starts_with("x'") || text.starts_with("X'")) ||
        text.size() < 3 || text.back() != '\'')
        return {};
    std::string bytes;
    for (std::size_t i = 2; i + 1 < text.size(); i += 2) {
        unsigned char byte = 0;
        const char* const end = text.data() + i + 2;
        if (std::from_chars(text.data() + i, end, byte, 16).ptr != end)
            return {};
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

void SetValue(NewValue& value, Value::Type type, std::string_view bytes) {
    value.isDefault = false;
    value.value.Begin(type);
    value.value.Append({reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()});
    value.value.Complete();
}

} // namespace

EditFault ParseText(std::string_view text, ColumnKind kind, NewValue& value) {
    const bool isInteger = kind == ColumnKind::Integer;
    if (isInteger || kind == ColumnKind::Decimal) {
        const std::string_view number = Trim(text);
        if (!IsNumber(number, isInteger))
            return EditFault::NotANumber;
        SetValue(value, Value::Type::Number, number.substr(number[0] == '+' ? 1 : 0));
        return EditFault::None;
    }
    if (kind == ColumnKind::Binary) {
        const std::optional<std::string> bytes = ReadBytes(Trim(text));
        if (!bytes)
            return EditFault::Bytes;
        SetValue(value, Value::Type::Binary, *bytes);
        return EditFault::None;
    }
    SetValue(value, Value::Type::Text, text);
    return EditFault::None;
}

EditFault ParseCell(std::string_view typed, ColumnKind kind, const EditColumn& column,
                    const CellFormat& format, NewValue& value) {
    value = NewValue();
    if (typed == format.nullText)
        return column.isNullable ? EditFault::None : EditFault::NotNullable;
    if (!format.defaultText.empty() && typed == format.defaultText) {
        value.isDefault = true;
        return EditFault::None;
    }
    if (IsQuotedMarker(typed, format))
        typed = typed.substr(1, typed.size() - 2);
    return ParseText(typed, kind, value);
}

bool IsEditableInCell(const Value& value, const CellFormat& format) {
    if (value.GetType() == Value::Type::Null || value.GetType() == Value::Type::Number)
        return true;
    return value.GetType() == Value::Type::Text && !IsPlaceholder(value, format) &&
           MakeVisible(value.GetBytes()) == value.GetBytes();
}

std::string FromFieldText(std::string_view text, std::string_view original) {
    const bool hadPairs = original.find("\r\n") != std::string_view::npos;
    std::string value;
    value.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
            continue;
        if (text[i] == '\n' && hadPairs)
            value += '\r';
        value += text[i];
    }
    return value;
}

bool AreSame(const Value& a, const Value& b) {
    const auto isBytes = [](const Value& value) { return value.GetType() == Value::Type::Binary; };
    if (a.IsNull() != b.IsNull() || a.GetLength() != b.GetLength() || isBytes(a) != isBytes(b))
        return false;
    bool isSame = true;
    DWORD done = 0;
    a.ForEachPiece([&](std::span<const BYTE> piece) {
        const auto count = static_cast<DWORD>(piece.size());
        const std::string other = isSame ? b.Read(done, count) : std::string();
        isSame =
            isSame && other.size() == count && std::memcmp(other.data(), piece.data(), count) == 0;
        done += count;
    });
    return isSame;
}

} // namespace vnquery

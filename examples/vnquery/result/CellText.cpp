#include "vnquery/result/CellText.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace vnquery {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// Unicode 15: blocks whose characters combine with the one before (general categories Mn, Me, and
// Cf that shows nothing), as far as common scripts use them.
constexpr Range kZeroWidth[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD},   {0x05BF, 0x05BF},   {0x05C1, 0x05C2},
    {0x05C4, 0x05C5}, {0x0610, 0x061A}, {0x064B, 0x065F},   {0x0670, 0x0670},   {0x06D6, 0x06DC},
    {0x06DF, 0x06E4}, {0x0900, 0x0902}, {0x093C, 0x093C},   {0x0941, 0x0948},   {0x094D, 0x094D},
    {0x0E31, 0x0E31}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},   {0x1AB0, 0x1AFF},   {0x1DC0, 0x1DFF},
    {0x200B, 0x200D}, {0x20D0, 0x20F0}, {0x302A, 0x302D},   {0x3099, 0x309A},   {0xFE00, 0xFE0F},
    {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0x1F3FB, 0x1F3FF}, {0xE0100, 0xE01EF},
};
// Unicode UAX #11: wide and fullwidth characters.
constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x23E9, 0x23EC},   {0x2614, 0x2615},
    {0x267F, 0x267F},   {0x26A1, 0x26A1},   {0x2705, 0x2705},   {0x274C, 0x274C},
    {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50},   {0x2E80, 0x303E},   {0x3041, 0x33FF},
    {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},   {0xA960, 0xA97F},
    {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE10, 0xFE19},   {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},   {0x16FE0, 0x18AFF}, {0x1B000, 0x1B2FF},
    {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x1FA70, 0x1FAFF},
    {0x20000, 0x3FFFD},
};

bool IsIn(std::span<const Range> ranges, char32_t character) {
    const auto range = std::ranges::lower_bound(ranges, character, {}, &Range::last);
    return range != ranges.end() && range->first <= character;
}

/// Whether a terminal may act on the character instead of showing it.
bool IsControl(char32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0) ||
           (character >= 0x200E && character <= 0x200F) ||
           (character >= 0x2028 && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x2069);
}

void AppendControl(std::string& out, char32_t character) {
    switch (character) {
    case '\n':
        out += "\\n";
        return;
    case '\r':
        out += "\\r";
        return;
    case '\t':
        out += "\\t";
        return;
    default:
        char text[16];
        std::snprintf(text, sizeof text, character < 0x100 ? "\\x%02X" : "\\u%04X",
                      static_cast<unsigned>(character));
        out += text;
    }
}

/// Characters of the text; each byte that is not UTF-8 counts as one.
std::size_t CountCharacters(std::string_view text) {
    std::size_t count = 0;
    for (char32_t character = 0; !text.empty(); ++count)
        text.remove_prefix(std::max<std::size_t>(DecodeUtf8(text, character), 1));
    return count;
}

/// Bytes from 0x20 to 0x7E at the beginning of the text: they stand for themselves, one cell each.
std::size_t PlainRun(std::string_view text) {
    const auto end = std::ranges::find_if(
        text, [](char ch) { return static_cast<unsigned char>(ch - 0x20) > 0x7E - 0x20; });
    return static_cast<std::size_t>(end - text.begin());
}

std::string Placeholder(const char* kind, ULONGLONG length) {
    return "<" + std::string(kind) + " " + FormatSize(length) + ">";
}

/// The beginning of a text's first line: up to `limit` characters.
std::string_view Beginning(std::string_view text, DWORD limit) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    std::size_t end = 0;
    for (char32_t character = 0; end < line.size() && limit > 0; --limit)
        end += std::max<std::size_t>(DecodeUtf8(line.substr(end), character), 1);
    return line.substr(0, end);
}

bool IsMarker(std::string_view text, const CellFormat& format) {
    return text == format.nullText || (!format.defaultText.empty() && text == format.defaultText);
}

} // namespace

std::size_t DecodeUtf8(std::string_view text, char32_t& character) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) {
        character = lead;
        return 1;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length)
        return 0;
    character = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
        character = character << 6 | (byte(i) & 0x3F);
    }
    constexpr char32_t kMin[] = {0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character < 0xE000;
    return character >= kMin[length - 2] && character < 0x110000 && !isSurrogate ? length : 0;
}

void AppendVisible(std::string& out, std::string_view text) {
    for (;;) {
        const std::size_t run = PlainRun(text);
        out += text.substr(0, run);
        text.remove_prefix(run);
        if (text.empty())
            return;
        char32_t character = 0;
        const std::size_t length = DecodeUtf8(text, character);
        if (length == 0)
            AppendControl(out, static_cast<unsigned char>(text[0]));
        else if (IsControl(character))
            AppendControl(out, character);
        else
            out += text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

std::string MakeVisible(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    AppendVisible(out, text);
    return out;
}

ULONGLONG BytesToShow(const CellFormat& format) {
    constexpr ULONGLONG kMaxCharacter = 4;
    return kMaxCharacter * format.textLimit;
}

namespace {

bool IsLongText(std::string_view bytes, ULONGLONG length, const CellFormat& format) {
    return length > BytesToShow(format) ||
           (length > format.textLimit && CountCharacters(bytes) > format.textLimit);
}

} // namespace

void AppendCell(std::string& out, Value::Type type, std::string_view bytes, ULONGLONG length,
                const CellFormat& format) {
    switch (type) {
    case Value::Type::Null:
        out += format.nullText;
        return;
    case Value::Type::Number:
        out += bytes;
        return;
    case Value::Type::Binary:
        out += Placeholder("BLOB", length);
        return;
    case Value::Type::Text:
        break;
    }
    const bool isQuoted = IsMarker(bytes, format) || IsQuotedMarker(bytes, format);
    if (format.hasPreviews) {
        const std::string_view beginning = Beginning(bytes, format.textLimit);
        if (beginning.size() < length) {
            AppendVisible(out, beginning);
            out += " \u2026 [" + FormatSize(length) + "]";
            return;
        }
    }
    if (IsLongText(bytes, length, format))
        out += Placeholder("CLOB", length);
    else if (isQuoted)
        out.append(1, '"').append(bytes).append(1, '"');
    else
        AppendVisible(out, bytes);
}

std::string FormatCell(const Value& value, const CellFormat& format) {
    std::string bytes;
    if (value.GetType() == Value::Type::Number)
        bytes = value.GetBytes();
    else if (value.GetType() == Value::Type::Text)
        bytes = value.Read(
            0, static_cast<DWORD>(std::min<ULONGLONG>(value.GetLength(), BytesToShow(format))));
    std::string out;
    AppendCell(out, value.GetType(), bytes, value.GetLength(), format);
    return out;
}

bool IsPlaceholder(const Value& value, const CellFormat& format) {
    if (value.GetType() != Value::Type::Text)
        return value.GetType() == Value::Type::Binary;
    const ULONGLONG length = value.GetLength();
    return IsLongText(length > BytesToShow(format) ? std::string() : value.GetBytes(), length,
                      format);
}

bool IsQuotedMarker(std::string_view text, const CellFormat& format) {
    while (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        text = text.substr(1, text.size() - 2);
        if (IsMarker(text, format))
            return true;
    }
    return false;
}

std::size_t DisplayWidth(std::string_view text) {
    std::size_t width = 0;
    for (;;) {
        const std::size_t run = PlainRun(text);
        width += run;
        text.remove_prefix(run);
        if (text.empty())
            return width;
        char32_t character = 0;
        const std::size_t length = std::max<std::size_t>(DecodeUtf8(text, character), 1);
        if (character < 0x300)
            ++width;
        else if (!IsIn(kZeroWidth, character))
            width += IsIn(kWide, character) ? 2 : 1;
        text.remove_prefix(length);
    }
}

std::string FormatSize(std::uint64_t bytes) {
    if (bytes < 1024)
        return std::to_string(bytes) + " B";
    constexpr std::array kUnits = {"KB", "MB", "GB", "TB"};
    double size = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    for (; size >= 999.95 && unit + 1 < kUnits.size(); ++unit)
        size /= 1024;
    char text[32];
    std::snprintf(text, sizeof text, "%.*f %s", size < 99.95 ? 1 : 0, size, kUnits[unit]);
    return text;
}

std::string GroupDigits(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t place = digits.size(); place > 3;) {
        place -= 3;
        digits.insert(place, 1, ',');
    }
    return digits;
}

} // namespace vnquery

// Cutting, counting and editing text of any bytes in code pages of every kind, against a text that
// is split into its characters by rules written anew here.
#include "fuzz/FuzzInput.h"
#include "vnbytstr/MultibyteText.h"

#include <vector>

using namespace vnbytstr;
using fuzz::Require;
using fuzz::ToCString;
using fuzz::ToStdString;

namespace {

bool IsIn(char c, int from, int to) {
    const int byte = static_cast<BYTE>(c);
    return from <= byte && byte <= to;
}

/// Bytes of the well-formed sequence at the beginning of a text, 1 when there is none (The Unicode
/// Standard, table 3-7).
std::size_t Utf8Length(std::string_view text) {
    struct Row {
        int first, last, secondFrom, secondTo;
        std::size_t length;
    };
    constexpr Row kRows[] = {{0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
                             {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3},
                             {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
                             {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};
    for (const Row& row : kRows) {
        if (!IsIn(text[0], row.first, row.last))
            continue;
        if (text.size() < row.length || !IsIn(text[1], row.secondFrom, row.secondTo))
            return 1;
        for (std::size_t i = 2; i < row.length; ++i) {
            if (!IsIn(text[i], 0x80, 0xBF))
                return 1;
        }
        return row.length;
    }
    return 1;
}

std::size_t LengthOfFirst(UINT page, std::string_view text) {
    bool isLead = false;
    switch (page) {
    case 65001:
        return Utf8Length(text);
    case 54936:
        return CodePage::Find(page)->CharLength(text.data(), text.data() + text.size());
    case 932:
        isLead = IsIn(text[0], 0x81, 0x9F) || IsIn(text[0], 0xE0, 0xFC);
        break;
    case 936:
    case 949:
    case 950:
        isLead = IsIn(text[0], 0x81, 0xFE);
        break;
    default:
        break;
    }
    return isLead && text.size() > 1 ? 2 : 1;
}

std::vector<std::string> Split(UINT page, std::string_view text) {
    std::vector<std::string> characters;
    while (!text.empty()) {
        characters.emplace_back(text.substr(0, LengthOfFirst(page, text)));
        text.remove_prefix(characters.back().size());
    }
    return characters;
}

std::string Joined(const std::vector<std::string>& characters, std::size_t from, std::size_t to) {
    std::string text;
    for (std::size_t i = from; i < std::min(to, characters.size()); ++i)
        text += characters[i];
    return text;
}

void CheckParts(const std::string& text, const std::vector<std::string>& characters, int n) {
    const CString source = ToCString(text);
    const std::size_t count = n < 0 ? 0 : static_cast<std::size_t>(n), all = characters.size();
    const bool isWhole = n >= source.GetLength();
    Require(VariousByteLength(source) == static_cast<int>(all));
    const std::string left = isWhole ? text : Joined(characters, 0, count);
    Require(ToStdString(VariousByteLeft(source, n)) == left);
    Require(ToStdString(VariousByteRight(source, n)) ==
            (isWhole ? text : Joined(characters, all - std::min(all, count), all)));
    CString front, back;
    VariousByteDivision(source, front, back, n);
    Require(ToStdString(front) == left && ToStdString(front) + ToStdString(back) == text);
    const auto isLong = [](const std::string& character) { return character.size() > 1; };
    if (std::count_if(characters.begin(), characters.end(), isLong) >= 2)
        Require(IsTextVariuosBytes(source));
}

void CheckCase(UINT page, const std::string& text, const std::vector<std::string>& characters) {
    for (const auto change : {+[](const CString& t) { return MakeStringUpper(t); },
                              +[](const CString& t) { return MakeStringLower(t); }}) {
        const CString changed = change(ToCString(text));
        Require(change(changed) == changed);
        const std::vector<std::string> after = Split(page, ToStdString(changed));
        Require(after.size() == characters.size());
        for (std::size_t i = 0; i < after.size(); ++i)
            Require(after[i].size() == characters[i].size());
    }
}

void CheckExchange(UINT page, const std::string& text, const std::string& from,
                   const std::string& to) {
    std::string expected;
    int count = from.empty() ? -1 : 0;
    for (std::size_t at = 0; at < text.size();) {
        const bool isHere = !from.empty() && text.compare(at, from.size(), from) == 0;
        const std::size_t length =
            isHere ? from.size() : LengthOfFirst(page, std::string_view(text).substr(at));
        expected += isHere ? to : text.substr(at, length);
        count += isHere ? 1 : 0;
        at += length;
    }
    CString result = ToCString(text);
    Require(Exchange(result, ToCString(from), ToCString(to)) == count);
    Require(ToStdString(result) == expected);
}

void CheckPad(const std::string& text, const std::vector<std::string>& characters, int length) {
    CString pattern = ToCString(text);
    Pad(pattern, length);
    std::string expected = text;
    const bool hasWildcard = std::count(characters.begin(), characters.end(), "%") +
                                 std::count(characters.begin(), characters.end(), "_") >
                             0;
    if (length > static_cast<int>(text.size()) && !hasWildcard)
        expected.resize(static_cast<std::size_t>(length), ' ');
    else if (length > static_cast<int>(text.size()) && characters.back() != "%")
        expected += '%';
    Require(ToStdString(pattern) == expected);
}

/// The three functions for columns of fixed width, on a text without NUL: only the character that
/// is cut changes. What a broken sequence could have become, its first bytes do not tell; in GB
/// 18030 digits may be among those.
void CheckCut(UINT page, const std::vector<std::string>& characters, std::size_t position) {
    const std::string text = Joined(characters, 0, characters.size());
    if (position >= text.size())
        return;
    std::size_t begin = 0, i = 0;
    while (begin + characters[i].size() <= position)
        begin += characters[i++].size();
    const std::size_t end = begin + characters[i].size();

    std::string lead = text, trail = text, copy(position + 1, 'x');
    CheckLeadMultiByteSymbol(lead.data(), static_cast<LONG>(position));
    CheckTrailMultiByteSymbol(trail.data(), static_cast<LONG>(position));
    CopyMultiByteStr(copy.data(), text.c_str(), static_cast<LONG>(position + 1));
    Require(copy == lead.substr(0, position + 1) &&
            lead.substr(position + 1) == text.substr(position + 1));
    if (position + 1 < end)
        Require(lead.substr(begin, position + 1 - begin) == std::string(position + 1 - begin, ' '));
    else if (end - begin > 1 || (page != 54936 && static_cast<BYTE>(text[position]) < 0x80))
        Require(lead == text);
    Require(lead.substr(0, begin) == text.substr(0, begin) || end - begin == 1 || page == 54936);
    std::string expected = text;
    if (begin < position)
        std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(position), end - position, ' ');
    Require(trail == expected);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const UINT page = fuzz::PageOf(input.Byte());
    const ScopedCodePage scope(page);
    const int n = input.Byte() - 4;
    const std::string from = input.Bytes(input.Byte() % 8), to = input.Bytes(input.Byte() % 8);
    std::string text = input.Rest();
    const std::vector<std::string> characters = Split(page, text);
    CheckParts(text, characters, n);
    CheckCase(page, text, characters);
    CheckExchange(page, text, from, to);
    CheckPad(text, characters, n);
    std::erase(text, '\0');
    CheckCut(page, Split(page, text), static_cast<std::size_t>(std::max(n, 0)));
    return 0;
}

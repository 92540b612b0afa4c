#include "vnquery/sources/ErrorPlace.h"

#include "vnquery/sources/SqlLexer.h"

#include <charconv>
#include <utility>

namespace vnquery {

namespace {

/// The text in quotes after `before`; empty without one.
std::string_view QuotedAfter(std::string_view message, std::string_view before, char quote) {
    const std::size_t found = message.find(before);
    if (found == std::string_view::npos)
        return {};
    message.remove_prefix(found + before.size());
    const std::size_t end = message.find(quote);
    return end == std::string_view::npos ? std::string_view() : message.substr(0, end);
}

/// Byte of the character with that number, from 1.
std::optional<std::size_t> ByteOfCharacter(std::string_view sql, std::size_t number) {
    for (std::size_t at = 0; at < sql.size(); ++at)
        if ((static_cast<unsigned char>(sql[at]) & 0xC0) != 0x80 && --number == 0)
            return at;
    return {};
}

/// The place of a word that stands in the statement once.
std::optional<std::size_t> FindOnce(std::string_view word, std::string_view sql) {
    std::optional<std::size_t> place;
    for (std::size_t at = sql.find(word); at != sql.npos; at = sql.find(word, at + 1)) {
        const std::size_t end = at + word.size();
        if (IsWordByte(word[0]) &&
            ((at > 0 && IsWordByte(sql[at - 1])) || (end < sql.size() && IsWordByte(sql[end]))))
            continue; // a part of another word
        if (place)
            return {};
        place = at;
    }
    return place;
}

} // namespace

std::optional<std::size_t> FindErrorPlace(std::string_view message, std::string_view sql) {
    constexpr std::string_view kCharacter = "at character ";
    if (const std::size_t at = message.find(kCharacter); at != std::string_view::npos) {
        const std::string_view digits = message.substr(at + kCharacter.size());
        std::size_t number = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (number > 0)
            return ByteOfCharacter(sql, number);
    }
    // MySQL quotes some of what follows the error; that may have quotes itself.
    constexpr std::string_view kNear = "to use near '";
    const std::size_t near = message.find(kNear);
    const std::size_t line = message.rfind("' at line ");
    std::string_view text;
    if (near != std::string_view::npos && line != std::string_view::npos && line > near)
        text = message.substr(near + kNear.size(), line - near - kNear.size());
    if (const std::size_t place = text.empty() ? text.npos : sql.find(text); place != text.npos)
        return place;
    for (const auto& [before, quote] : {std::pair{"at or near \"", '"'},
                                        {"column \"", '"'},
                                        {"relation \"", '"'},
                                        {"nknown column '", '\''}})
        if (const auto word = QuotedAfter(message, before, quote); !word.empty())
            return FindOnce(word, sql);
    return {};
}

} // namespace vnquery

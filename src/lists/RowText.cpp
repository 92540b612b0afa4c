#include "src/lists/RowText.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vnbytstr::detail {
namespace {

std::size_t FindSeparator(std::string_view text, std::string_view separator) {
    if (separator.size() == 1) { // the usual case: memchr is the fastest
        const void* found =
            text.empty() ? nullptr : std::memchr(text.data(), separator.front(), text.size());
        return found != nullptr
                   ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data())
                   : std::string_view::npos;
    }
    return separator.empty() ? std::string_view::npos : text.find(separator);
}

} // namespace

bool CellReader::Next(std::string_view& value) {
    if (m_ended)
        return false;
    const std::size_t at = FindSeparator(m_rest, m_separator);
    if (at == std::string_view::npos) {
        value = m_rest;
        m_rest = {};
        m_ended = true;
    } else {
        value = m_rest.substr(0, at);
        m_rest.remove_prefix(at + m_separator.size());
    }
    return true;
}

std::string_view CellText(std::string_view row, std::string_view separator, int column) {
    CellReader reader(row, separator);
    std::string_view value;
    for (int i = 0; i <= column; ++i)
        if (!reader.Next(value))
            return {};
    return value;
}

void CleanCell(std::string& row, std::size_t from, std::string_view separator) {
    const char blank = separator.find(' ') == std::string_view::npos ? ' ' : '_';
    std::replace(row.begin() + static_cast<std::ptrdiff_t>(from), row.end(), '\0', blank);
    const std::size_t end = row.size();
    row.append(separator); // which could begin with the text's last bytes
    for (std::size_t at = from; (at = row.find(separator, at)) < end;)
        row[at] = blank;
    row.resize(end);
}

std::string ReplaceCell(std::string_view row, std::string_view separator, int column,
                        std::string_view value) {
    std::string result;
    CellReader reader(row, separator);
    std::string_view old;
    for (int i = 0; i < column; ++i) {
        if (!reader.Next(old))
            old = {};
        result.append(old).append(separator);
    }
    result.append(value);
    if (reader.Next(old) && !reader.AtEnd())
        result.append(separator).append(reader.Rest());
    return result;
}

} // namespace vnbytstr::detail

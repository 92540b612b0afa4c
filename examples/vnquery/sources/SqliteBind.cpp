#include "vnquery/sources/SqliteBind.h"

#include <charconv>

#include <sqlite3.h>

namespace vnquery {

namespace {

/// Binds the text of a number as that number, or as text where SQLite cannot hold the number.
void BindNumber(sqlite3_stmt* statement, int index, const std::string& text) {
    const char* const end = text.data() + text.size();
    long long integer = 0;
    if (const auto read = std::from_chars(text.data(), end, integer);
        read.ec == std::errc() && read.ptr == end) {
        sqlite3_bind_int64(statement, index, integer);
        return;
    }
    double real = 0;
    if (const auto read = std::from_chars(text.data(), end, real);
        read.ec == std::errc() && read.ptr == end)
        sqlite3_bind_double(statement, index, real);
    else
        sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_TRANSIENT,
                            SQLITE_UTF8);
}

/// Whether JSON would take the text for a number: no zeros or plus sign in front, nothing around
/// it.
bool LooksLikeNumber(std::string_view text) {
    if (text.starts_with('-'))
        text.remove_prefix(1);
    const auto isDigit = [&](std::size_t at) {
        return at < text.size() && text[at] >= '0' && text[at] <= '9';
    };
    if (!isDigit(0) || (text[0] == '0' && isDigit(1)) || !isDigit(text.size() - 1))
        return false;
    double number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() && read.ptr == text.data() + text.size();
}

} // namespace

void BindValue(sqlite3_stmt* statement, int index, const Value& value) {
    if (value.IsNull()) {
        sqlite3_bind_null(statement, index);
        return;
    }
    const std::string bytes = value.GetBytes();
    switch (value.GetType()) {
    case Value::Type::Number:
        BindNumber(statement, index, bytes);
        break;
    case Value::Type::Text:
        sqlite3_bind_text64(statement, index, bytes.data(), bytes.size(), SQLITE_TRANSIENT,
                            SQLITE_UTF8);
        break;
    default:
        sqlite3_bind_blob64(statement, index, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
    }
}

void BindNames(sqlite3_stmt* statement, const Parameters& parameters) {
    for (int i = 1; i <= sqlite3_bind_parameter_count(statement); ++i) {
        const char* const name = sqlite3_bind_parameter_name(statement, i);
        if (!name || name[0] != ':')
            continue;
        const auto value = parameters.values.find(name + 1);
        if (value == parameters.values.end())
            continue;
        if (!value->second)
            sqlite3_bind_null(statement, i);
        else
            BindValue(statement, i,
                      {LooksLikeNumber(*value->second) ? Value::Type::Number : Value::Type::Text,
                       *value->second});
    }
}

} // namespace vnquery

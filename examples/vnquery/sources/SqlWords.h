// SQL's key words.
#pragma once

#include <span>
#include <string_view>

namespace vnquery {

/// Words that the servers reserve or that begin their clauses, in upper case and sorted.
std::span<const std::string_view> SqlWords();
bool IsSqlWord(std::string_view upper);

} // namespace vnquery

// Where in a statement a server found an error, as its message says.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace vnquery {

/// The byte of the statement that the message is about: by its number of a character (PostgreSQL),
/// the text that follows the error (MySQL, MariaDB), or a word that the message quotes and that
/// stands in the statement once. Nothing when the message does not tell.
std::optional<std::size_t> FindErrorPlace(std::string_view message, std::string_view sql);

} // namespace vnquery

// SQL text in a plain layout.
#pragma once

#include "vnquery/sources/SqlLexer.h"

namespace vnquery {

/// The text with its key words in upper case, each clause and each statement on a line of its own,
/// lines indented by the depth of subqueries, and one blank where there were several. Line breaks
/// elsewhere, quoted texts and comments stay as they are, and so does the meaning: the tokens are
/// the same, but for the case of key words (and of names that are spelled like one, outside of
/// quotes). What is formatted already does not change.
std::string FormatSql(std::string_view sql, SqlServer server);

/// The lines of the text with "-- " before each, or without when all that are not blank have it.
std::string ToggleSqlComment(std::string_view lines);

} // namespace vnquery

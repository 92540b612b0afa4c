// Starting other programs, without a shell.
#pragma once

#include "vnbytstr/framework/MessageBoxTypes.h"

#include <string>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {

/// The arguments in a parameter text: separated by blanks and tabs; text between double quotes is
/// one piece, the quotes are dropped; \" is a quote.
std::vector<std::string> SplitParameters(std::string_view parameters);

/// What xdg-open, the opener of POSIX desktops, is given for `argument`: a file with an anchor
/// becomes an address (xdg-open would look for a file of the whole name); a name that begins with a
/// dash must not be taken for an option.
std::string DesktopArgument(const std::string& argument);

/// Starts what Interaction::ShellExecute is asked to start, with its arguments and its result;
/// `program` is the file that was looked for.
int StartProgram(const char* verb, const char* file, const char* parameters, const char* folder,
                 std::string& program);

} // namespace vnbytstr::detail
